// Ends a call whose question could not be asked: wrong usage, a file that cannot be read, a schema that is none, nothing to
// compare.
#pragma once

#include <string>
#include <vector>

namespace korvel {

// Thrown; main prints the lines on standard error and ends with exit code 2. Lines are whole, without new line.
struct InputError {
  std::vector<std::string> lines;
};

// What the program itself says: "korvelcheck: text".
inline std::string ToolMessage(const std::string& text) { return "korvelcheck: " + text; }

}  // namespace korvel
