// Ends a call that makes something of a schema, and may not: the checker refuses what it would have made.
#pragma once

#include <string>
#include <vector>

namespace korvel::tool {

// Thrown; main prints the lines on standard error and ends with exit code 1. Lines are whole, without new line.
struct Refused {
  std::vector<std::string> lines;
};

}  // namespace korvel::tool
