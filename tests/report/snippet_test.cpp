// Snippets: the line, and a caret that stands under what is meant.
#include <gtest/gtest.h>

#include "report/result/text_ranges.h"

namespace report_test {
namespace {

using korvel::kMaxSnippet;
using korvel::Snippet;
using korvel::SnippetOf;
using korvel::TextRange;

// The mark of `marked` in a line that stands behind 100 other bytes of a file.
TextRange MarkOf(std::string_view line, std::string_view marked) {
  TextRange mark;
  mark.begin = {7, 1};
  mark.line = line;
  mark.line_begin = 100;
  mark.span.begin = 100 + line.find(marked);
  mark.span.end = mark.span.begin + marked.size();
  return mark;
}

Snippet Shown(std::string_view line, std::string_view marked) { return SnippetOf(MarkOf(line, marked)).value_or(Snippet{}); }

std::string Repeated(const std::string& text, std::size_t times) {
  std::string repeated;
  for (; times > 0; --times) repeated += text;
  return repeated;
}

TEST(Snippet, TheCaretStandsUnderTheValue) {
  const Snippet snippet = Shown("  <entry type=\"uint64\"/>", "uint64");
  EXPECT_EQ(snippet.line, 7u);
  EXPECT_EQ(snippet.text, "  <entry type=\"uint64\"/>");
  EXPECT_EQ(snippet.caret, "               ^~~~~~");
}

struct CaretCase {
  const char* what;
  const char* line;
  const char* marked;
  const char* text;
  const char* caret;
};

constexpr CaretCase kCarets[] = {
    {"tabs stay", "\t<a\tb=\"c\"/>", "c", "\t<a\tb=\"c\"/>", "\t  \t   ^"},
    {"narrow characters", "\xc3\xa9 x", "x", "\xc3\xa9 x", "  ^"},
    {"wide characters", "\xe4\xb8\xad x", "x", "\xe4\xb8\xad x", "   ^"},
    {"a wide character is marked", "a\xe4\xb8\xad", "\xe4\xb8\xad", "a\xe4\xb8\xad", " ^~"},
    {"a combining accent", "e\xcc\x81x", "x", "e\xcc\x81x", " ^"},
    {"control characters", "a\x1b[31mx", "x", "a\\x1b[31mx", "         ^"},
    {"bytes that are no UTF-8", "\xff\xc3x", "x", "\\xff\\xc3x", "        ^"},
    {"an end of line inside a character reference's place", "a\xe2\x80\xa8x", "x", "a\\xe2\\x80\\xa8x", "             ^"},
};

TEST(Snippet, CaretsStandRightUnderAnything) {
  for (const CaretCase& test : kCarets) {
    const Snippet snippet = Shown(test.line, test.marked);
    EXPECT_EQ(snippet.text, test.text) << test.what;
    EXPECT_EQ(snippet.caret, test.caret) << test.what;
  }
}

TEST(Snippet, AnEmptyValueHasACaret) {
  TextRange mark = MarkOf("a=\"\"/>", "\"/>");
  mark.span.end = mark.span.begin;
  EXPECT_EQ(SnippetOf(mark)->caret, "   ^");
  mark.span = {106, 106};
  EXPECT_EQ(SnippetOf(mark)->caret, "      ^") << "behind the last character";
}

TEST(Snippet, OfSeveralLinesTheFirstIsShown) {
  TextRange mark = MarkOf("<entry", "<entry");
  mark.span.end += 50;
  EXPECT_EQ(SnippetOf(mark)->text, "<entry");
  EXPECT_EQ(SnippetOf(mark)->caret, "^~~~~~");
}

TEST(Snippet, ALineOfTheLimitIsWhole) {
  const std::string line = Repeated("x", kMaxSnippet - 1) + "y";
  EXPECT_EQ(Shown(line, "y").text, line);
}

TEST(Snippet, LongLinesAreCutAroundTheMark) {
  const std::string left = Repeated("\xc3\xa9", 500);
  const std::string right = Repeated("\xe4\xb8\xad", 500);
  const Snippet middle = Shown(left + "MARK" + right, "MARK");
  EXPECT_EQ(middle.text, "\xe2\x80\xa6" + Repeated("\xc3\xa9", 78) + "MARK" + Repeated("\xe4\xb8\xad", 78) + "\xe2\x80\xa6");
  EXPECT_EQ(middle.caret, std::string(79, ' ') + "^~~~");
  const Snippet start = Shown("MARK" + right, "MARK");
  EXPECT_EQ(start.text, "MARK" + Repeated("\xe4\xb8\xad", 156) + "\xe2\x80\xa6");
  EXPECT_EQ(start.caret, "^~~~");
  const Snippet end = Shown(left + "MARK", "MARK");
  EXPECT_EQ(end.text, "\xe2\x80\xa6" + Repeated("\xc3\xa9", 156) + "MARK");
}

TEST(Snippet, ALongMarkIsCutAtItsEnd) {
  const std::string marked = Repeated("m", 1000);
  const Snippet snippet = Shown("<" + marked + ">", marked);
  EXPECT_EQ(snippet.text, "\xe2\x80\xa6" + Repeated("m", kMaxSnippet) + "\xe2\x80\xa6");
  EXPECT_EQ(snippet.caret, " ^" + Repeated("~", kMaxSnippet - 1));
}

TEST(Snippet, AnImageHasNone) { EXPECT_EQ(SnippetOf(TextRange{}), std::nullopt); }

}  // namespace
}  // namespace report_test
