// The lower bound: the cost of reading two libraries side by side, assuming that they are alike.
#pragma once

#include <cstdint>

#include "qmx/qmx_types.h"

namespace bench {

// Compares each entry of each meta with the entry at the same position on the other side, in one pass over both blocks: name, id,
// version, type, size, count and flag. Returns how many differ; entries that only one side has are not counted.
std::int64_t Lockstep(LPQMXMETALIB old_lib, LPQMXMETALIB new_lib);

}  // namespace bench
