// What a fuzzer does to an image from one try to the next, so that what the verifier looks at changes and nothing else.
#pragma once

#include <string>

#include "model/random.h"

namespace fuzz {

// The image with the size and the checksum that fit its block.
std::string Fixed(std::string image);

// Some numbers of its records, or another library. The size and the checksum fit afterwards.
void MutateImage(std::string& image, model::Random& random);

}  // namespace fuzz
