// Decodes the values of attributes piece by piece. Tested by tests/lsp/outline_test.cpp.
#include "lsp/value_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace korvel::lsp {
namespace {

constexpr std::string_view kNotLiteral = "&\t\r\n";  // characters that do not stand for themselves
constexpr std::string_view kSeparators = " \t\r\n";  // of words, decoded
constexpr std::size_t kMaxReference = 32;            // bytes; a longer reference has many leading zeros

// A piece of a raw value and the character for which it stands.
struct ValuePiece {
  std::size_t size;
  std::string text;
};

constexpr std::array<std::pair<std::string_view, char>, 5> kEntities = {
    {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"apos", '\''}, {"quot", '"'}}};

std::string Utf8Of(std::uint32_t code_point) {
  const auto byte = [&](std::uint32_t lead, int shift) { return static_cast<char>(lead | (code_point >> shift & 0x3F)); };
  if (code_point < 0x80) return {static_cast<char>(code_point)};
  if (code_point < 0x800) return {static_cast<char>(0xC0 | code_point >> 6), byte(0x80, 0)};
  if (code_point < 0x10000) return {static_cast<char>(0xE0 | code_point >> 12), byte(0x80, 6), byte(0x80, 0)};
  return {static_cast<char>(0xF0 | code_point >> 18), byte(0x80, 12), byte(0x80, 6), byte(0x80, 0)};
}

// The character of a reference, which is given without '&' and ';'; empty if it is malformed.
std::string Referenced(std::string_view name) {
  const auto* const entity = std::ranges::find(kEntities, name, [](const auto& row) { return row.first; });
  if (entity != kEntities.end()) return {entity->second};
  if (!name.starts_with('#')) return "";
  const bool is_hex = name.starts_with("#x");
  const std::string_view digits = name.substr(is_hex ? 2 : 1);
  std::uint32_t code_point = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), code_point, is_hex ? 16 : 10);
  const bool is_whole = error == std::errc() && end == digits.data() + digits.size();
  const bool is_character = code_point > 0 && code_point <= 0x10FFFF && (code_point < 0xD800 || code_point > 0xDFFF);
  return is_whole && is_character ? Utf8Of(code_point) : "";
}

// REQUIRES: `raw` is not empty.
ValuePiece FirstValuePiece(std::string_view raw) {
  if (raw.front() == '&') {
    const std::size_t end = raw.substr(0, kMaxReference).find(';');
    std::string text = end == std::string_view::npos ? "" : Referenced(raw.substr(1, end - 1));
    if (!text.empty()) return {end + 1, std::move(text)};
    return {1, "&"};
  }
  if (raw.starts_with("\r\n")) return {2, " "};
  if (kNotLiteral.find(raw.front()) != std::string_view::npos) return {1, " "};
  const std::size_t end = std::min(raw.find_first_of(" &\t\r\n", 1), raw.size());
  return raw.front() == ' ' ? ValuePiece{1, " "} : ValuePiece{end, std::string(raw.substr(0, end))};
}

}  // namespace

std::string DecodeValue(std::string_view raw) {
  std::string value;
  while (!raw.empty()) {
    const ValuePiece piece = FirstValuePiece(raw);
    value += piece.text;
    raw.remove_prefix(piece.size);
  }
  return value;
}

bool IsValue(std::string_view raw, std::string_view value) {
  return raw.find_first_of(kNotLiteral) == std::string_view::npos ? raw == value : DecodeValue(raw) == value;
}

std::vector<ValueWord> WordsOf(std::string_view text, const qmx::Span& value) {
  std::vector<ValueWord> words;
  bool is_inside = false;
  for (std::size_t at = value.begin; at < value.end;) {
    const ValuePiece piece = FirstValuePiece(text.substr(at, value.end - at));
    const std::size_t end = at + piece.size;
    const bool separates = kSeparators.find(piece.text.front()) != std::string_view::npos;
    if (!separates && !is_inside) words.push_back({{at, at}, ""});
    if (!separates) {
      words.back().span.end = end;
      words.back().text += piece.text;
    }
    is_inside = !separates;
    at = end;
  }
  return words;
}

}  // namespace korvel::lsp
