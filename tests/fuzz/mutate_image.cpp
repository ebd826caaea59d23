// Mutates an image for a fuzzer: every record consists of numbers of 8 and 4 bytes at multiples of their size, and the values
// that the verifier compares them with are in other records of the same image. Tested by mutate_test.cpp.
#include "fuzz/mutate_image.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "model/random_scenario.h"
#include "qmx/image_header.h"
#include "qmx/image_reading.h"
#include "qmx/qmx_types.h"

namespace fuzz {
namespace {

using model::Random;

template <class Number>
Number At(const std::string& image, std::size_t offset) {
  Number number;
  std::memcpy(&number, image.data() + offset, sizeof(number));
  return number;
}

template <class Number>
std::size_t AnyPlace(const std::string& image, Random& random) {
  const std::size_t numbers = (image.size() - qmx::kImageHeaderSize) / sizeof(Number);
  return qmx::kImageHeaderSize + random.Below(numbers) * sizeof(Number);
}

// Distances between records, and between values inside and outside of a range.
const std::vector<int> kSteps = {1,
                                 -1,
                                 2,
                                 8,
                                 -8,
                                 sizeof(tagQMXDBKeyInfo),
                                 sizeof(tagQMXMetaIndex),
                                 sizeof(tagQMXMetaEntry),
                                 -static_cast<int>(sizeof(tagQMXMetaEntry)),
                                 sizeof(tagQMXMeta)};

template <class Number>
void ChangeNumber(std::string& image, Random& random) {
  using Limits = std::numeric_limits<Number>;
  const std::size_t place = AnyPlace<Number>(image, random);
  auto number = At<Number>(image, place);
  switch (random.Below(4)) {
    case 0:
      number = At<Number>(image, AnyPlace<Number>(image, random));
      break;
    case 1:
      number = random.Of<Number>({0, 1, -1, 2, 15, 16, Limits::max(), Limits::min(), Limits::max() / 72, 0x7fff, 0x8000});
      break;
    default:
      __builtin_add_overflow(number, static_cast<Number>(random.Of(kSteps)), &number);
      break;
  }
  std::memcpy(image.data() + place, &number, sizeof(number));
}

std::string AnyImage(Random& random) {
  for (;;) {
    const auto library = model::Build(model::RandomLibrary(model::LibraryKind::kOdd, random));
    if (library) return qmx::WriteImage(*library);
  }
}

}  // namespace

std::string Fixed(std::string image) {
  if (image.size() < qmx::kImageHeaderSize) return image;
  const std::uint64_t block_size = image.size() - qmx::kImageHeaderSize;
  std::memcpy(image.data() + offsetof(qmx::ImageHeader, block_size), &block_size, sizeof(block_size));
  image::UpdateChecksum(image);
  return image;
}

void MutateImage(std::string& image, Random& random) {
  constexpr std::size_t kLeast = qmx::kImageHeaderSize + sizeof(std::int64_t);
  if (image.size() < kLeast || random.OneIn(16)) image = AnyImage(random);
  do {
    random.OneIn(2) ? ChangeNumber<std::int64_t>(image, random) : ChangeNumber<std::int32_t>(image, random);
  } while (random.OneIn(3));
  image = Fixed(std::move(image));
}

}  // namespace fuzz
