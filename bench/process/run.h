// Runs programs as processes and measures them.
#pragma once

#include <string>
#include <vector>

namespace bench {

// A program with its arguments; `name` identifies it in reports. Its standard output is discarded.
struct Program {
  std::string name;
  std::vector<std::string> command;
  int status = 0;  // expected exit status
};

struct Cost {
  double wall_ms = 0;
  double cpu_ms = 0;   // processor time, including that of the system
  double peak_mb = 0;  // resident memory, 10^6 bytes; at least that of the runner itself
};

// Runs the program once. Throws std::runtime_error if it cannot be started or exits with another status than the expected one.
Cost Run(const Program& program);

// The median of each figure of each program over several rounds. Each round runs all programs one after the other, so that other
// load affects all of them alike. A first round is not counted. Throws as Run does.
std::vector<Cost> Medians(const std::vector<Program>& programs, int& rounds);

}  // namespace bench
