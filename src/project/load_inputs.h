// Loads the schemas that a call names.
#pragma once

#include <string>
#include <vector>

#include "base/input_error.h"
#include "project/git.h"
#include "schema/input.h"

namespace korvel {

// Reads a file; "-" is standard input, "git:REV:PATH" a file of a commit. Throws InputError.
Input LoadInput(const std::string& path, Git& git, Texts texts = Texts::kWhenNeeded);

struct LoadedInputs {
  std::vector<Input> inputs;
  std::vector<std::string> paths;  // of the inputs, as given
  std::vector<InputFault> faults;  // of the other files
};

// Reads files as LoadInput does, large ones in parallel. Inputs and faults are in the order of the paths.
LoadedInputs TryToLoadInputs(const std::vector<std::string>& paths, Texts texts);

// The same, but throws InputError with every fault of every file.
std::vector<Input> LoadInputs(const std::vector<std::string>& paths, Texts texts = Texts::kWhenNeeded);

}  // namespace korvel
