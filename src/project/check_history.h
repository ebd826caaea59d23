// Checks every step between several versions of a schema, and each version against the newest.
#pragma once

#include <string>
#include <vector>

#include "project/check_tables.h"
#include "report/result/history.h"

namespace korvel {

// The versions of a file in a repository.
struct GitVersions {
  std::vector<std::string> paths;  // "git:REV:PATH", oldest first, at least two
  bool is_shallow = false;         // the clone is shallow: older versions may be missing
};

// The commits that changed a file, along the first parents. Throws InputError as Git, and if there are fewer than two.
GitVersions VersionsInGit(const std::string& path);

// Loads and checks the versions at these paths, oldest first, at least two. Uses all cores. Has only some of the versions in
// memory at the same time, so that the memory does not grow with their number.
//
// Throws InputError with the errors of every version that cannot be loaded (see LoadInputs); if a mapped file has changed; for a
// requested table that no version has; and if nothing was compared.
History CheckHistory(const std::vector<std::string>& paths, const CheckOptions& options);

}  // namespace korvel
