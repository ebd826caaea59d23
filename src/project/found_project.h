// Reads project files that a call does not name: one in the working directory or above it, and nested ones.
#pragma once

#include <string>

#include "schema/file_below.h"
#include "schema/file_bytes.h"

namespace korvel {

// What is allowed instead of a project file that does not apply by itself.
inline constexpr char kAllowedProjects[] = "a project file that --project names, or --no-project";

// The bytes of the project file at `path`, which begins at `directory`. Its settings and waivers change the result of the call
// without being requested, so it must belong to the user, to root, or to the owner of its repository, if git accepts that. Throws
// InputError with one line that begins with `name`.
Bytes ReadFoundProject(const std::string& directory, const std::string& path, const std::string& name, Links links);

// The text of the project file at a path. One that the call names may belong to anybody and be a link. Empty if there is no file.
// Throws InputError.
std::string TextOfProject(const std::string& path, bool is_named, Links links);

}  // namespace korvel
