// Values of settings. Held by tests/tool/usage_test.cpp.
#include "schema/setting_values.h"

#include <charconv>
#include <system_error>

namespace korvel {

bool IsVersion(std::string_view text) {
  bool number = false;  // the byte before was a digit
  for (const char c : text) {
    const bool digit = c >= '0' && c <= '9';
    if (!digit && !(c == '.' && number)) return false;
    number = digit;
  }
  return number;
}

std::optional<int> ParseCount(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < 0) return std::nullopt;
  return value;
}

}  // namespace korvel
