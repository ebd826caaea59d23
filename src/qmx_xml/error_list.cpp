// Collects the errors of a file by byte offset and converts the offsets to lines and columns in one pass.
#include "qmx_xml/error_list.h"

#include <algorithm>

namespace qmx {

void ErrorList::Add(std::size_t offset, std::string text) {
  if (!IsFull()) errors_.emplace_back(offset, std::move(text));
}

std::vector<ReadError> ErrorList::Locate(std::string_view text) const {
  auto sorted = errors_;
  std::ranges::stable_sort(sorted, {}, &std::pair<std::size_t, std::string>::first);
  LineCounter counter(text);
  std::vector<ReadError> located;
  located.reserve(sorted.size() + 1);
  for (auto& [offset, what] : sorted) located.push_back({counter.At(offset), std::move(what)});
  if (IsFull()) {
    located.push_back(
        {located.back().location, "too many errors; only the first " + std::to_string(kMaxErrors) + " found are shown"});
  }
  return located;
}

}  // namespace qmx
