// Rules as SARIF describes them, in the words of their pages. Services show them beside a result, to people who may not have
// the program at hand. There is no helpUri: the pages of docs/rules have no address that is known here. Tested by
// tests/report/formats_test.cpp.
#include "report/render/sarif_rules.h"

#include <algorithm>

#include "rule_docs/rule_docs.h"

namespace korvel {
namespace {

using Json = nlohmann::ordered_json;

// What reports find fault with beside the checker's refusals.
struct OtherRule {
  std::string_view id;
  const char* summary;
};

constexpr OtherRule kOtherRules[] = {
    {"refused", "the checker refuses the table with a text that is not in its catalogue, or with none"},
    {"waiver.expired", "the last day of a waiver is over; it lets nothing pass any more"},
    {"waiver.malformed", "a waiver of the project file lacks something, or has what none may have"},
    {"waiver.unused", "a waiver of the project file is for no finding"},
};

Json Message(const std::string& text) { return {{"text", text}}; }

// The same words twice: services that read no Markdown take the text.
Json HelpOf(const RuleDoc& doc) {
  const std::string call = std::string("korvelcheck explain ") + doc.row->id;
  const std::string more = doc.example ? " shows an example." : " shows the whole page.";
  return {{"text", doc.protects + "\n\nAllowed instead: " + doc.allowed + "\n\n'" + call + "'" + more},
          {"markdown", doc.protects + "\n\n**Allowed instead:** " + doc.allowed + "\n\n`" + call + "`" + more}};
}

}  // namespace

Json SarifRule(const std::string& id) {
  Json rule = {{"id", id}};
  if (const RuleDoc* const doc = FindRuleDoc(id)) {
    rule["shortDescription"] = Message(doc->row->summary);
    rule["fullDescription"] = Message(doc->protects);
    rule["help"] = HelpOf(*doc);
  } else if (const auto* const other = std::ranges::find(kOtherRules, id, &OtherRule::id); other != std::end(kOtherRules)) {
    rule["shortDescription"] = Message(other->summary);
  }
  rule["defaultConfiguration"] = {{"level", "error"}};
  return rule;
}

}  // namespace korvel
