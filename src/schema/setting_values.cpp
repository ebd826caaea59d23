// Parses and names values of settings. Tested by tests/tool/usage_test.cpp.
#include "schema/setting_values.h"

#include <charconv>
#include <system_error>

namespace korvel {

std::optional<int> CodeOf(std::span<const NamedCode> codes, std::string_view name) {
  for (const NamedCode& row : codes) {
    if (name == row.name) return row.code;
  }
  return std::nullopt;
}

const char* NameOf(std::span<const NamedCode> codes, int code) {
  const NamedCode* row = codes.data();
  while (row->code != code) ++row;
  return row->name;
}

bool IsVersion(std::string_view text) {
  bool is_number = false;  // the byte before was a digit
  for (const char c : text) {
    const bool is_digit = c >= '0' && c <= '9';
    if (!is_digit && !(c == '.' && is_number)) return false;
    is_number = is_digit;
  }
  return is_number;
}

std::optional<int> ParseCount(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < 0) return std::nullopt;
  return value;
}

std::optional<std::size_t> ParseMaxFindings(std::string_view text) {
  const std::optional<int> count = ParseCount(text);
  if (count.value_or(0) == 0) return std::nullopt;
  return static_cast<std::size_t>(*count);
}

}  // namespace korvel
