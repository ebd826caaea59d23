// Computes the checksum with the widest instructions that this processor has. All of them give the same number.
#include "qmx/checksum.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include "qmx/checksum_avx2.h"

namespace qmx {

std::uint64_t Checksum(const void* bytes, std::size_t size) {
#ifdef __x86_64__
  if (__builtin_cpu_supports("avx2")) return ChecksumAvx2(bytes, size);
#endif
  return XXH3_64bits(bytes, size);
}

}  // namespace qmx
