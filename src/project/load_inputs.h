// Loads the schemas that a call names.
#pragma once

#include <string>
#include <vector>

#include "base/input_error.h"
#include "schema/input.h"

namespace korvel {

struct LoadedInputs {
  std::vector<Input> inputs;
  std::vector<std::string> paths;  // of the inputs, as given
  std::vector<InputFault> faults;  // of the other files
};

// Reads the files; "-" is standard input, "git:REV:PATH" a file of a commit. Large files are read in parallel. Inputs and faults
// are in the order of the paths.
LoadedInputs TryToLoadInputs(const std::vector<std::string>& paths, Texts texts);

// The same, but throws InputError with every fault of every file.
std::vector<Input> LoadInputs(const std::vector<std::string>& paths, Texts texts = Texts::kWhenNeeded);

}  // namespace korvel
