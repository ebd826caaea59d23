// The verifier of images. Whatever it accepts is safe in every read operation and every rule, alone and against another library.
#include <cstdint>
#include <cstring>
#include <string>

#include "common/modify_table.h"
#include "fuzz/ask_all.h"
#include "fuzz/require.h"
#include "qmx/image_header.h"
#include "qmx/image_reading.h"
#include "qmx/qmx_image.h"

namespace {

// The size and the checksum are what the rest says: no mutation of the block would get past them otherwise.
std::string Mended(std::string image) {
  if (image.size() < qmx::kImageHeaderSize) return image;
  const std::uint64_t block_size = image.size() - qmx::kImageHeaderSize;
  std::memcpy(image.data() + offsetof(qmx::ImageHeader, block_size), &block_size, sizeof(block_size));
  image::MendChecksum(image);
  return image;
}

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
  Use(image::Load(Mended(image)));
  return 0;
}
