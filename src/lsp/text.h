// The text of a document, and its positions as the protocol counts them: lines and UTF-16 code units, both from 0. Everything
// else counts bytes, or lines and characters from 1 (qmx::LineColumn); only this file converts.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "lsp/json.h"
#include "qmx/qmx_source_map.h"

namespace korvel::lsp {

struct Position {
  std::size_t line = 0;
  std::size_t character = 0;
};

// The number of UTF-16 code units of a text. Each byte that is not UTF-8 counts as one.
std::size_t Utf16Length(std::string_view text);

class Text {
 public:
  explicit Text(std::string bytes = "");

  const std::string& bytes() const { return bytes_; }

  // An offset inside a character counts as its first byte, one behind the end as the end.
  Position At(std::size_t offset) const;

  // The offset of a position. One behind the end of its line counts as that end, one behind the last line as the end of the text,
  // and one between the two code units of a character as its begin.
  std::size_t OffsetOf(Position position) const;
  std::size_t OffsetOf(const qmx::LineColumn& location) const;

  // Replaces a piece.
  void Replace(qmx::Span span, std::string_view text);

 private:
  // The begin of a character, and how much of its line is before it.
  struct Mark {
    std::size_t offset = 0;
    std::size_t units = 0;       // UTF-16
    std::size_t characters = 0;  // each byte that is not UTF-8 is one
  };

  void FindLines();
  void MarkLine(std::size_t begin, std::size_t end);
  void Step(Mark& mark) const;
  // The last mark of a line of which a member is at most `limit`, else the begin of the line.
  Mark LastMark(std::size_t line, std::size_t Mark::*member, std::size_t limit) const;
  // The line without its end.
  std::string_view Line(std::size_t line) const;

  std::string bytes_;
  std::vector<std::size_t> lines_;  // offsets of their first bytes; lines end in LF, CR LF or CR
  std::vector<Mark> marks_;         // in long lines, so that nothing counts a whole one
};

Json ToJson(Position position);
Json ToJson(const Text& text, qmx::Span span);

// Throws Json::exception unless it is one.
Position PositionOf(const Json& json);
// The bytes of a range.
qmx::Span SpanOf(const Text& text, const Json& range);

}  // namespace korvel::lsp
