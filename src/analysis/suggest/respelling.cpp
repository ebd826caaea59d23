// Tested by tests/tool/suggest_test.cpp.
#include "analysis/suggest/respelling.h"

#include "analysis/diff/attribute_spelling.h"
#include "analysis/diff/table_attributes.h"
#include "base/text.h"

namespace korvel {

std::optional<Respelling> FindRespelling(const Edit& edit, const std::optional<std::string>& attributes) {
  if (!attributes || edit.after.empty()) return std::nullopt;
  if (edit.item.empty()) {
    const std::optional<std::string> corrected = CorrectedAttributes(*attributes);
    if (!corrected) return std::nullopt;
    return Respelling{{{*attributes, *corrected}}, "write the attributes as '" + OneLine(*corrected) + "'"};
  }
  Respelling found;
  for (const AttributePair& pair : SplitAttributes(attributes).value_or(std::vector<AttributePair>())) {
    if (!edit.before.empty() && pair.span.begin != edit.new_location.part.begin) continue;
    const std::string given = attributes->substr(pair.span.begin, pair.span.end - pair.span.begin);
    const std::optional<std::string> corrected = CorrectedAttribute(given);
    if (!corrected) continue;
    found.pairs.emplace_back(given, *corrected);
    AppendPart(found.text, "; ", AttributeSuggestion(given));
  }
  return found.pairs.empty() ? std::nullopt : std::optional(std::move(found));
}

void Apply(const Respelling& respelling, std::string& attributes) {
  for (const auto& [given, text] : respelling.pairs) {
    const std::size_t at = (";" + attributes + ";").find(";" + given + ";");
    if (at != std::string::npos) attributes.replace(at, given.size(), text);
  }
}

}  // namespace korvel
