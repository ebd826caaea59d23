// Escapes for attributes of schema files; src/qmx_xml reads them. Held by tests/tool/image_test.cpp and
// tests/report/rewrite_test.cpp.
#include "base/xml_escape.h"

#include "base/quote.h"

namespace korvel {
namespace {

// Length of the character at the start of `text`; 0 if XML has no such character.
std::size_t XmlCharacterLength(std::string_view text) {
  if (text.starts_with("\xEF\xBF\xBE") || text.starts_with("\xEF\xBF\xBF")) return 0;
  const auto byte = static_cast<unsigned char>(text.front());
  if (byte >= 0x80) return Utf8Length(text);
  return byte >= 0x20 || byte == '\t' || byte == '\n' || byte == '\r' ? 1 : 0;
}

// The reference that stands for a character; null for one that stands for itself.
const char* ReferenceFor(char c, char quote) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return quote == c ? "&quot;" : nullptr;
    case '\'':
      return quote == c ? "&apos;" : nullptr;
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return nullptr;
  }
}

}  // namespace

std::optional<std::string> XmlEscaped(std::string_view value, char quote) {
  std::string text;
  text.reserve(value.size());
  while (!value.empty()) {
    const std::size_t length = XmlCharacterLength(value);
    if (length == 0) return std::nullopt;
    const char* const reference = ReferenceFor(value.front(), quote);
    reference == nullptr ? text.append(value.substr(0, length)) : text.append(reference);
    value.remove_prefix(length);
  }
  return text;
}

}  // namespace korvel
