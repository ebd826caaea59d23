// Uses all of a library, as whoever trusts it would.
#pragma once

#include <cstdint>
#include <string>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_image.h"

namespace image {

// A library with all that there is: structure, union, nesting, counts, keys, indexes, attributes, a meta without keys.
qmx::Metalib FullLibrary();

// Reads every record and every text through the read operations, looks every name up, and runs the checks of a table and its
// fields. Returns the bytes of the records and texts met.
std::uint64_t ReadEverything(LPQMXMETALIB library);

// Bytes of an image, in memory of exactly that size, so that a sanitizer sees each byte too far.
qmx::ImageResult Load(const std::string& bytes);

// Makes the checksum of an image that of the block in it.
void MendChecksum(std::string& image);

}  // namespace image
