// Looks up the catalog of rules about project files. Tested by tests/rule_docs/rule_docs_test.cpp.
#include "rule_docs/project_rules.h"

#include <algorithm>

namespace korvel {

const ProjectRule* FindProjectRule(std::string_view id) {
  const auto* const found = std::ranges::find_if(kProjectRules, [&](const ProjectRule* rule) { return id == rule->row.id; });
  return found == kProjectRules.end() ? nullptr : *found;
}

}  // namespace korvel
