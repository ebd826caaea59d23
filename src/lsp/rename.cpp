// Checks new names and writes them. Tested by tests/lsp/rename_test.cpp.
#include "lsp/rename.h"

#include <algorithm>

#include "base/text.h"
#include "qmx/qmx_builder.h"
#include "qmx/qmx_limits.h"
#include "schema/xml_writer.h"

namespace korvel::lsp {
namespace {

using Kind = qmx::ElementId::Kind;

// Whether another declaration that could be meant by the same references has the name.
bool IsTaken(const Outline& outline, const Symbol& symbol, std::string_view new_name) {
  if (new_name == symbol.name) return false;  // so the name is as unique as it was
  const std::vector<ElementIndex> siblings = DeclarationsFor(outline, symbol.declaration, symbol.kind);
  return std::ranges::any_of(siblings, [&](ElementIndex sibling) { return outline.HasValue(sibling, "name", new_name); });
}

std::string TakenText(const Outline& outline, const Symbol& symbol, std::string_view new_name) {
  const std::string_view element = outline.elements()[symbol.declaration].form->name;
  const std::string where = symbol.kind == Kind::kMeta ? " in this file" : " in meta " + Quote(symbol.structure);
  return "there is another " + std::string(element) + " " + Quote(new_name) + where + "; allowed: unique names";
}

// The name as it is written at `offset`.
std::string Written(const Outline& outline, std::size_t offset, std::string_view name) {
  const ElementIndex element = outline.ElementAt(offset);
  const TagAttribute* const attribute = element == kNoElement ? nullptr : outline.AttributeAt(element, offset);
  const bool is_quoted = attribute != nullptr && attribute->quote != '\0';
  const std::string text = EscapeForXml(name, is_quoted ? attribute->quote : '"').value_or("");
  return is_quoted ? text : '"' + text + '"';
}

}  // namespace

std::string FaultOfName(const Outline& outline, const Symbol& symbol, std::string_view new_name) {
  if (new_name.empty()) return "the name is empty; allowed: 1 to " + std::to_string(qmx::kMaxNameBytes) + " bytes";
  if (new_name.size() > qmx::kMaxNameBytes) {
    return "the name has " + std::to_string(new_name.size()) + " bytes; allowed: at most " + std::to_string(qmx::kMaxNameBytes);
  }
  if (!EscapeForXml(new_name)) return "the name is " + Quote(new_name) + "; allowed: characters of XML 1.0 in UTF-8";
  if (symbol.kind == Kind::kMeta && qmx::FindSimpleType(new_name) != nullptr) {
    return Quote(new_name) + " is a simple type; allowed for a meta: any other name";
  }
  if (symbol.kind == Kind::kEntry && new_name.find_first_of(" \t\r\n") != std::string_view::npos) {
    return "the name " + Quote(new_name) + " contains white space, so no key could list it; allowed for an entry: no white space";
  }
  return IsTaken(outline, symbol, new_name) ? TakenText(outline, symbol, new_name) : "";
}

std::vector<TextEdit> RenameEdits(const Outline& outline, const Symbol& symbol, std::string_view new_name) {
  std::vector<TextEdit> edits;
  for (const qmx::Span& span : ReferencesTo(outline, symbol, true)) {
    edits.push_back({span, Written(outline, span.begin, new_name)});
  }
  return edits;
}

}  // namespace korvel::lsp
