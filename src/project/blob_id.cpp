// Tested by tests/tool/blob_id_test.cpp.
#include "project/blob_id.h"

#include <sha1.h>

#include <array>
#include <cstdint>

namespace korvel {

// Git puts a header before the bytes.
std::string BlobId(std::string_view bytes) {
  const std::string header = "blob " + std::to_string(bytes.size()) + '\0';
  SHA1_CTX sum;
  SHA1Init(&sum);
  for (const std::string_view part : {std::string_view(header), bytes}) {
    SHA1Update(&sum, reinterpret_cast<const std::uint8_t*>(part.data()), part.size());
  }
  std::array<char, SHA1_DIGEST_STRING_LENGTH> digits{};
  return SHA1End(&sum, digits.data());
}

}  // namespace korvel
