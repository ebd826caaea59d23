// Gives the memory of a file back to the system while the file is parsed.
#pragma once

#include <array>
#include <cstddef>

namespace qmx {

class ParsedPages {
 public:
  // `bytes` is the memory of the file.
  explicit ParsedPages(char* bytes);

  // Whether enough was parsed since the last release for another one to pay.
  bool IsDue(std::size_t offset) const { return offset >= rest_ + kStep; }

  // Releases the whole pages before `offset`, except those of the names of these tags: the parser compares the names of open
  // elements with their end tags. A released byte is zero from then on. `tags` are offsets, in any order.
  // REQUIRES: neither `offset` nor the tags of the elements that are open at `offset` were released before.
  void Release(std::size_t offset, std::array<std::size_t, 3> tags);

 private:
  static constexpr std::size_t kStep = std::size_t{128} << 10;  // bytes

  // The begin of the page in which an offset lies; 0 if the page begins before the bytes.
  std::size_t PageOf(std::size_t offset) const;
  void GiveBack(std::size_t begin, std::size_t end);

  char* bytes_;
  std::size_t phase_;     // where the bytes begin in their first page
  std::size_t rest_ = 0;  // what was parsed before is released or kept
};

}  // namespace qmx
