// Decodes the bytes of a fuzzer. Every call returns a value, whatever the bytes are; after the last byte, zero and "".
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace fuzz {

class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  bool IsEmpty() const { return rest_.empty(); }

  std::uint8_t Byte() {
    if (rest_.empty()) return 0;
    const auto byte = static_cast<std::uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
  }

  // 0 <= result < bound. REQUIRES: 0 < bound <= 256.
  int Below(int bound) { return Byte() % bound; }

  // Any number; small ones and those at the ends of the range are more frequent than in a uniform distribution.
  std::int32_t Number() {
    const std::uint8_t kind = Byte();
    if (kind < 224) return kind % 32 - 2;
    std::int32_t number = 0;
    std::memcpy(&number, rest_.data(), std::min(rest_.size(), sizeof(number)));
    rest_.remove_prefix(std::min(rest_.size(), sizeof(number)));
    return number;
  }

  // Up to the next line end, which is removed.
  std::string Line() { return UpTo('\n'); }

  // Up to the next byte with that value, which is removed.
  std::string UpTo(char mark) {
    const std::size_t end = std::min(rest_.find(mark), rest_.size());
    std::string line(rest_.substr(0, end));
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    return line;
  }

  // The next line, up to its first zero byte, as a C string.
  std::string Text() {
    const std::string line = Line();
    return line.substr(0, line.find('\0'));
  }

 private:
  std::string_view rest_;
};

}  // namespace fuzz
