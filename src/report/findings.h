// Finds which edits the checker refuses, by asking it: no rule is decided here.
#pragma once

#include <cstddef>
#include <string>

#include "report/diff.h"
#include "report/finding.h"
#include "report/settings.h"

namespace korvel::report {

inline constexpr std::size_t kMaxFindings = 1000;  // when a call does not say otherwise

// The whole check of `table`, with every member of `settings` set. Logs nothing.
Verdict AskChecker(LPQMXMETALIB old_library, LPQMXMETALIB new_library, const std::string& table, const Settings& settings);

// Takes the change of a table apart. `whole` is the answer about all of it, that of AskChecker or a call with a log.
// Stops after `max_findings`. REQUIRES: both sources have the table.
Changes FindChanges(const Source& old_source, const Source& new_source, const std::string& table, const Settings& settings,
                    const Verdict& whole, std::size_t max_findings);

}  // namespace korvel::report
