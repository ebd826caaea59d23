// Gives the memory of a file back to the system while the file is parsed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace qmx {

class ParsedPages {
 public:
  // `bytes` is the memory of the file.
  explicit ParsedPages(char* bytes) : begin_(reinterpret_cast<std::uintptr_t>(bytes)), rest_(begin_) {}

  // Whether enough was parsed since the last release for another one to pay.
  bool IsDue(std::size_t offset) const { return begin_ + offset >= rest_ + kStep; }

  // Releases the whole pages before `offset`, except those of the names of these tags: the parser compares the names of open
  // elements with their end tags. A released byte is zero from then on. `tags` are offsets, in any order.
  // REQUIRES: neither `offset` nor the tags of the elements that are open at `offset` were released before.
  void Release(std::size_t offset, std::array<std::size_t, 3> tags);

 private:
  static constexpr std::size_t kStep = std::size_t{128} << 10;  // bytes

  std::uintptr_t begin_;
  std::uintptr_t rest_;  // what was parsed before is released or kept
};

}  // namespace qmx
