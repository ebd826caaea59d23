// Loads the schemas that a call names.
#pragma once

#include <string>
#include <vector>

#include "schema/input.h"

namespace korvel {

// Reads the files; "-" is standard input, "git:REV:PATH" a file of a commit. Large files are read in parallel. Throws InputError
// with every fault of every file, in the order of the paths.
//
// With Images::kWithText, an image gets the text of its schema file (AddDump), so that a report can show lines.
enum class Images { kAsTheyAre, kWithText };
std::vector<Input> LoadInputs(const std::vector<std::string>& paths, Images images = Images::kAsTheyAre);

}  // namespace korvel
