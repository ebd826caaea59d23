// Lists the catalog of advice. Tested by tests/rule_docs/rule_docs_test.cpp.
#include "rule_docs/advice.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace korvel {
namespace {

constexpr const AdviceRule* kAdvice[] = {
    &kTableKindAdvice,        &kKeyMembersAdvice, &kKeyStructureAdvice, &kReferChangedAdvice,
    &kReferAddedAdvice,       &kIdReusedAdvice,   &kNewTableAdvice,     &kAttributeIgnoredAdvice,
    &kVersionNotRaisedAdvice, &kSortFieldsAdvice, &kIndexColumnsAdvice, &kLibraryRenamedAdvice,
};

}  // namespace

const char* WordOf(Level level) {
  constexpr const char* kWords[] = {"refused", "warning", "note"};
  return kWords[static_cast<std::size_t>(level)];
}

std::span<const AdviceRule* const> AllAdvice() { return kAdvice; }

const AdviceRule* FindAdvice(std::string_view id) {
  const auto* const found = std::ranges::find_if(kAdvice, [&](const AdviceRule* rule) { return id == rule->row.id; });
  return found == std::end(kAdvice) ? nullptr : *found;
}

}  // namespace korvel
