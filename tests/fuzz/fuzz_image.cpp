// The verifier of images. Requires that every read operation and every rule can use what it accepts, compared with itself and
// with another accepted image, and that the plain model gives the same results.
//
// Inputs are mutated record by record: random bytes hardly ever pass the verifier.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "fuzz/check_all.h"
#include "fuzz/compare_model.h"
#include "fuzz/mutate_image.h"
#include "fuzz/require.h"
#include "qmx/image_reading.h"
#include "qmx/qmx_image.h"

namespace {

// A second image, made from the first by a few fixed mutations; nothing if the verifier refuses all attempts.
std::optional<qmx::Metalib> MutatedCopy(const std::string& image) {
  model::Random random(image.size());
  for (int tries = 0; tries < 4; ++tries) {
    std::string changed = image;
    fuzz::MutateImage(changed, random);
    qmx::ImageResult result = image::Load(changed);
    if (result.metalib) return std::move(result.metalib);
  }
  return std::nullopt;
}

void CheckPair(LPQMXMETALIB old_library, LPQMXMETALIB new_library) {
  fuzz::CheckAll(old_library, new_library);
  model::Scenario scenario;
  scenario.calls = fuzz::EveryCall(old_library);
  fuzz::RequireModel(scenario, old_library, new_library, model::RunChecker(scenario, old_library, new_library));
}

void Use(const qmx::ImageResult& result) {
  if (!result.metalib) {
    fuzz::Require(!result.error.part.empty() && !result.error.reason.empty(), "a refused image has a fault");
    fuzz::Require(qmx::Describe(result.error).find('\n') == std::string::npos, "a fault is one line");
    return;
  }
  const LPQMXMETALIB library = result.metalib->get();
  const std::string image = qmx::WriteImage(*result.metalib);
  image::ReadEverything(library);
  CheckPair(library, library);
  if (const auto other = MutatedCopy(image)) {
    CheckPair(library, other->get());
    CheckPair(other->get(), library);
  }
  fuzz::Require(qmx::WriteImage(*result.metalib) == image, "a check changes nothing");
  fuzz::Require(image::Load(image).metalib.has_value(), "an accepted image is accepted again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string image(reinterpret_cast<const char*>(data), size);
  Use(image::Load(image));
  const std::string fixed = fuzz::Fixed(image);
  if (fixed != image) Use(image::Load(fixed));
  return 0;
}

#ifdef KORVEL_FUZZ
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size, unsigned seed) {
  model::Random random(seed);
  if (random.OneIn(4)) return LLVMFuzzerMutate(data, size, max_size);
  std::string image(reinterpret_cast<const char*>(data), size);
  fuzz::MutateImage(image, random);
  return image.copy(reinterpret_cast<char*>(data), max_size);
}
#endif
