// Finds the fixed versions of the schema files of a call.
#pragma once

#include <functional>
#include <vector>

#include "tool/commands/run_check.h"
#include "tool/commands/suggest_files.h"

namespace korvel::tool {

struct FixedFiles {
  std::vector<FixedFile> files = {};  // in the order of the check
  bool has_waived = false;            // whether waivers accept all refused changes of a table; they stay
};

// The files of a project with refused changes that are not waived. Adds why a deleted file, or an image, has no fixed version.
// Throws InputError as RunCheck, and if the check is incomplete. REQUIRES: a baseline.
FixedFiles FixProject(const CheckRequest& request, NothingAllowed& reasons);

// NEW, also if it has no refused changes. Calls `on_loaded` before it looks for a fixed version. Throws InputError as RunCheck.
// REQUIRES: no baseline.
FixedFiles FixPair(const CheckRequest& request, const std::function<void(const Input& new_input)>& on_loaded,
                   NothingAllowed& reasons);

}  // namespace korvel::tool
