// Checks every step between several versions of a schema, and each version against the newest.
#pragma once

#include <string>
#include <vector>

#include "project/check_tables.h"
#include "report/result/history.h"
#include "schema/input.h"

namespace korvel {

// The versions of a file in a repository.
struct GitVersions {
  std::vector<std::string> paths;  // "git:REV:PATH", oldest first, at least two
  bool is_shallow = false;         // the clone is shallow: older versions may be missing
};

// The commits that changed a file, along the first parents. Throws InputError as Git, and if there are fewer than two.
GitVersions VersionsInGit(const std::string& path);

// Checks the versions, oldest first, at least two; they must outlive the result. Uses all cores. Throws InputError for a
// requested table that no version has, and if nothing was compared.
History CheckHistory(const std::vector<Input>& versions, const CheckOptions& options);

}  // namespace korvel
