// Loads the schema files of commands that look at each file by itself.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "project/project.h"
#include "schema/input.h"
#include "tool/cli/option_groups.h"

namespace korvel::tool {

// Whether a call is about any number of files: without arguments those of the project, or those of a directory.
bool SelectsFiles(const std::vector<std::string>& paths);

struct SelectedInputs {
  std::vector<Input> inputs;
  std::vector<std::string> paths;  // of the inputs, as the call names them or from the working directory
  std::vector<bool> is_found;      // whether the call does not name the file itself
};

// The files of a call (SchemaFinder), at least one. `project` may be null. Throws InputError with every fault of every file, if
// nothing is selected, and if the output would replace one of the files; UsageError if standard input is read twice.
SelectedInputs LoadSelected(const std::vector<std::string>& paths, const TableSettings& settings, const Project* project,
                            const OutputOption& output);

}  // namespace korvel::tool
