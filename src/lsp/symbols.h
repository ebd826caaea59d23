// What the names in a schema file stand for: where a name is declared, and everything that refers to it.
//
// Names are resolved as by the reader: of declarations of the same name the first counts, and the name of a simple type in `type`
// always means that type.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lsp/outline.h"

namespace korvel::lsp {

// A name that an element declares: of the library, a structure (meta), an entry or an index.
struct Symbol {
  qmx::ElementId::Kind kind = qmx::ElementId::Kind::kMetalib;
  ElementIndex declaration = kNoElement;
  std::string name;       // decoded
  std::string structure;  // the name of the structure that contains an entry or index; "" for others
  qmx::Span span;         // of the name at the offset that SymbolAt was given
};

// The kind of element that the value of an attribute names: its own for `name`; nullopt for attributes that name nothing.
std::optional<qmx::ElementId::Kind> NamedKind(const qmx::ElementForm& element, std::string_view attribute);

// The structure that contains an entry, a key, an index or a column; kNoElement without one.
ElementIndex StructureOf(const Outline& outline, ElementIndex element);

// The elements of a kind directly in an element.
std::vector<ElementIndex> ItemsOf(const Outline& outline, ElementIndex parent, qmx::ElementId::Kind kind);

// All structures.
std::vector<ElementIndex> StructuresOf(const Outline& outline);

// What a name of that kind in `element` can stand for: every structure, or the entries or indexes of the structure of `element`.
std::vector<ElementIndex> DeclarationsFor(const Outline& outline, ElementIndex element, qmx::ElementId::Kind kind);

// Nullopt if the offset is in no name, or in one that nothing declares. Linear, as are the others.
std::optional<Symbol> SymbolAt(const Outline& outline, std::size_t offset);

// The value of the `name` attribute.
qmx::Span DeclarationOf(const Outline& outline, const Symbol& symbol);

// Every name that refers to the symbol, in the order of the text.
std::vector<qmx::Span> ReferencesTo(const Outline& outline, const Symbol& symbol, bool with_declaration);

// An item of the tree of a file: the library, its structures, their entries, keys and indexes.
struct DocumentSymbol {
  qmx::ElementId::Kind kind = qmx::ElementId::Kind::kMetalib;
  std::string name;     // never empty: the name of the element if it has no name of its own
  std::string detail;   // "uint32[10], id 3, version 2"
  qmx::Span name_span;  // inside `span`
  qmx::Span span;       // of the whole element
  std::vector<DocumentSymbol> children;
};

// Structures outside of a library, which only broken text has, are items of the outermost level.
std::vector<DocumentSymbol> DocumentSymbolsOf(const Outline& outline);

// "uint32[10], id 3, version 2": what an element declares beside its name.
std::string DetailOf(const Outline& outline, ElementIndex element);

}  // namespace korvel::lsp
