// A guarantee of a target for every input. A violation ends the program, which a fuzzer reports as a find and a test as a
// failure.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void Require(bool holds, const char* guarantee) {
  if (holds) return;
  std::fprintf(stderr, "violated: %s\n", guarantee);
  std::abort();
}

}  // namespace fuzz
