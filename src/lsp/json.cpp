// Tested by tests/lsp/protocol_test.cpp.
#include "lsp/json.h"

#include <algorithm>

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

}  // namespace

Json ParseMessage(std::string_view message) {
  if (NestingOf(message) > kMaxNesting) {
    throw RequestError(kParseError, "the message is nested too deep; allowed: " + std::to_string(kMaxNesting) + " levels");
  }
  Json json = Json::parse(message, nullptr, false);
  if (json.is_discarded()) throw RequestError(kParseError, "the message is not JSON");
  return json;
}

std::uint64_t Natural(const Json& value) {
  const bool is_natural = value.is_number_unsigned() || (value.is_number_integer() && value.get<std::int64_t>() >= 0);
  if (!is_natural) throw RequestError(kInvalidParams, "a number is not a whole number; allowed: 0 or more");
  return value.get<std::uint64_t>();
}

}  // namespace korvel::lsp
