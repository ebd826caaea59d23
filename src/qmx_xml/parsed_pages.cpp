// Releases pages with madvise. Tested by tests/qmx/release_test.cpp.
#include "qmx_xml/parsed_pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

namespace qmx {
namespace {

constexpr std::uintptr_t kTagBytes = 64;  // more than '<' and the longest name

std::uintptr_t PageSize() {
  static const auto size = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  return size;
}

// The begin of the page in which the address lies.
std::uintptr_t PageOf(std::uintptr_t address) { return address / PageSize() * PageSize(); }

// Only the pages that lie in the range as a whole: other data may be next to it. If the system refuses, the memory stays.
void GiveBack(std::uintptr_t begin, std::uintptr_t end) {
  const std::uintptr_t first = PageOf(begin + PageSize() - 1);
  const std::uintptr_t last = PageOf(end);
  if (first < last) ::madvise(reinterpret_cast<void*>(first), last - first, MADV_DONTNEED);
}

}  // namespace

void ParsedPages::Release(std::size_t offset, std::array<std::size_t, 3> tags) {
  const std::uintptr_t end = begin_ + offset;
  std::ranges::sort(tags);
  for (const std::size_t tag : tags) {
    const std::uintptr_t kept = begin_ + tag;
    if (kept < rest_ || kept >= end) continue;
    GiveBack(rest_, kept);
    rest_ = std::min(kept + kTagBytes, end);
  }
  GiveBack(rest_, end);
  rest_ = std::max(rest_, PageOf(end));
}

}  // namespace qmx
