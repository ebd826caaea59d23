// Counts the bytes that each piece of a text gives, without decoding them. Tested by tests/qmx/value_part_test.cpp.
#include "qmx/value_part.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>

namespace qmx {
namespace {

// A piece of the text that stands for one or more bytes of the value.
struct Piece {
  std::size_t text_size;
  std::size_t value_size;
};

// How many bytes a character takes in UTF-8.
std::size_t Utf8Size(std::uint32_t character) {
  return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

// `number` is what follows "&#": "59" or "x3B".
std::optional<std::size_t> CharacterSize(std::string_view number) {
  const int base = number.starts_with('x') ? 16 : 10;
  if (base == 16) number.remove_prefix(1);
  std::uint32_t character{};
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), character, base);
  if (error != std::errc() || end != number.data() + number.size()) return std::nullopt;
  return Utf8Size(character);
}

// The piece at the beginning of a text that is not empty; nullopt for a malformed reference.
std::optional<Piece> FirstPiece(std::string_view text) {
  if (text.starts_with("\r\n")) return Piece{2, 1};
  if (text.front() != '&') return Piece{1, 1};
  const std::size_t end = text.find(';');
  if (end == std::string_view::npos) return std::nullopt;
  if (!text.starts_with("&#")) return Piece{end + 1, 1};  // one of the five entities of XML: no other is accepted
  const std::optional<std::size_t> size = CharacterSize(text.substr(2, end - 2));
  return size ? std::optional(Piece{end + 1, *size}) : std::nullopt;
}

}  // namespace

std::optional<Span> FindValuePart(std::string_view text, const Span& value, const Span& part) {
  std::optional<std::size_t> begin;
  std::string_view rest = text.substr(0, value.end);
  rest.remove_prefix(std::min(value.begin, rest.size()));
  for (std::size_t at = 0;;) {
    if (at == part.begin) begin = value.end - rest.size();
    if (at == part.end && begin) return Span{*begin, value.end - rest.size()};
    if (at >= part.end || rest.empty()) return std::nullopt;
    const std::optional<Piece> piece = FirstPiece(rest);
    if (!piece) return std::nullopt;
    at += piece->value_size;
    rest.remove_prefix(piece->text_size);
  }
}

}  // namespace qmx
