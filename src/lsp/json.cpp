// Tested by tests/lsp/protocol_test.cpp.
#include "lsp/json.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace korvel::lsp {
namespace {

int NestingOf(std::string_view message) {
  int depth = 0;
  int deepest = 0;
  bool is_string = false;
  for (std::size_t i = 0; i < message.size(); ++i) {
    const char c = message[i];
    if (c == '"') is_string = !is_string;
    if (is_string && c == '\\') ++i;
    if (is_string) continue;
    if (c == '[' || c == '{') deepest = std::max(deepest, ++depth);
    if (c == ']' || c == '}') --depth;
  }
  return deepest;
}

// The code unit of an escape "\\uXXXX" at an offset; nullopt for other text.
std::optional<unsigned> CodeUnitAt(std::string_view text, std::size_t offset) {
  unsigned unit = 0;
  if (text.substr(offset, 2) != "\\u" || text.size() < offset + 6) return std::nullopt;
  const char* const end = text.data() + offset + 6;
  return std::from_chars(text.data() + offset + 2, end, unit, 16).ptr == end ? std::optional(unit) : std::nullopt;
}

// The message with U+FFFD for each half of a character. Editors send halves if an edit splits a character; each is one code unit,
// as is what replaces it.
std::string WithWholeCharacters(std::string_view message) {
  const auto is_high = [](std::optional<unsigned> unit) { return unit && *unit >= 0xD800 && *unit < 0xDC00; };
  const auto is_low = [](std::optional<unsigned> unit) { return unit && *unit >= 0xDC00 && *unit < 0xE000; };
  std::string whole(message);
  for (std::size_t i = whole.find('\\'); i != std::string::npos; i = whole.find('\\', i)) {
    const std::optional<unsigned> unit = CodeUnitAt(whole, i);
    const bool is_pair = is_high(unit) && is_low(CodeUnitAt(whole, i + 6));
    if (!is_pair && (is_high(unit) || is_low(unit))) whole.replace(i, 6, "\\ufffd");
    i += is_pair ? 12 : 2;
  }
  return whole;
}

}  // namespace

Json ParseMessage(std::string_view message) {
  if (NestingOf(message) > kMaxNesting) {
    throw RequestError(kParseError, "the message is nested too deep; allowed: " + std::to_string(kMaxNesting) + " levels");
  }
  Json json = Json::parse(message, nullptr, false);
  if (json.is_discarded()) json = Json::parse(WithWholeCharacters(message), nullptr, false);
  if (json.is_discarded()) throw RequestError(kParseError, "the message is not JSON");
  return json;
}

std::uint64_t Natural(const Json& value) {
  const bool is_natural = value.is_number_unsigned() || (value.is_number_integer() && value.get<std::int64_t>() >= 0);
  if (!is_natural) throw RequestError(kInvalidParams, "a number is not a whole number; allowed: 0 or more");
  return value.get<std::uint64_t>();
}

}  // namespace korvel::lsp
