// Puts questions to the checker and keeps its answers.
#pragma once

#include <string>

#include "analysis/findings/finding.h"
#include "common/modify_table.h"
#include "schema/settings.h"

namespace korvel {

// What an operation of the checker answered by `code`, and `checker` left as its text.
Verdict VerdictOf(int code, const ModifyTable& checker);

// The whole check of `table`, with every member of `settings` set. Logs nothing. Threads may ask at the same time.
Verdict AskChecker(LPQMXMETALIB old_library, LPQMXMETALIB new_library, const std::string& table, const Settings& settings);

}  // namespace korvel
