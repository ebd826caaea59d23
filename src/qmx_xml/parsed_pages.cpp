// Releases pages with madvise. Tested by tests/qmx/release_test.cpp.
#include "qmx_xml/parsed_pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>

namespace qmx {
namespace {

constexpr std::size_t kTagBytes = 64;  // more than '<' and the longest name

std::size_t PageSize() {
  static const auto size = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  return size;
}

}  // namespace

ParsedPages::ParsedPages(char* bytes) : bytes_(bytes), phase_(reinterpret_cast<std::uintptr_t>(bytes) % PageSize()) {}

std::size_t ParsedPages::PageOf(std::size_t offset) const {
  const std::size_t begin = (phase_ + offset) / PageSize() * PageSize();
  return begin < phase_ ? 0 : begin - phase_;
}

// Only the pages that lie in the range as a whole: other data may be next to it. If the system refuses, the memory stays.
void ParsedPages::GiveBack(std::size_t begin, std::size_t end) {
  const std::size_t first = (phase_ + begin + PageSize() - 1) / PageSize() * PageSize() - phase_;
  const std::size_t last = PageOf(end);
  if (first < last) ::madvise(bytes_ + first, last - first, MADV_DONTNEED);
}

void ParsedPages::Release(std::size_t offset, std::array<std::size_t, 3> tags) {
  std::ranges::sort(tags);
  for (const std::size_t tag : tags) {
    if (tag < rest_ || tag >= offset) continue;
    GiveBack(rest_, tag);
    rest_ = std::min(tag + kTagBytes, offset);
  }
  GiveBack(rest_, offset);
  rest_ = std::max(rest_, PageOf(offset));
}

}  // namespace qmx
