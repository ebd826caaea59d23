// Random pairs of schema libraries: short and long metas, fields that share names and ids, sub-structures that are shared, empty
// or missing, and a new side that mostly is the old one with an edit or two.
#pragma once

#include <random>

#include "support/schema.h"

namespace linear {

struct Pair {
  support::Library old_lib;
  support::Library new_lib;
};

Pair RandomPair(std::mt19937_64& random);

}  // namespace linear
