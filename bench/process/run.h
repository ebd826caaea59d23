// Runs programs as processes and tells what they took.
#pragma once

#include <string>
#include <vector>

namespace bench {

// A program with its arguments; `name` tells it apart in reports. Its output is dropped, but for standard error.
struct Program {
  std::string name;
  std::vector<std::string> command;
  int status = 0;  // that it must exit with
};

struct Cost {
  double wall_ms = 0;
  double cpu_ms = 0;   // processor time, the system's included
  double peak_mb = 0;  // resident memory, 10^6 bytes; at least what the runner itself holds
};

// Runs the program once. Throws std::runtime_error when it cannot be started or exits with another status than it must.
Cost Run(const Program& program);

// The median of each figure of each program over some rounds; every round runs all of them, one after the other, so that whatever
// else the machine does meets all alike. A round before them is not counted. Throws as Run does.
std::vector<Cost> Medians(const std::vector<Program>& programs, int& rounds);

}  // namespace bench
