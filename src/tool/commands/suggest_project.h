// Finds the fixed versions of the schema files of a project.
#pragma once

#include <string>
#include <vector>

#include "tool/commands/run_check.h"
#include "tool/commands/suggest_files.h"

namespace korvel::tool {

// The files with refused changes that are not all waived, in the order of the check; a table whose refused changes are all waived
// stays as it is. Adds why a deleted file, or an image, has no fixed version. Throws InputError as RunCheck, if several baselines
// are compared with, and if the check is incomplete. REQUIRES: a baseline.
std::vector<FixedFile> FixProject(const CheckRequest& request, NothingAllowed& reasons);

}  // namespace korvel::tool
