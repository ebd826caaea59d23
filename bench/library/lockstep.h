// The bound: what it costs to read two libraries side by side, believing that they are alike.
#pragma once

#include <cstdint>

#include "qmx/qmx_types.h"

namespace bench {

// Compares each entry of each meta with the entry at the same position on the other side, in one pass over both blocks: the name,
// and id, version, type, size, count and flag. Returns how many differ; entries that only one side has are not counted.
std::int64_t Lockstep(LPQMXMETALIB old_lib, LPQMXMETALIB new_lib);

}  // namespace bench
