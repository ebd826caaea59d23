// Finds the versions of files in a repository.
#pragma once

#include <vector>

#include "project/file_versions.h"

namespace korvel {

// The same as VersionsInGit; also if no file has two versions.
std::vector<FileVersions> FindVersionsInGit(const VersionSelection& selection, const Project* project);

}  // namespace korvel
