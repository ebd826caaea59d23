// The header of an image. docs/formats/image.md describes it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qmx/qmx_image.h"

namespace qmx {

// Reads as kByteOrder on a machine with the writer's byte order and as kForeignByteOrder on others.
inline constexpr std::uint32_t kByteOrder = 0x01020304;
inline constexpr std::uint32_t kForeignByteOrder = 0x04030201;

// Stored in images: do not change.
struct ImageHeader {
  char magic[8];                // kImageMagic
  std::uint32_t byte_order;     // kByteOrder
  std::uint32_t version;        // kImageVersion
  std::uint32_t header_size;    // kImageHeaderSize
  std::uint32_t reserved;       // 0
  std::uint64_t block_size;     // bytes after the header
  std::uint64_t checksum;       // of the block: 64-bit XXH3
  std::uint64_t reserved_2[3];  // 0
};
static_assert(sizeof(ImageHeader) == kImageHeaderSize && kImageHeaderSize % 8 == 0);
static_assert(offsetof(ImageHeader, block_size) == 24 && offsetof(ImageHeader, reserved_2) == 40);

}  // namespace qmx
