// Loads the schemas that a call names.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/input_error.h"
#include "project/git.h"
#include "schema/input.h"

namespace korvel {

// Reads a file; "-" is standard input, "git:REV:PATH" a file of a commit. Throws InputError.
Input LoadInput(const std::string& path, Git& git, Texts texts = Texts::kWhenNeeded);

// The bytes of a file that is to be read in another way than LoadInput does; nullopt for every other one. Called by several
// threads.
using ReadFound = std::function<std::optional<Bytes>(const std::string& path)>;

struct LoadedInputs {
  std::vector<Input> inputs;
  std::vector<std::string> paths;  // of the inputs, as given
  std::vector<InputFault> faults;  // of the other files
};

// Reads files as LoadInput does, large ones in parallel. Inputs and faults are in the order of the paths.
LoadedInputs TryToLoadInputs(const std::vector<std::string>& paths, Texts texts, const ReadFound& read_found = nullptr);

// The same, but throws InputError with every fault of every file.
std::vector<Input> LoadInputs(const std::vector<std::string>& paths, Texts texts = Texts::kWhenNeeded);

}  // namespace korvel
