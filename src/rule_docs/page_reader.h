// Reads a Markdown page element by element and remembers the first line that differs from what is expected.
#pragma once

#include <string>
#include <string_view>

#include "rule_docs/rule_doc_files.h"

namespace korvel {

// An element is a single line, a paragraph or a fenced block; exactly one blank line separates two of them. The operations that
// take an element skip the blank line after it. After a fault every operation does nothing and returns an empty text.
class PageReader {
 public:
  // REQUIRES: the file outlives the reader.
  explicit PageReader(const RuleDocFile& file) : name_(file.name), rest_(file.text) {}

  // The first fault: "docs/rules/field-size.md:3: expected ..., found ..."; "" = none.
  const std::string& fault() const { return fault_; }
  // Whether nothing is left to take.
  bool AtEnd() const { return !fault_.empty() || rest_.empty(); }
  // The current line; "" at the end.
  std::string_view Line() const;
  // Reports the current line unless there is a fault already.
  void Fail(std::string_view expected);

  // A single line, whatever it says.
  std::string_view TakeLine();
  void TakeLine(std::string_view expected);
  // Text over one or more lines, joined by blanks and without its backticks; it ends with a full stop.
  std::string TakeParagraph();
  // The content of a fenced block, each line with its line end.
  std::string TakeBlock(std::string_view language);
  // A line within an element, and the blank line behind an element.
  void Expect(std::string_view line);
  void EndElement();
  // Reports text that is left.
  void TakeEnd();

 private:
  void Skip();

  std::string_view name_;
  std::string_view rest_;
  int line_number_ = 1;
  std::string fault_;
};

}  // namespace korvel
