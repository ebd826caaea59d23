// Escapes what would break or colour a line; leaves everything else as it is, because the checker's texts are part of its
// interface. Tested by tests/report/edit_test.cpp and tests/tool/usage_test.cpp.
#include "base/one_line.h"

#include <cstddef>

namespace korvel {
namespace {

// Length of the control character at the start of `text`, 0 if it is none: C0, DEL, C1 (U+0080 to U+009F), the line and
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

}  // namespace

std::string OneLine(std::string_view text) {
  std::string line;
  while (!text.empty()) {
    const std::size_t control = ControlLength(text);
    for (const char c : text.substr(0, control)) line += EscapeControl(c);
    if (control == 0) line += text.front();
    text.remove_prefix(control == 0 ? 1 : control);
  }
  return line;
}

}  // namespace korvel
