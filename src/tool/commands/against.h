// The check of a project's schema files against an earlier state of them.
#pragma once

#include "tool/cli/command.h"

namespace korvel::tool {

// Compares every schema file with itself as it was: one that was moved with the file at its old place, one that is gone with a
// library without its tables. Tables of new files are new. All cores take part, unless a log wants the tables one after the
// other; the answer is ordered by path and declaration all the same. Throws InputError with every fault of every file.
CommandResult CheckAgainst(const Command& command, const Options& options, LPVESKCATEGORYINST log);

}  // namespace korvel::tool
