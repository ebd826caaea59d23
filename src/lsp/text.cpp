// Tested by tests/lsp/text_test.cpp.
#include "lsp/text.h"

#include <algorithm>
#include <utility>

#include "base/characters.h"

namespace korvel::lsp {
namespace {

constexpr std::uint32_t kFirstPair = 0x10000;  // from here on, a character takes two code units
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::size_t UnitsOf(std::string_view text) { return FirstCharacter(text).code_point >= kFirstPair ? 2 : 1; }

}  // namespace

std::size_t Utf16Length(std::string_view text) {
  std::size_t units = 0;
  while (!text.empty()) {
    units += UnitsOf(text);
    text.remove_prefix(CharacterLength(text));
  }
  return units;
}

Text::Text(std::string bytes) : bytes_(std::move(bytes)) { FindLines(); }

void Text::FindLines() {
  lines_.assign(1, 0);
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    const bool is_end = bytes_[i] == '\n' || (bytes_[i] == '\r' && bytes_.compare(i + 1, 1, "\n") != 0);
    if (is_end) lines_.push_back(i + 1);
  }
}

std::string_view Text::Line(std::size_t line) const {
  const std::size_t end = line + 1 < lines_.size() ? lines_[line + 1] : bytes_.size();
  std::string_view text = std::string_view(bytes_).substr(lines_[line], end - lines_[line]);
  if (text.ends_with('\n')) text.remove_suffix(1);
  if (text.ends_with('\r')) text.remove_suffix(1);
  return text;
}

Position Text::At(std::size_t offset) const {
  offset = std::min(offset, bytes_.size());
  const auto line = static_cast<std::size_t>(std::ranges::upper_bound(lines_, offset) - lines_.begin()) - 1;
  std::string_view rest = std::string_view(bytes_).substr(lines_[line]);
  Position position{line, 0};
  for (std::size_t left = offset - lines_[line]; left > 0;) {
    const std::size_t length = CharacterLength(rest);
    if (length > left) break;
    position.character += UnitsOf(rest);
    rest.remove_prefix(length);
    left -= length;
  }
  return position;
}

std::size_t Text::OffsetOf(Position position) const {
  if (position.line >= lines_.size()) return bytes_.size();
  const std::string_view line = Line(position.line);
  std::size_t at = 0;
  for (std::size_t units = 0; at < line.size();) {
    units += UnitsOf(line.substr(at));
    if (units > position.character) break;
    at += CharacterLength(line.substr(at));
  }
  return lines_[position.line] + at;
}

std::size_t Text::OffsetOf(const qmx::LineColumn& location) const {
  if (location.line == 0) return 0;
  if (location.line > lines_.size()) return bytes_.size();
  const std::string_view line = Line(location.line - 1);
  std::size_t at = location.line == 1 && line.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
  for (std::size_t column = 1; column < location.column && at < line.size(); ++column) at += CharacterLength(line.substr(at));
  return lines_[location.line - 1] + at;
}

void Text::Replace(qmx::Span span, std::string_view text) {
  bytes_.replace(span.begin, span.end - span.begin, text);
  FindLines();
}

Json ToJson(Position position) { return {{"line", position.line}, {"character", position.character}}; }

Json ToJson(const Text& text, qmx::Span span) {
  return {{"start", ToJson(text.At(span.begin))}, {"end", ToJson(text.At(span.end))}};
}

Position PositionOf(const Json& json) { return {Natural(json.at("line")), Natural(json.at("character"))}; }

qmx::Span SpanOf(const Text& text, const Json& range) {
  const std::size_t begin = text.OffsetOf(PositionOf(range.at("start")));
  return {begin, std::max(begin, text.OffsetOf(PositionOf(range.at("end"))))};
}

}  // namespace korvel::lsp
