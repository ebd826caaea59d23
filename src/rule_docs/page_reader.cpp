// Tested by tests/rule_docs/parse_rule_docs_test.cpp.
#include "rule_docs/page_reader.h"

#include <algorithm>

#include "base/text.h"

namespace korvel {
namespace {

constexpr std::string_view kFence = "```";

// Whether the line continues a paragraph: neither a heading, a table row, a list item, a block, nor a line with stray blanks.
bool IsPlainText(std::string_view line) {
  const bool is_block = line.starts_with(kFence) || line.find_first_of("#|-*> ") == 0;
  return !line.empty() && !is_block && line.back() != ' ' && line.find("  ") == std::string_view::npos;
}

}  // namespace

std::string_view PageReader::Line() const { return AtEnd() ? "" : rest_.substr(0, rest_.find('\n')); }

void PageReader::Fail(std::string_view expected) {
  if (!fault_.empty()) return;
  const std::string found = rest_.empty() ? "the end of the file" : "'" + std::string(Line()) + "'";
  fault_ = "docs/rules/" + std::string(name_) + ":" + std::to_string(line_number_) + ": expected " + std::string(expected) +
           ", found " + found;
}

void PageReader::Skip() {
  if (AtEnd()) return;
  rest_.remove_prefix(std::min(Line().size() + 1, rest_.size()));
  ++line_number_;
}

void PageReader::EndElement() {
  if (AtEnd()) return;
  if (!Line().empty()) Fail("a blank line");
  Skip();
  if (rest_.empty()) Fail("text after the blank line");
}

std::string_view PageReader::TakeLine() {
  const std::string_view line = Line();
  Skip();
  EndElement();
  return fault_.empty() ? line : "";
}

void PageReader::Expect(std::string_view line) {
  if (rest_.empty() || Line() != line) Fail("'" + std::string(line) + "'");
  Skip();
}

void PageReader::TakeLine(std::string_view expected) {
  Expect(expected);
  EndElement();
}

std::string PageReader::TakeParagraph() {
  std::string text;
  do {
    if (!IsPlainText(Line())) Fail("a line of plain text");
    AppendPart(text, " ", Line());
    Skip();
  } while (!AtEnd() && !Line().empty());
  if (!text.ends_with('.')) Fail("a full stop at the end of the paragraph above");
  EndElement();
  std::erase(text, '`');
  return fault_.empty() ? text : "";
}

std::string PageReader::TakeBlock(std::string_view language) {
  Expect(std::string(kFence) + std::string(language));
  std::string text;
  for (; !AtEnd() && Line() != kFence; Skip()) text += std::string(Line()) + "\n";
  TakeLine(kFence);
  return fault_.empty() ? text : "";
}

void PageReader::TakeEnd() {
  if (!rest_.empty()) Fail("the end of the file");
}

}  // namespace korvel
