// Writes images; image_map.cpp reads them. Tested by tests/qmx/image_test.cpp.
#define XXH_INLINE_ALL
#include <xxhash.h>

#include "qmx/image_header.h"

namespace qmx {

std::string WriteImage(const Metalib& metalib) {
  ImageHeader header{};
  kImageMagic.copy(header.magic, sizeof(header.magic));
  header.byte_order = kByteOrder;
  header.version = kImageVersion;
  header.header_size = kImageHeaderSize;
  header.block_size = metalib.size();
  header.checksum = XXH3_64bits(metalib.get(), metalib.size());
  std::string image;
  image.reserve(sizeof(header) + metalib.size());
  image.append(reinterpret_cast<const char*>(&header), sizeof(header));
  return image.append(reinterpret_cast<const char*>(metalib.get()), metalib.size());
}

}  // namespace qmx
