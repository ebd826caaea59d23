// The output formats of `rules` and `explain`, and what they share.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "rule_docs/rule_docs.h"

namespace korvel {

struct RuleDocFormat {
  const char* name;
  std::string (*rules)();                   // all rules
  std::string (*codes)();                   // all result codes
  std::string (*rule)(const RuleDoc& doc);  // one of them
  std::string (*code)(const CodeDoc& doc);
  std::string (*list)(const std::vector<const RuleDoc*>& docs);  // some rules of any kind
};

// For people, the default.
extern const RuleDocFormat kRuleDocText;
// For programs: one JSON object each.
extern const RuleDocFormat kRuleDocJson;
// The pages of docs/rules as they are, and their index.
extern const RuleDocFormat kRuleDocMarkdown;

std::span<const RuleDocFormat* const> RuleDocFormats();

// "-3, -1"
std::string CodeNumbers(const std::vector<int>& codes);

}  // namespace korvel
