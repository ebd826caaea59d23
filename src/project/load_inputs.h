// Loads the schemas that a call names.
#pragma once

#include <string>
#include <vector>

#include "schema/input.h"

namespace korvel {

// Reads the files; "-" is standard input, "git:REV:PATH" a file of a commit. Large files are read in parallel. Throws InputError
// with every fault of every file, in the order of the paths.
std::vector<Input> LoadInputs(const std::vector<std::string>& paths, Texts texts = Texts::kWhenNeeded);

}  // namespace korvel
