// The reader of schema files. Requires that an accepted library can be used, written and read again, and that an error has a
// reason and a location in the file.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "qmx/image_reading.h"
#include "qmx/qmx_image.h"
#include "qmx/qmx_xml.h"

namespace {

void RequireErrors(const qmx::ReadResult& result, std::string_view text) {
  fuzz::Require(!result.errors.empty(), "an invalid file has an error");
  fuzz::Require(result.errors.size() <= qmx::kMaxErrors + 1, "the number of errors is limited");
  // A carriage return alone ends a line, too.
  const auto is_end = [](char c) { return c == '\n' || c == '\r'; };
  const auto lines = static_cast<std::size_t>(std::count_if(text.begin(), text.end(), is_end)) + 1;
  for (const qmx::ReadError& error : result.errors) {
    fuzz::Require(error.location.line >= 1 && error.location.line <= lines, "an error is in a line of the file");
    fuzz::Require(error.location.column >= 1 && error.location.column <= text.size() + 1, "an error is in a column of the file");
    fuzz::Require(!error.text.empty() && error.text.find('\n') == std::string::npos, "an error is one line");
  }
}

// The reader that does not keep the text accepts the same files, with the same library.
void RequireSame(const qmx::ReadResult& result, std::string_view text) {
  qmx::XmlBuffer buffer(std::max<std::size_t>(text.size(), 1));
  std::ranges::copy(text, buffer.data());
  const std::optional<qmx::SchemaWithoutText> released = buffer.ReadAndRelease(text.size());
  fuzz::Require(released.has_value() == result.schema.has_value(), "both readers accept the same files");
  if (!released) return;
  const qmx::Metalib& library = result.schema->metalib;
  fuzz::Require(
      released->metalib.size() == library.size() && std::memcmp(released->metalib.get(), library.get(), library.size()) == 0,
      "both readers give the same library");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const qmx::ReadResult result = qmx::ReadXml(text);
  RequireSame(result, text);
  if (!result.schema) {
    RequireErrors(result, text);
    return 0;
  }
  fuzz::Require(result.errors.empty(), "a schema has no errors");
  image::ReadEverything(result.schema->metalib.get());
  const std::string image = qmx::WriteImage(result.schema->metalib);
  const qmx::ImageResult again = image::Load(image);
  fuzz::Require(again.metalib.has_value(), "the image of a schema is valid");
  fuzz::Require(qmx::WriteImage(*again.metalib) == image, "the same library gives the same bytes");
  return 0;
}
