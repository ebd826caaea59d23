// Decodes UTF-8 and escapes untrusted text for messages. Tested by tests/qmx/text_test.cpp.
#include "base/quote.h"

#include <cstdint>
#include <cstdio>

namespace korvel {
namespace {

struct Utf8Form {
  std::uint8_t mask, lead;  // a first byte belongs to the form if (byte & mask) == lead
  std::size_t length;
  std::uint32_t lowest;  // smaller code points have a shorter form
};

constexpr Utf8Form kUtf8Forms[] = {{0x80, 0x00, 1, 0}, {0xE0, 0xC0, 2, 0x80}, {0xF0, 0xE0, 3, 0x800}, {0xF8, 0xF0, 4, 0x10000}};

struct Character {
  std::size_t length = 0;  // in bytes; 0: no character
  std::uint32_t code_point = 0;
};

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

Character FirstCharacter(std::string_view text) {
  if (text.empty()) return {};
  for (const Utf8Form& form : kUtf8Forms) {
    if ((Byte(text, 0) & form.mask) == form.lead) return Decode(text, form);
  }
  return {};
}

// False for characters that would break the line, hide text or change its direction.
bool IsDisplayable(std::uint32_t code_point) {
  const auto within = [code_point](std::uint32_t low, std::uint32_t high) { return code_point >= low && code_point <= high; };
  return !(code_point < 0x20 || within(0x7F, 0x9F) || within(0x200B, 0x200F) || within(0x2028, 0x202E) ||
           within(0x2060, 0x2069) || code_point == 0xFEFF);
}

std::string FormatEscape(const char* format, unsigned value) {
  char text[16];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

std::string Display(std::string_view text, const Character& first) {
  if (first.length == 0) return FormatEscape("\\x%02X", Byte(text, 0));
  if (IsDisplayable(first.code_point)) return std::string(text.substr(0, first.length));
  if (first.code_point == '\n') return "\\n";
  if (first.code_point == '\r') return "\\r";
  if (first.code_point == '\t') return "\\t";
  return FormatEscape(first.code_point < 0x80 ? "\\x%02X" : "\\u%04X", first.code_point);
}

}  // namespace

std::size_t Utf8Length(std::string_view text) { return FirstCharacter(text).length; }

std::string Quote(std::string_view text) {
  std::string quoted = "'";
  std::size_t taken = 0;
  while (taken < text.size()) {
    const Character first = FirstCharacter(text.substr(taken));
    const std::size_t length = first.length == 0 ? 1 : first.length;
    if (taken + length > kMaxQuoted) return quoted + "...'";
    quoted += Display(text.substr(taken), first);
    taken += length;
  }
  return quoted + "'";
}

}  // namespace korvel
