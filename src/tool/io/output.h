// Where reports go.
#pragma once

#include <optional>
#include <string>

namespace korvel::tool {

// Whether status words may be coloured: standard output is a terminal that can, and NO_COLOR is not set.
bool CanColor();

// Writes to standard output. A reader that went away is no failure; any other is thrown as std::runtime_error.
void WriteStandardOutput(const std::string& text);

// Writes a file whole or not at all: an old file of that name keeps its bytes until the new one is complete, and if anything
// fails, which is thrown as std::runtime_error. A file that is replaced hands on its permission bits; a link keeps its place.
void WriteFile(const std::string& path, const std::string& text);

}  // namespace korvel::tool
