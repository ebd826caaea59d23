// Splitting and version comparison. Tested by tests/rules/text_helpers_test.cpp.
#include "common/text_helpers.h"

#include <algorithm>
#include <string_view>

namespace {

// Takes the first part of a dotted version off `rest` and returns its leading digits without leading zeros, so that numbers of
// any length compare by length, then by bytes.
std::string_view TakeNumber(std::string_view& rest) {
  const std::string_view part = rest.substr(0, rest.find('.'));
  rest.remove_prefix(part.size() < rest.size() ? part.size() + 1 : rest.size());
  std::string_view number = part.substr(0, part.find_first_not_of("0123456789"));
  number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
  return number;
}

int CompareNumbers(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

std::string_view TextOf(const char* text) { return text == nullptr ? std::string_view() : text; }

}  // namespace

void SplitString(const char* str, const char* separators, std::set<std::string>& out) {
  std::string_view rest = TextOf(str);
  while (!rest.empty()) {
    const std::size_t length = std::min(rest.find_first_of(TextOf(separators)), rest.size());
    if (length != 0) out.emplace(rest.substr(0, length));
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
}

int RealCmpVersion(const char* a, const char* b, bool /*flag*/) {
  std::string_view rest_a = TextOf(a);
  std::string_view rest_b = TextOf(b);
  while (!rest_a.empty() || !rest_b.empty()) {
    const int order = CompareNumbers(TakeNumber(rest_a), TakeNumber(rest_b));
    if (order != 0) return order;
  }
  return 0;
}
