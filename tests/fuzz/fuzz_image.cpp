// The verifier of images. Whatever it accepts is safe in every read operation and every rule, against itself and another that was
// accepted, and the plain model gives the same answers.
//
// A try is changed record by record: random bytes hardly ever pass the verifier.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "fuzz/ask_all.h"
#include "fuzz/ask_model.h"
#include "fuzz/mutate_image.h"
#include "fuzz/require.h"
#include "qmx/image_reading.h"
#include "qmx/qmx_image.h"

namespace {

// What becomes of the image by a few changes more, always the same ones; nothing where the verifier refuses all tries.
std::optional<qmx::Metalib> Neighbour(const std::string& image) {
  model::Random random(image.size());
  for (int tries = 0; tries < 4; ++tries) {
    std::string changed = image;
    fuzz::MutateImage(changed, random);
    qmx::ImageResult result = image::Load(changed);
    if (result.metalib) return std::move(result.metalib);
  }
  return std::nullopt;
}

void Ask(LPQMXMETALIB old_library, LPQMXMETALIB new_library) {
  fuzz::AskAll(old_library, new_library);
  model::Scenario scenario;
  scenario.questions = fuzz::EveryQuestion(old_library);
  fuzz::RequireModel(scenario, old_library, new_library, model::AskChecker(scenario, old_library, new_library));
}

void Use(const qmx::ImageResult& result) {
  if (!result.metalib) {
    fuzz::Require(!result.error.part.empty() && !result.error.reason.empty(), "a wrong image has a fault");
    fuzz::Require(qmx::Describe(result.error).find('\n') == std::string::npos, "a fault is one line");
    return;
  }
  const LPQMXMETALIB library = result.metalib->get();
  const std::string image = qmx::WriteImage(*result.metalib);
  image::ReadEverything(library);
  Ask(library, library);
  if (const auto other = Neighbour(image)) {
    Ask(library, other->get());
    Ask(other->get(), library);
  }
  fuzz::Require(qmx::WriteImage(*result.metalib) == image, "asking changes nothing");
  fuzz::Require(image::Load(image).metalib.has_value(), "what was accepted is accepted again");
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
