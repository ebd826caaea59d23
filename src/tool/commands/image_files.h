// Writes images of schema files.
#pragma once

#include <string>

#include "project/project.h"
#include "schema/input.h"
#include "tool/commands/selected_inputs.h"
#include "tool/io/blocked_signals.h"

namespace korvel::tool {

// Throws InputError if an image would replace a file with other content, such as a schema file.
void RequireNoOther(const std::string& path);

// Writes an image of each file below the directory, as WriteFiles does, and returns a line for each. An image has the path of its
// file below the directory of the project, without a project below the working directory, with the suffix .qmb. Creates the
// directories that it needs. Images that were found in the directory are results of an earlier call: they are not compiled again.
// `project` may be null. Throws InputError if a file is not below that directory, if two files would have the same image, if an
// image would replace a file that is compiled or something else than an image, and as ImageOf.
std::string WriteImages(const SelectedInputs& selected, const Project* project, const std::string& directory,
                        const BlockedSignals& signals);

}  // namespace korvel::tool
