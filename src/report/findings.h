// Finds which edits the checker refuses, by asking it: no rule is decided here.
#pragma once

#include <cstddef>
#include <string>

#include "report/ask_checker.h"
#include "report/diff.h"
#include "report/finding.h"
#include "report/settings.h"

namespace korvel::report {

inline constexpr std::size_t kMaxFindings = 1000;  // when a call does not say otherwise

// Takes the change of a table apart. `whole` is the answer about all of it, that of AskChecker or a call with a log.
// Stops after `max_findings`, at least 1. REQUIRES: one of the sources has the table.
Changes FindChanges(const Source& old_source, const Source& new_source, const std::string& table, const Settings& settings,
                    const Verdict& whole, std::size_t max_findings);

}  // namespace korvel::report
