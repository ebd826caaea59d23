// The tree of a file. Tested by tests/lsp/symbols_test.cpp.
#include <utility>

#include "base/text.h"
#include "lsp/symbols.h"

namespace korvel::lsp {
namespace {

using Kind = qmx::ElementId::Kind;

// Appends "PREFIX VALUE" if the element has a value for the attribute.
void AppendValue(std::string& detail, const Outline& outline, ElementIndex element, std::string_view attribute) {
  const std::string value = outline.ValueOf(element, attribute);
  if (!value.empty()) AppendPart(detail, ", ", std::string(attribute) + " " + value);
}

std::string EntryDetail(const Outline& outline, ElementIndex element) {
  std::string detail = outline.ValueOf(element, "type");
  const std::string size = outline.ValueOf(element, "size");
  const std::string count = outline.ValueOf(element, "count");
  if (!size.empty()) detail += "(" + size + ")";
  if (!count.empty()) detail += "[" + count + "]";
  AppendValue(detail, outline, element, "id");
  AppendValue(detail, outline, element, "version");
  return detail;
}

std::string StructureDetail(const Outline& outline, ElementIndex element) {
  if (outline.HasValue(element, "kind", "union")) return "union";
  return ItemsOf(outline, element, Kind::kPrimaryKey).empty() ? "structure" : "table";
}

std::string IndexDetail(const Outline& outline, ElementIndex element) {
  std::string detail;
  for (const ElementIndex column : ItemsOf(outline, element, Kind::kColumn)) {
    const bool is_descending = outline.HasValue(column, "desc", "true");
    AppendPart(detail, ", ", outline.ValueOf(column, "entry") + (is_descending ? " descending" : ""));
  }
  return detail;
}

DocumentSymbol SymbolOf(const Outline& outline, ElementIndex index) {
  const Element& element = outline.elements()[index];
  const TagAttribute* const name = outline.FindAttribute(index, "name");
  DocumentSymbol symbol;
  symbol.kind = element.form->kind;
  symbol.name = outline.ValueOf(index, "name");
  if (symbol.name.empty()) symbol.name = element.form->name;
  symbol.detail = DetailOf(outline, index);
  symbol.name_span = name == nullptr ? element.name() : name->value();
  symbol.span = element.whole();
  return symbol;
}

}  // namespace

std::string DetailOf(const Outline& outline, ElementIndex element) {
  const qmx::ElementForm* const form = outline.elements()[element].form;
  if (form == nullptr) return "";
  switch (form->kind) {
    case Kind::kMetalib: {
      std::string detail;
      AppendValue(detail, outline, element, "version");
      AppendValue(detail, outline, element, "protocol");
      return detail;
    }
    case Kind::kMeta:
      return StructureDetail(outline, element);
    case Kind::kEntry:
      return EntryDetail(outline, element);
    case Kind::kPrimaryKey:
    case Kind::kSplittableKey:
      return outline.ValueOf(element, "entries");
    case Kind::kIndex:
      return IndexDetail(outline, element);
    case Kind::kColumn:
      return outline.ValueOf(element, "desc");
  }
  return "";
}

std::vector<DocumentSymbol> DocumentSymbolsOf(const Outline& outline) {
  std::vector<DocumentSymbol> roots;
  ElementIndex library = kNoElement;    // the one at the back of `roots`
  ElementIndex structure = kNoElement;  // the one at the back of `structures()`
  const auto structures = [&]() -> std::vector<DocumentSymbol>& { return library == kNoElement ? roots : roots.back().children; };
  for (ElementIndex index = 0; index < outline.elements().size(); ++index) {
    const Element& element = outline.elements()[index];
    if (element.Is(Kind::kMetalib) && element.parent == kNoElement) {
      roots.push_back(SymbolOf(outline, index));
      library = index;
    } else if (element.Is(Kind::kMeta)) {
      if (library != kNoElement && element.begin >= outline.elements()[library].end) library = kNoElement;
      structures().push_back(SymbolOf(outline, index));
      structure = index;
    } else if (element.form != nullptr && structure != kNoElement && element.parent == structure) {
      structures().back().children.push_back(SymbolOf(outline, index));
    }
  }
  return roots;
}

}  // namespace korvel::lsp
