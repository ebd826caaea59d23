// Compiled with AVX2 instructions, so it includes nothing whose functions the linker could use elsewhere.
#include "qmx/checksum_avx2.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace qmx {

std::uint64_t ChecksumAvx2(const void* bytes, std::size_t size) { return XXH3_64bits(bytes, size); }

}  // namespace qmx
