// What a target promises for every input. A broken promise ends the program, which a fuzzer takes for a find and a test for a
// failure.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void Require(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", promise);
  std::abort();
}

}  // namespace fuzz
