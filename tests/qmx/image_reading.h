// Reads every part of a library, as a program that trusts it would.
#pragma once

#include <cstdint>
#include <string>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_image.h"

namespace image {

// A library with every feature: structure, union, nesting, counts, keys, indexes, attributes, a meta without keys.
qmx::Metalib FullLibrary();

// Reads every record and text through the read operations, looks up every name, and runs the checks of each table and its fields.
// Returns the number of bytes of these records and texts.
std::uint64_t ReadEverything(LPQMXMETALIB library);

// Loads an image from memory of exactly its size, so that a sanitizer detects every access outside it.
qmx::ImageResult Load(const std::string& bytes);

// Sets the checksum of an image to that of its block.
void UpdateChecksum(std::string& image);

}  // namespace image
