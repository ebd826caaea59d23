// Tested by tests/lsp/text_test.cpp.
#include "lsp/text.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/characters.h"

namespace korvel::lsp {
namespace {

constexpr std::uint32_t kFirstPair = 0x10000;  // from here on, a character takes two code units
constexpr std::size_t kMarkDistance = 256;     // in bytes
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
  marks_.clear();
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    const bool is_end = bytes_[i] == '\n' || (bytes_[i] == '\r' && bytes_.compare(i + 1, 1, "\n") != 0);
    if (!is_end) continue;
    MarkLine(lines_.back(), i);
    lines_.push_back(i + 1);
  }
  MarkLine(lines_.back(), bytes_.size());
}

void Text::MarkLine(std::size_t begin, std::size_t end) {
  if (end - begin <= kMarkDistance) return;
  std::size_t last = begin;
  for (Mark mark{.offset = begin}; mark.offset < end; Step(mark)) {
    if (mark.offset - last < kMarkDistance) continue;
    marks_.push_back(mark);
    last = mark.offset;
  }
}

std::string_view Text::Line(std::size_t line) const {
  const std::size_t end = line + 1 < lines_.size() ? lines_[line + 1] : bytes_.size();
  std::string_view text = std::string_view(bytes_).substr(lines_[line], end - lines_[line]);
  if (text.ends_with('\n')) text.remove_suffix(1);
  if (text.ends_with('\r')) text.remove_suffix(1);
  return text;
}

void Text::Step(Mark& mark) const {
  const std::string_view rest = std::string_view(bytes_).substr(mark.offset);
  mark.offset += CharacterLength(rest);
  mark.units += UnitsOf(rest);
  ++mark.characters;
}

Text::Mark Text::LastMark(std::size_t line, std::size_t Mark::*member, std::size_t limit) const {
  const std::size_t begin = lines_[line];
  const std::size_t end = line + 1 < lines_.size() ? lines_[line + 1] : bytes_.size();
  const auto first = std::ranges::lower_bound(marks_, begin, {}, &Mark::offset);
  const auto last = std::ranges::lower_bound(marks_, end, {}, &Mark::offset);
  const auto behind = std::ranges::upper_bound(first, last, limit, {}, member);
  return behind == first ? Mark{.offset = begin} : *std::prev(behind);
}

Position Text::At(std::size_t offset) const {
  offset = std::min(offset, bytes_.size());
  const auto line = static_cast<std::size_t>(std::ranges::upper_bound(lines_, offset) - lines_.begin()) - 1;
  Mark at = LastMark(line, &Mark::offset, offset);
  for (Mark next = at; next.offset < offset;) {
    Step(next);
    if (next.offset <= offset) at = next;
  }
  return {line, at.units};
}

std::size_t Text::OffsetOf(Position position) const {
  if (position.line >= lines_.size()) return bytes_.size();
  const std::size_t end = lines_[position.line] + Line(position.line).size();
  Mark at = LastMark(position.line, &Mark::units, position.character);
  for (Mark next = at; at.offset < end; at = next) {
    Step(next);
    if (next.units > position.character) break;
  }
  return std::min(at.offset, end);
}

std::size_t Text::OffsetOf(const qmx::LineColumn& location) const {
  if (location.line == 0) return 0;
  if (location.line > lines_.size()) return bytes_.size();
  const std::size_t end = lines_[location.line - 1] + Line(location.line - 1).size();
  const bool has_mark = location.line == 1 && bytes_.starts_with(kByteOrderMark);
  const std::size_t characters = std::max<std::size_t>(location.column, 1) - 1 + (has_mark ? 1 : 0);
  Mark at = LastMark(location.line - 1, &Mark::characters, characters);
  while (at.characters < characters && at.offset < end) Step(at);
  return std::min(at.offset, end);
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
