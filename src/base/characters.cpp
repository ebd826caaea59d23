// Splits text into characters and aligns columns. What counts as wide is a short list of ranges, not a Unicode database: it only
// decides where a caret is put. Tested by tests/report/characters_test.cpp and layout_test.cpp.
#include "base/characters.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"

namespace korvel {
namespace {

struct CellRange {
  char32_t first;
  char32_t last;
  std::size_t cells;
};

// Sorted by code point.
constexpr CellRange kRanges[] = {
    {0x0300, 0x036F, 0},    // combining marks
    {0x1100, 0x115F, 2},    // Hangul letters
    {0x200B, 0x200D, 0},    // joiners
    {0x2E80, 0x303E, 2},    // CJK radicals, punctuation
    {0x3041, 0xA4CF, 2},    // kana to Yi
    {0xAC00, 0xD7A3, 2},    // Hangul
    {0xF900, 0xFAFF, 2},    // CJK compatibility
    {0xFE00, 0xFE0F, 0},    // variation selectors
    {0xFE30, 0xFE6F, 2},    // CJK forms
    {0xFF01, 0xFF60, 2},    // full-width forms
    {0xFFE0, 0xFFE6, 2},    // full-width signs
    {0x1F300, 0x1F64F, 2},  // pictures
    {0x1F680, 0x1F6FF, 2},  // vehicles
    {0x1F900, 0x1F9FF, 2},  // more pictures
    {0x20000, 0x3FFFD, 2},  // rare ideographs
};

char32_t CodePoint(std::string_view character) {
  const auto first = static_cast<unsigned char>(character.front());
  if (character.size() == 1) return first;
  char32_t code = first & (0xFFU >> (character.size() + 1));
  for (const char byte : character.substr(1)) code = code << 6U | (static_cast<unsigned char>(byte) & 0x3FU);
  return code;
}

bool IsUtf8(std::string_view character) { return Utf8Length(character) != 0; }

}  // namespace

std::size_t CharacterLength(std::string_view text) { return std::max<std::size_t>(Utf8Length(text), 1); }

std::size_t CharacterCount(std::string_view text) {
  std::size_t count = 0;
  for (; !text.empty(); ++count) text.remove_prefix(CharacterLength(text));
  return count;
}

std::string ValidUtf8(std::string_view text) {
  std::string valid;
  while (!text.empty()) {
    const std::string_view character = text.substr(0, CharacterLength(text));
    valid += IsUtf8(character) ? character : "\xEF\xBF\xBD";
    text.remove_prefix(character.size());
  }
  return valid;
}

std::string VisibleCharacter(std::string_view character) {
  if (IsUtf8(character)) return OneLine(character);
  constexpr char kDigits[] = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(character.front());
  return {'\\', 'x', kDigits[byte >> 4U], kDigits[byte & 0xFU]};
}

std::size_t CellsOf(std::string_view character) {
  const char32_t code = CodePoint(character);
  const auto* const range = std::ranges::lower_bound(kRanges, code, std::less<>(), &CellRange::last);
  return range == std::end(kRanges) || code < range->first ? 1 : range->cells;
}

std::string InColumns(const std::vector<Align>& columns, const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths(columns.size());
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < columns.size(); ++i) widths[i] = std::max(widths[i], CharacterCount(row[i]));
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const std::string padding(widths[i] - CharacterCount(row[i]), ' ');
      line += columns[i] == Align::kLeft ? row[i] + padding : padding + row[i];
      line += "  ";
    }
    text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return text;
}

}  // namespace korvel
