// The checksum of an image.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx {

// The 64-bit XXH3 of `size` bytes. Stored in images: do not change.
std::uint64_t Checksum(const void* bytes, std::size_t size);

}  // namespace qmx
