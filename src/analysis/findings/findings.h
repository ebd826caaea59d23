// Finds which edits the checker refuses, by asking it: no rule is decided here.
#pragma once

#include <cstddef>
#include <string>

#include "analysis/diff/diff.h"
#include "analysis/findings/ask_checker.h"
#include "analysis/findings/finding.h"
#include "base/limits.h"
#include "schema/settings.h"

namespace korvel {

// Takes the change of a table apart. `whole` is the answer about all of it, that of AskChecker or a call with a log; every member
// of `settings` is set. Ways out and waivers are left open. Stops after `max_findings`, at least 1.
// REQUIRES: both sources have the table.
//
// The verdict of a finding is the checker's answer about the old schema with its edits and what they need, and no others. There
// is one exception: a field's bad name is found where another rule speaks first, by asking about a table that has such a field.
Changes FindChanges(const Difference& difference, const Source& old_source, const Source& new_source, const std::string& table,
                    const Settings& settings, const Verdict& whole, std::size_t max_findings);

// The same for a table that only one of the sources has: one finding, without edits.
Changes FindRemovedTable(const Source& old_source, const Source& new_source, const std::string& table, const Settings& settings,
                         const Verdict& whole);

}  // namespace korvel
