// Numbers and texts in records. A number takes four bytes, little-endian.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace codec {

inline void PutNumber(std::string& out, std::uint32_t number) {
  for (int shift = 0; shift < 32; shift += 8) out += static_cast<char>(number >> shift & 0xff);
}

// The length, then the bytes.
inline void PutRun(std::string& out, std::string_view run) {
  PutNumber(out, static_cast<std::uint32_t>(run.size()));
  out += run;
}

// Takes bytes from the front of `rest`. Returns nullopt and leaves `rest` unchanged if it is too short.
inline std::optional<std::string_view> TakeBytes(std::string_view& rest, std::size_t size) {
  if (rest.size() < size) return std::nullopt;
  const std::string_view bytes = rest.substr(0, size);
  rest.remove_prefix(size);
  return bytes;
}

inline std::optional<std::uint32_t> TakeNumber(std::string_view& rest) {
  const std::optional<std::string_view> bytes = TakeBytes(rest, 4);
  if (!bytes) return std::nullopt;
  std::uint32_t number = 0;
  for (unsigned i = 0; i < 4; ++i) number |= std::uint32_t{static_cast<unsigned char>((*bytes)[i])} << 8 * i;
  return number;
}

inline std::optional<std::string_view> TakeRun(std::string_view& rest) {
  const std::optional<std::uint32_t> size = TakeNumber(rest);
  return size ? TakeBytes(rest, *size) : std::nullopt;
}

}  // namespace codec
