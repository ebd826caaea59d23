// Tested by answer_test.cpp and exceptions_test.cpp.
#include "codec/warnings.h"

#include "analysis/warnings/advice_matches.h"

namespace codec {

std::set<std::string> WarningsAbout(const Change& change) {
  const support::Schema old_schema = change.old_lib.Build();
  const support::Schema new_schema = change.new_lib.Build();
  std::set<std::string> rules;
  for (const korvel::AdviceMatch& match : korvel::FindAdviceMatches(
           {old_schema.Lib(), new_schema.Lib(), old_schema.Meta("t"), new_schema.Meta("t"), change.created_in})) {
    if (match.rule->level == korvel::Level::kWarning) rules.insert(match.rule->row.id);
  }
  return rules;
}

}  // namespace codec
