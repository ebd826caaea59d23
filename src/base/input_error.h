// Ends a call because of wrong usage or bad input: a file that cannot be read, an invalid schema, nothing to compare.
#pragma once

#include <string>
#include <vector>

namespace korvel {

// Thrown; main prints the lines on standard error and ends with exit code 2. Lines are complete and have no line end.
struct InputError {
  std::vector<std::string> lines;
};

// A message of the program itself: "korvelcheck: text".
inline std::string ToolMessage(const std::string& text) { return "korvelcheck: " + text; }

}  // namespace korvel
