// Tested by tests/rule_docs/rule_docs_test.cpp.
#include "report/render/rule_doc_format.h"

#include "base/text.h"
#include "rule_docs/rule_doc_files.h"

namespace korvel {

std::span<const RuleDocFormat* const> RuleDocFormats() {
  static constexpr const RuleDocFormat* kFormats[] = {&kRuleDocText, &kRuleDocJson, &kRuleDocMarkdown};
  return kFormats;
}

std::string CodeNumbers(const std::vector<int>& codes) {
  return Join(codes, ", ", [](int code) { return std::to_string(code); });
}

}  // namespace korvel
