// Runs the checker for analysis and keeps its verdicts. No rule is decided here.
//
// Functions here log nothing and may run on several threads at once.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/findings/finding.h"
#include "common/modify_table.h"
#include "schema/settings.h"

namespace korvel {

// The verdict of the last operation of `checker`, which returned `code`: its text and the rule that wrote it.
Verdict VerdictOf(int code, const ModifyTable& checker);

// The whole check of `table`.
Verdict RunChecker(LPQMXMETALIB old_library, LPQMXMETALIB new_library, const std::string& table, const Settings& settings);

// The list "a|b|" in the text of a refusal for oversized fields, which it borrows; empty for other refusals.
std::string_view OversizedFields(const Verdict& verdict);

// Whether both refusals list oversized fields, and the later one lists none that the known one does not list.
bool ListsNoOtherOversizedField(const Verdict& known, const Verdict& later);

struct BadName {
  std::size_t position;  // in the list of names
  Verdict verdict;       // about a table of the given name with such a field
};

// The names that the checker refuses as field names of `table`, in the order of the list, at most `limit`. The checker stops at
// the first bad name and its text does not say which one it is, so each is isolated by halving: about log(names) runs for each
// bad name.
std::vector<BadName> FindBadNames(const std::string& table, const std::vector<std::string>& names, std::size_t limit);

}  // namespace korvel
