// The paths by which fingerprints and waivers identify schema files.
#pragma once

#include <filesystem>
#include <string>

#include "project/project.h"

namespace korvel {

// The directory of a path without links, and its last name as it is: a link to a file is another name of that file. "" is the
// working directory.
std::filesystem::path AbsolutePath(const std::string& path);

// The directory of the project file, else the working directory, as a path from `top`, an absolute directory: "" for `top` itself
// and for a directory that is not inside. `project` may be null.
std::string ProjectDirectory(const Project* project, const std::string& top);

// A path from the directory of the project; both are paths from the same top. Begins with "../" for a file that is not below it.
std::string PathInProject(const std::string& directory, const std::string& path);

// The same for a file of a call. For a file that is not below the directory of the project (without a project, the working
// directory), only its name; for "git:REV:PATH" the PATH, which is taken to begin there; "<stdin>" for "-".
std::string PathInProject(const Project* project, const std::string& given);

}  // namespace korvel
