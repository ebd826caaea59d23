// The verifier of images. Whatever it accepts is safe in every read operation and every rule, alone and against another library.
//
// A try is changed record by record: random bytes hardly ever pass the verifier.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "common/modify_table.h"
#include "fuzz/ask_all.h"
#include "fuzz/mutate_image.h"
#include "fuzz/require.h"
#include "qmx/image_reading.h"
#include "qmx/qmx_image.h"

namespace {

void Use(const qmx::ImageResult& result) {
  static const qmx::Metalib full = image::FullLibrary();
  if (!result.metalib) {
    fuzz::Require(!result.error.part.empty() && !result.error.reason.empty(), "a wrong image has a fault");
    fuzz::Require(qmx::Describe(result.error).find('\n') == std::string::npos, "a fault is one line");
    return;
  }
  image::ReadEverything(result.metalib->get());
  fuzz::AskAll(result.metalib->get(), full.get());
  fuzz::AskAll(full.get(), result.metalib->get());
  const std::string image = qmx::WriteImage(*result.metalib);
  fuzz::Require(image::Load(image).metalib.has_value(), "what was accepted is accepted again");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string image(reinterpret_cast<const char*>(data), size);
  Use(image::Load(image));
  const std::string mended = fuzz::Mended(image);
  if (mended != image) Use(image::Load(mended));
  return 0;
}

#ifdef KORVEL_FUZZ
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t max_size);

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t max_size, unsigned seed) {
  model::Random random(seed);
  if (random.OneIn(4)) return LLVMFuzzerMutate(data, size, max_size);
  std::string image(reinterpret_cast<const char*>(data), size);
  fuzz::MutateImage(image, random);
  const std::size_t new_size = std::min(image.size(), max_size);
  std::memcpy(data, image.data(), new_size);
  return new_size;
}
#endif
