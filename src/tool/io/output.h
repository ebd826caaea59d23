// Writes results to standard output or to files.
#pragma once

#include <optional>
#include <string>

namespace korvel::tool {

// Whether status words may be colored: standard output is a terminal with colors, and NO_COLOR is not set.
bool CanColor();

// Writes to standard output. A closed reader is not a failure; any other failure is thrown as std::runtime_error.
void WriteStandardOutput(const std::string& text);

// Writes a file atomically: an old file of that name stays unchanged until the new one is complete, and if anything fails, which
// is thrown as std::runtime_error. The new file takes over the permission bits of the old one. A link is followed.
void WriteFile(const std::string& path, const std::string& text);

}  // namespace korvel::tool
