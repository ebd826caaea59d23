// Splits text into characters, escapes those that must not be shown, and aligns columns. What counts as wide is a short list of
// ranges, not a Unicode database: it only decides where a caret is put. Tested by tests/report/characters_test.cpp and
// layout_test.cpp.
#include "base/characters.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iterator>

namespace korvel {
namespace {

// --- UTF-8 ---

struct Utf8Form {
  std::uint8_t mask, lead;  // a first byte belongs to the form if (byte & mask) == lead
  std::size_t length;
  std::uint32_t lowest;  // smaller code points have a shorter form
};

constexpr Utf8Form kUtf8Forms[] = {{0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

std::uint8_t Byte(std::string_view text, std::size_t at) { return static_cast<std::uint8_t>(text[at]); }

Character Decode(std::string_view text, const Utf8Form& form) {
  if (text.size() < form.length) return {};
  std::uint32_t code_point = Byte(text, 0) & static_cast<std::uint8_t>(~form.mask);
  for (std::size_t i = 1; i < form.length; ++i) {
    if ((Byte(text, i) & 0xC0) != 0x80) return {};
    code_point = code_point << 6 | (Byte(text, i) & 0x3Fu);
  }
  const bool is_surrogate = code_point >= 0xD800 && code_point <= 0xDFFF;
  if (code_point < form.lowest || code_point > 0x10FFFF || is_surrogate) return {};
  return {form.length, code_point};
}

// --- Hidden characters ---

struct HiddenRange {
  std::uint32_t first;
  std::uint32_t last;
};

// Sorted by code point.
constexpr HiddenRange kHidden[] = {
    {0x0000, 0x001F},    // control characters
    {0x007F, 0x009F},    // more control characters
    {0x00AD, 0x00AD},    // soft hyphen
    {0x034F, 0x034F},    // grapheme joiner
    {0x061C, 0x061C},    // Arabic letter mark
    {0x115F, 0x1160},    // Hangul fillers
    {0x17B4, 0x17B5},    // Khmer vowels without a form
    {0x180E, 0x180E},    // Mongolian vowel separator
    {0x200B, 0x200F},    // zero-width characters, direction marks
    {0x2028, 0x202E},    // line and paragraph separators, direction embeddings and overrides
    {0x2060, 0x206F},    // word joiner, invisible operators, direction isolates
    {0x3164, 0x3164},    // Hangul filler
    {0xFEFF, 0xFEFF},    // byte order mark
    {0xFFA0, 0xFFA0},    // half-width Hangul filler
    {0xFFF0, 0xFFFB},    // reserved for invisible characters, annotations
    {0x1BCA0, 0x1BCA3},  // controls of shorthand
    {0x1D173, 0x1D17A},  // controls of musical notation
    {0xE0000, 0xE0FFF},  // tags and variation selectors: each byte of a hidden text can be one of them
};

void AppendFormatted(std::string& out, const char* format, std::uint32_t value) {
  char text[16];
  std::snprintf(text, sizeof text, format, static_cast<unsigned>(value));
  out += text;
}

void AppendEscape(std::string& out, std::uint32_t code_point) {
  if (code_point == '\n') {
    out += "\\n";
  } else if (code_point == '\r') {
    out += "\\r";
  } else if (code_point == '\t') {
    out += "\\t";
  } else if (code_point < 0x80) {
    AppendFormatted(out, "\\x%02x", code_point);
  } else {
    AppendFormatted(out, code_point <= 0xFFFF ? "\\u%04x" : "\\U%08x", code_point);
  }
}

bool IsAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// --- Cells ---

struct CellRange {
  std::uint32_t first;
  std::uint32_t last;
  std::size_t cells;
};

// Sorted by code point.
constexpr CellRange kCells[] = {
    {0x0300, 0x036F, 0},    // combining marks
    {0x1100, 0x115F, 2},    // Hangul letters
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

}  // namespace

Character FirstCharacter(std::string_view text) {
  if (text.empty()) return {};
  for (const Utf8Form& form : kUtf8Forms) {
    if ((Byte(text, 0) & form.mask) == form.lead) return Decode(text, form);
  }
  return {};
}

bool IsHidden(std::uint32_t code_point) {
  const auto* const range = std::ranges::lower_bound(kHidden, code_point, std::less<>(), &HiddenRange::last);
  return range != std::end(kHidden) && code_point >= range->first;
}

bool BeginsLogCommand(std::string_view text) {
  if (!text.starts_with("##")) return false;
  const auto* const end = std::ranges::find_if_not(text.substr(2), IsAsciiLetter);
  return end != text.end() && *end == '[';
}

std::size_t AppendShown(std::string& out, std::string_view text) {
  const char byte = text.front();
  if (byte >= ' ' && byte <= '~' && byte != '#') {  // nearly every character
    out += byte;
    return 1;
  }
  const Character first = FirstCharacter(text);
  if (first.length == 0) {
    AppendFormatted(out, "\\x%02x", Byte(text, 0));
    return 1;
  }
  if (first.code_point == '#' && BeginsLogCommand(text)) {
    AppendFormatted(out, "\\x%02x", first.code_point);
  } else if (IsHidden(first.code_point)) {
    AppendEscape(out, first.code_point);
  } else {
    out.append(text.substr(0, first.length));
  }
  return first.length;
}

void AppendJsonEscape(std::string& out, std::uint32_t code_point) {
  if (code_point <= 0xFFFF) return AppendFormatted(out, "\\u%04x", code_point);
  AppendFormatted(out, "\\u%04x", 0xD800 + ((code_point - 0x10000) >> 10));
  AppendFormatted(out, "\\u%04x", 0xDC00 + ((code_point - 0x10000) & 0x3FF));
}

std::size_t CharacterLength(std::string_view text) { return std::max<std::size_t>(FirstCharacter(text).length, 1); }

std::size_t CharacterCount(std::string_view text) {
  std::size_t count = 0;
  for (; !text.empty(); ++count) text.remove_prefix(CharacterLength(text));
  return count;
}

std::string ValidUtf8(std::string_view text) {
  std::string valid;
  while (!text.empty()) {
    const std::string_view character = text.substr(0, CharacterLength(text));
    valid += FirstCharacter(character).length != 0 ? character : "\xEF\xBF\xBD";
    text.remove_prefix(character.size());
  }
  return valid;
}

std::string VisibleCharacter(std::string_view text) {
  std::string shown;
  AppendShown(shown, text);
  return shown;
}

std::size_t CellsOf(std::string_view character) {
  const std::uint32_t code = FirstCharacter(character).code_point;
  const auto* const range = std::ranges::lower_bound(kCells, code, std::less<>(), &CellRange::last);
  return range == std::end(kCells) || code < range->first ? 1 : range->cells;
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
