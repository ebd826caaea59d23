// Resolves names. The tree of a file is in document_symbols.cpp. Tested by tests/lsp/symbols_test.cpp.
#include "lsp/symbols.h"

#include <algorithm>
#include <array>

#include "lsp/value_text.h"
#include "qmx/qmx_builder.h"

namespace korvel::lsp {
namespace {

using Kind = qmx::ElementId::Kind;

// The attributes that refer to declarations.
struct Reference {
  std::string_view attribute;
  Kind named;
  bool is_list = false;
};

constexpr std::array<Reference, 4> kReferences = {
    {{"type", Kind::kMeta}, {"refer", Kind::kEntry}, {"entry", Kind::kEntry}, {"entries", Kind::kEntry, true}}};

const Reference* FindReference(std::string_view attribute) {
  const auto* const found = std::ranges::find(kReferences, attribute, &Reference::attribute);
  return found == kReferences.end() ? nullptr : found;
}

bool Allows(const qmx::ElementForm& element, std::string_view attribute) {
  return element.Find(std::string(attribute).c_str()) != nullptr;
}

// The names in the value of an attribute that names something.
std::vector<ValueWord> NamesIn(const Outline& outline, const TagAttribute& attribute) {
  const Reference* const reference = FindReference(outline.Piece(attribute.name()));
  if (reference != nullptr && reference->is_list) return WordsOf(outline.text(), attribute.value());
  return {{attribute.value(), DecodeValue(outline.Piece(attribute.value()))}};
}

// The first declaration of a name that an attribute of `element` refers to; kNoElement without one.
ElementIndex Resolve(const Outline& outline, ElementIndex element, Kind kind, std::string_view name) {
  if (kind == Kind::kMeta && qmx::FindSimpleType(name) != nullptr) return kNoElement;
  const std::vector<ElementIndex> declarations = DeclarationsFor(outline, element, kind);
  const auto found =
      std::ranges::find_if(declarations, [&](ElementIndex declaration) { return outline.HasValue(declaration, "name", name); });
  return found == declarations.end() ? kNoElement : *found;
}

// Appends the names in attributes of an element that refer to a symbol.
void AppendReferences(const Outline& outline, ElementIndex element, const Symbol& symbol, std::vector<qmx::Span>& spans) {
  const qmx::ElementForm* const form = outline.elements()[element].form;
  for (const TagAttribute& attribute : outline.AttributesOf(element)) {
    const Reference* const reference = FindReference(outline.Piece(attribute.name()));
    if (reference == nullptr || reference->named != symbol.kind || !Allows(*form, reference->attribute)) continue;
    if (!reference->is_list && !outline.HasValue(element, reference->attribute, symbol.name)) continue;
    for (const ValueWord& word : NamesIn(outline, attribute)) {
      if (word.text == symbol.name) spans.push_back(word.span);
    }
  }
}

}  // namespace

std::optional<Kind> NamedKind(const qmx::ElementForm& element, std::string_view attribute) {
  if (!Allows(element, attribute)) return std::nullopt;
  if (attribute == "name") return element.kind;
  const Reference* const reference = FindReference(attribute);
  return reference == nullptr ? std::nullopt : std::optional(reference->named);
}

ElementIndex StructureOf(const Outline& outline, ElementIndex element) {
  const std::vector<Element>& elements = outline.elements();
  ElementIndex parent = elements[element].parent;
  if (parent != kNoElement && elements[parent].Is(Kind::kIndex)) parent = elements[parent].parent;
  return parent != kNoElement && elements[parent].Is(Kind::kMeta) ? parent : kNoElement;
}

std::vector<ElementIndex> ItemsOf(const Outline& outline, ElementIndex parent, Kind kind) {
  std::vector<ElementIndex> items;
  const ElementIndex end = outline.EndOfContent(parent);
  for (ElementIndex item = parent + 1; item < end; ++item) {
    const Element& element = outline.elements()[item];
    if (element.Is(kind) && element.parent == parent) items.push_back(item);
  }
  return items;
}

std::vector<ElementIndex> StructuresOf(const Outline& outline) {
  std::vector<ElementIndex> structures;
  for (ElementIndex element = 0; element < outline.elements().size(); ++element) {
    if (outline.elements()[element].Is(Kind::kMeta)) structures.push_back(element);
  }
  return structures;
}

std::vector<ElementIndex> DeclarationsFor(const Outline& outline, ElementIndex element, Kind kind) {
  if (kind == Kind::kMeta) return StructuresOf(outline);
  const ElementIndex structure = StructureOf(outline, element);
  return structure == kNoElement ? std::vector<ElementIndex>{} : ItemsOf(outline, structure, kind);
}

std::optional<Symbol> SymbolAt(const Outline& outline, std::size_t offset) {
  const ElementIndex element = outline.ElementAt(offset);
  if (element == kNoElement) return std::nullopt;
  const qmx::ElementForm* const form = outline.elements()[element].form;
  const TagAttribute* const attribute = outline.AttributeAt(element, offset);
  if (form == nullptr || attribute == nullptr) return std::nullopt;
  const std::string_view attribute_name = outline.Piece(attribute->name());
  const std::optional<Kind> kind = NamedKind(*form, attribute_name);
  if (!kind) return std::nullopt;
  for (const ValueWord& word : NamesIn(outline, *attribute)) {
    if (offset < word.span.begin || offset > word.span.end) continue;
    const ElementIndex declaration = attribute_name == "name" ? element : Resolve(outline, element, *kind, word.text);
    if (declaration == kNoElement) return std::nullopt;
    const ElementIndex structure = StructureOf(outline, declaration);
    return Symbol{*kind, declaration, word.text, structure == kNoElement ? "" : outline.ValueOf(structure, "name"), word.span};
  }
  return std::nullopt;
}

qmx::Span DeclarationOf(const Outline& outline, const Symbol& symbol) {
  const TagAttribute* const name = outline.FindAttribute(symbol.declaration, "name");
  return name == nullptr ? outline.elements()[symbol.declaration].name() : name->value();
}

std::vector<qmx::Span> ReferencesTo(const Outline& outline, const Symbol& symbol, bool with_declaration) {
  std::vector<qmx::Span> spans;
  const bool is_resolved = Resolve(outline, symbol.declaration, symbol.kind, symbol.name) == symbol.declaration;
  const ElementIndex structure = StructureOf(outline, symbol.declaration);
  const ElementIndex begin = structure == kNoElement ? 0 : structure;
  const ElementIndex end =
      structure == kNoElement ? static_cast<ElementIndex>(outline.elements().size()) : outline.EndOfContent(structure);
  for (ElementIndex element = begin; element < end; ++element) {
    if (with_declaration && element == symbol.declaration) spans.push_back(DeclarationOf(outline, symbol));
    const bool is_in_scope = structure == kNoElement || StructureOf(outline, element) == structure;
    if (is_resolved && is_in_scope && outline.elements()[element].form != nullptr) {
      AppendReferences(outline, element, symbol, spans);
    }
  }
  return spans;
}

}  // namespace korvel::lsp
