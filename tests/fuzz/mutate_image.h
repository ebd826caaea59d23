// Mutates an image for a fuzzer, so that only the values that the verifier checks change.
#pragma once

#include <string>

#include "model/random.h"

namespace fuzz {

// The image with the size and the checksum of its block.
std::string Fixed(std::string image);

// Changes some numbers of its records, or replaces the library. Size and checksum are correct afterwards.
void MutateImage(std::string& image, model::Random& random);

}  // namespace fuzz
