// How a call ends: the exit codes, and the exception for a result that is not an error but ends the call with code 1.
#pragma once

#include <string>
#include <vector>

namespace korvel::tool {

// Part of the interface: scripts depend on them.
enum ExitCode : int {
  kAllAllowed = 0,     // everything that was compared is allowed
  kSomeRefused = 1,    // a refusal that is not waived
  kInputError = 2,     // usage or input error
  kInternalError = 3,  // the result could not be written, memory ran out, or the program is wrong
};

// Thrown by a command that would print a schema, if the checker refuses every one it could print. main prints the lines on
// standard error and ends with kSomeRefused. Lines are whole, without newline.
struct NothingAllowed {
  std::vector<std::string> lines;
};

}  // namespace korvel::tool
