// The checksum with the AVX2 instructions of x86-64. Only for checksum.cpp.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx {

// REQUIRES: the processor has AVX2.
std::uint64_t ChecksumAvx2(const void* bytes, std::size_t size);

}  // namespace qmx
