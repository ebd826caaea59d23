// The libraries that are measured: how large, what was changed, in which protocol.
#pragma once

#include <string>
#include <vector>

#include "qmx/qmx_builder.h"

namespace bench {

// What the new library has that the old one has not.
enum class Kind {
  kIdentical,
  kOneAdded,     // one field more in each meta
  kOneRefused,   // a field of the last table shrinks
  kTenthRefused  // every tenth field shrinks; of processes only
};

// `metas` tables of `fields` fields each; or, with levels, one table on top of that many structures, each of which is two fields
// of the structure below it, so that the lowest one is met 2 to the power of `levels` times.
struct Shape {
  int metas = 1;
  int fields = 0;
  int levels = 0;
  bool operator==(const Shape&) const = default;
};

struct Pair {
  qmx::Metalib old_lib;
  qmx::Metalib new_lib;
  std::vector<std::string> tables;  // those with a key, in declaration order
  double entry_pairs;               // entries of the old library
};

Pair MakePair(const Shape& shape, Kind kind, qmx::Protocol protocol);

}  // namespace bench
