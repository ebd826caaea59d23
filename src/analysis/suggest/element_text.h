// Elements in the bytes of a schema file: where they end, how they stand on their lines, and changes that leave every other byte
// as it is. All of it for texts that the reader has accepted; offsets of elements are those of their '<'.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/findings/finding.h"
#include "schema/model_text.h"

namespace korvel {

// The offset behind an element: behind its end tag, or its start tag if that is all.
std::size_t ElementEnd(std::string_view text, std::size_t element);

// Collects changes of one text.
class TextEdits {
 public:
  // REQUIRES: the text outlives the collector.
  explicit TextEdits(std::string_view text) : text_(text) {}

  // Makes the start tag say `target` where it says `was`: lists of the same names in the order in which added ones are to stand.
  // False if XML cannot say a value.
  bool ChangeAttributes(std::size_t element, const std::vector<AttributeText>& was, const std::vector<AttributeText>& target);

  // Takes an element out, with its line if nothing else stands there.
  void Remove(std::size_t element);

  // The same together with the comments behind it on its line.
  void RemoveWithComments(std::size_t element);

  // Puts an element behind or before another one, on a line of its own if that one has it.
  void InsertBehind(std::size_t element, std::string_view inserted);
  void InsertBefore(std::size_t element, std::string_view inserted);

  // The changes in the order of the text. What was inserted at one place stands in the order of the calls.
  std::vector<Replacement> Finish();

 private:
  void Add(std::size_t begin, std::size_t end, std::string text) { edits_.push_back({{begin, end}, std::move(text)}); }
  void Cut(std::size_t begin, std::size_t end);

  std::string_view text_;
  std::vector<Replacement> edits_;
};

// The text with the replacements made. REQUIRES: they are in its order and do not overlap.
std::string Replaced(std::string_view text, const std::vector<Replacement>& replacements);

// The bytes of an element, together with the comments behind it on its line.
std::string_view WithComments(std::string_view text, std::size_t element);

// The end of the line that `offset` is on: "\n", "\r\n" or "\r"; "\n" on a last line without one, and where it is thousands of
// bytes away.
std::string_view LineEndAt(std::string_view text, std::size_t offset);

// The blanks in front of an element that stands first on its line; nullopt if something else stands before it there.
std::optional<std::string_view> IndentOf(std::string_view text, std::size_t element);

// The text with all its line ends replaced.
std::string WithLineEnds(std::string_view text, std::string_view line_end);

}  // namespace korvel
