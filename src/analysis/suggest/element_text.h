// Edits elements in the bytes of a schema file and leaves every other byte unchanged. Contains no XML parser.
//
// REQUIRES, for everything here: the reader of schema files has accepted the text; an element is given by the offset of its '<'.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/findings/finding.h"
#include "schema/xml_writer.h"

namespace korvel {

// The offset behind an element: behind its end tag, or behind its start tag if it has no other.
std::size_t ElementEnd(std::string_view text, std::size_t element);

// Collects changes of one text. Each operation is linear in the element and its line.
class TextEdits {
 public:
  // Borrows the text.
  explicit TextEdits(std::string_view text) : text_(text) {}

  // Changes the attributes of a start tag from `was` to `target`, which list the same names; added attributes are placed in this
  // order. False, with some changes made, if XML cannot express a value.
  bool ChangeAttributes(std::size_t element, const std::vector<AttributeText>& was, const std::vector<AttributeText>& target);

  // Removes an element, with its line if there is nothing else on the line.
  void Remove(std::size_t element);

  // The same, together with the comments behind the element on its line.
  void RemoveWithComments(std::size_t element);

  // Inserts an element behind or before another one, on its own line if the other one has its own line.
  void InsertBehind(std::size_t element, std::string_view inserted);
  void InsertBefore(std::size_t element, std::string_view inserted);

  // The changes in text order, without overlaps; leaves the collector empty. Insertions at one offset keep the order of the
  // calls.
  std::vector<Replacement> Finish();

 private:
  void Add(std::size_t begin, std::size_t end, std::string text) { edits_.push_back({{begin, end}, std::move(text)}); }
  void Cut(std::size_t begin, std::size_t end);

  std::string_view text_;
  std::vector<Replacement> edits_;
};

// The text after the replacements. REQUIRES: they are in text order and do not overlap.
std::string ApplyReplacements(std::string_view text, const std::vector<Replacement>& replacements);

// The smallest replacement of a part of `before` that gives `after`.
Replacement ReplacementBetween(std::string_view before, std::string_view after);

// The bytes of an element and of the comments behind it on its line. Borrowed from the text.
std::string_view WithComments(std::string_view text, std::size_t element);

// The end of the line that contains `offset`: "\n", "\r\n" or "\r"; "\n" if there is none within 4,096 bytes.
std::string_view LineEndAt(std::string_view text, std::size_t offset);

// The blanks before an element that is first on its line; nullopt if something else comes before it there.
std::optional<std::string_view> IndentOf(std::string_view text, std::size_t element);

// The text with each line end replaced.
std::string WithLineEnds(std::string_view text, std::string_view line_end);

}  // namespace korvel
