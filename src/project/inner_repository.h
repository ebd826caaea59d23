// Repositories inside a work tree, such as submodules: their files are no part of the project.
#pragma once

#include <string>

#include "project/project_files.h"

namespace korvel {

// The nearest directory that contains a path, or is it, and is a repository of its own below the top. "" without such a
// directory, and if the new state is no work tree.
std::string RepositoryOf(const ProjectStates& states, const std::string& path);

// The same, or else the first such directory below the path.
std::string RepositoryAt(const ProjectStates& states, const std::string& path);

// "the repository in vendor/lib, such as a submodule; check it there". A command that compares no states also takes its files.
std::string Describe(const ProjectStates& states, const std::string& repository);

}  // namespace korvel
