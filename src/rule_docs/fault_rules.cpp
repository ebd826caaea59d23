// Looks up the catalog of faults. Tested by tests/rule_docs/rule_docs_test.cpp.
#include "rule_docs/fault_rules.h"

#include <algorithm>
#include <cstddef>

namespace korvel {

const RefusalRow& RuleOf(FaultKind kind) { return kFaultRules[static_cast<std::size_t>(kind)]; }

const RefusalRow* FindFaultRule(std::string_view id) {
  const auto* const found = std::ranges::find_if(kFaultRules, [&](const RefusalRow& row) { return id == row.id; });
  return found == kFaultRules.end() ? nullptr : found;
}

}  // namespace korvel
