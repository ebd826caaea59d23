// The measured libraries: size, change and protocol.
#pragma once

#include <string>
#include <vector>

#include "qmx/qmx_builder.h"

namespace bench {

// How the new library differs from the old one.
enum class Kind {
  kIdentical,
  kOneAdded,     // one more field in each meta
  kOneRefused,   // a field of the last table shrinks
  kTenthRefused  // every tenth field shrinks; only in bench/process
};

// `metas` tables of `fields` fields each; or, with levels, one table on top of that many structures, each of which has two fields
// of the structure below it, so that there are 2 to the power of `levels` paths to the lowest one.
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
