// Notes about a comparison that was probably not meant.
#pragma once

#include <string>
#include <vector>

#include "schema/selection.h"

namespace korvel::tool {

// Prints notes on standard error if OLD and NEW are the same file, seem to be swapped, or seem to be different libraries, with
// the call that may have been meant. They change neither the report nor the exit code: a change back to an older version is
// legitimate. `paths` are OLD and NEW as given.
void PrintPairNotes(const std::string& command, const Pair& pair, const std::vector<std::string>& paths);

// A path as a word of a command to copy; it is no option there.
std::string PathWord(const std::string& path);

}  // namespace korvel::tool
