// Finds the schema files that a pattern or a directory without files was probably meant for.
#pragma once

#include <optional>
#include <string>

#include "project/file_selection.h"
#include "project/file_tree.h"

namespace korvel {

// A schema file that nothing selects, and a pattern that would. Both are paths from the directory of the project file.
struct NearPattern {
  std::string pattern;
  std::string file;
};

// For a pattern of a project file that matches no file: a schema file in a directory of a similar name, deeper in the same
// directory, or with a suffix in another case. Reads files until it finds a schema, but only a few.
std::optional<NearPattern> FindNearPattern(const std::string& pattern, const ProjectScope& scope, FileTree& state);

// For a directory in which a project file selects nothing: a schema file in it, whatever its suffix is.
std::optional<NearPattern> FindPatternFor(const std::string& directory, const ProjectScope& scope, FileTree& state);

// " (did you mean 'schemas/*.xml', which matches schemas/a.xml?)"; "" for nullopt.
std::string ToText(const std::optional<NearPattern>& near);

}  // namespace korvel
