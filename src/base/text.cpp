// Decodes UTF-8 and escapes. OneLine leaves everything else as it is, because the checker's texts are part of its interface.
// Tested by tests/qmx/text_test.cpp, tests/report/edit_test.cpp and tests/report/markdown_text_test.cpp.
#include "base/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "base/characters.h"

namespace korvel {
namespace {

// --- OneLine ---

// Length of the control character at the start of `text`, 0 without one: C0, DEL, C1 (U+0080 to U+009F), the line and
// paragraph separators and the marks that change the direction of writing (U+2028 to U+202E, U+2066 to U+2069).
std::size_t ControlLength(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text.front());
  if (byte < 0x20 || byte == 0x7f) return 1;
  if (byte == 0xc2 && text.size() > 1) return static_cast<unsigned char>(text[1]) < 0xa0 ? 2 : 0;
  if (byte != 0xe2 || text.size() < 3) return 0;
  const auto last = static_cast<unsigned char>(text[2]);
  const bool is_mark = (text[1] == '\x80' && last >= 0xa8 && last <= 0xae) || (text[1] == '\x81' && last >= 0xa6 && last <= 0xa9);
  return is_mark ? 3 : 0;
}

std::string EscapeControl(char c) {
  switch (c) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      break;
  }
  constexpr char kDigits[] = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  return {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xf]};
}

// --- Quote ---

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

// --- Markdown ---

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWord(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

// Whether the character at `at` has no special meaning wherever the text is used. Doubtful ones are escaped.
bool IsPlain(std::string_view text, std::size_t at) {
  const char c = text[at];
  const char before = at == 0 ? ' ' : text[at - 1];
  const char after = at + 1 == text.size() ? ' ' : text[at + 1];
  const auto is_number_so_far = [&] { return std::ranges::all_of(text.substr(0, at), IsDigit); };
  switch (c) {
    case ' ':
    case ',':
    case ';':
    case '?':
    case '\'':
    case '"':
    case '(':
      return true;
    case '/':
    case '-':
    case '=':
    case '>':
    case '%':
      return at > 0;  // begins a command, a list, a heading, a quotation, a reference
    case ')':
      return !is_number_so_far();  // "1)" begins a list
    case '.':
      return !is_number_so_far() && !text.substr(0, at).ends_with("www");  // "www." begins a link
    case ':':
      return after == ' ' || after == '\'';  // "://" makes a link, ":100:" a picture
    case '!':
      return after == ' ';  // "![" begins an image, "!1" a reference
    case '_':
      return IsWord(before) && IsWord(after);  // emphasis begins and ends at words
    default:
      return IsWord(c);
  }
}

std::string EscapeForMarkdown(std::string_view text, bool is_code) {
  std::string markdown;
  const std::string valid = ValidUtf8(OneLine(text));
  for (std::size_t at = 0; at < valid.size(); ++at) {
    const char c = valid[at];
    const std::string reference = "&#" + std::to_string(static_cast<int>(static_cast<unsigned char>(c))) + ";";
    if (IsPlain(valid, at) || (is_code && (c == '.' || c == ':'))) {
      markdown += c;
    } else if (!is_code && (c == '@' || c == '#')) {
      markdown += "<code>" + reference + "</code>";  // even a reference would notify a user or link to an issue
    } else {
      markdown += reference;
    }
  }
  return markdown;
}

}  // namespace

std::string OneLine(std::string_view text) {
  // Nearly every text stays as it is.
  if (std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; })) return std::string(text);
  std::string line;
  while (!text.empty()) {
    const std::size_t control = ControlLength(text);
    for (const char c : text.substr(0, control)) line += EscapeControl(c);
    if (control == 0) line += text.front();
    text.remove_prefix(control == 0 ? 1 : control);
  }
  return line;
}

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

std::string EscapeWith(std::string_view text, std::string_view characters, std::string_view escape) {
  std::string escaped;
  for (const char c : text) escaped.append(characters.find(c) == std::string_view::npos ? "" : escape).append(1, c);
  return escaped;
}

// A character reference is never markup, in any parser; parsers differ about backslashes.
std::string MarkdownText(std::string_view text) { return EscapeForMarkdown(text, false); }

std::string MarkdownCode(std::string_view text) { return "<code>" + EscapeForMarkdown(text, true) + "</code>"; }

std::string MarkdownBlock(std::string_view language, std::string_view lines) {
  std::size_t longest = 0;
  std::size_t run = 0;
  for (const char c : lines) longest = std::max(longest, run = c == '`' ? run + 1 : 0);
  const std::string fence(std::max<std::size_t>(longest + 1, 3), '`');
  return fence + std::string(language) + "\n" + ValidUtf8(lines) + fence + "\n";
}

std::string Wrapped(std::string_view text, std::size_t width, std::string_view indent) {
  std::string wrapped;
  std::size_t column = 0;  // after the last word; 0 = at the start of a line
  while (!text.empty()) {
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    const bool fits = column != 0 && column + 1 + word.size() <= width;
    if (column != 0) wrapped += fits ? " " : "\n";
    if (!fits) wrapped += indent;
    wrapped += word;
    column = (fits ? column + 1 : indent.size()) + word.size();
  }
  return wrapped + "\n";
}

}  // namespace korvel
