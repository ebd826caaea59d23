// The results as Markdown and as JSON, compared with the aims.
#pragma once

#include <string>
#include <vector>

#include "process/cases.h"
#include "process/run.h"

namespace bench {

// One case: the tool, and the bounds measured in the same rounds.
struct Result {
  Case measured;
  int rounds = 0;
  double files_mb = 0;  // both files, 10^6 bytes
  Cost tool;
  Cost read;            // reading both files and doing nothing: expat for XML, adding up the bytes for images
  Cost nothing_shared;  // a program that does nothing, with shared libraries
  Cost nothing_static;  // the same without shared libraries
};

// Three tables: the cases, the growth exponents, the aims.
std::string Markdown(const std::vector<Result>& results);

std::string Json(const std::vector<Result>& results);

}  // namespace bench
