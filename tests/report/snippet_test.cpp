// Snippets: the line, and a caret below the marked part.
#include <gtest/gtest.h>

#include "report/result/text_ranges.h"

namespace report_test {
namespace {

using korvel::kMaxSnippet;
using korvel::Snippet;
using korvel::SnippetOf;
using korvel::TextRange;

// The range of `marked` in a line that starts at offset 100 of a file.
TextRange RangeOf(std::string_view line, std::string_view marked) {
  TextRange range;
  range.begin = {7, 1};
  range.line = line;
  range.line_begin = 100;
  range.span.begin = 100 + line.find(marked);
  range.span.end = range.span.begin + marked.size();
  return range;
}

Snippet SnippetAt(std::string_view line, std::string_view marked) { return SnippetOf(RangeOf(line, marked)).value_or(Snippet{}); }

std::string Repeated(const std::string& text, std::size_t times) {
  std::string repeated;
  for (; times > 0; --times) repeated += text;
  return repeated;
}

TEST(Snippet, CaretIsBelowTheValue) {
  const Snippet snippet = SnippetAt("  <entry type=\"uint64\"/>", "uint64");
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
    {"invalid UTF-8", "\xff\xc3x", "x", "\\xff\\xc3x", "        ^"},
    {"a line separator", "a\xe2\x80\xa8x", "x", "a\\u2028x", "       ^"},
};

TEST(Snippet, CaretIsAlignedBelowAnyText) {
  for (const CaretCase& test : kCarets) {
    const Snippet snippet = SnippetAt(test.line, test.marked);
    EXPECT_EQ(snippet.text, test.text) << test.what;
    EXPECT_EQ(snippet.caret, test.caret) << test.what;
  }
}

TEST(Snippet, EmptyValueHasACaret) {
  TextRange range = RangeOf("a=\"\"/>", "\"/>");
  range.span.end = range.span.begin;
  EXPECT_EQ(SnippetOf(range)->caret, "   ^");
  range.span = {106, 106};
  EXPECT_EQ(SnippetOf(range)->caret, "      ^") << "after the last character";
}

TEST(Snippet, ShowsFirstOfSeveralLines) {
  TextRange range = RangeOf("<entry", "<entry");
  range.span.end += 50;
  EXPECT_EQ(SnippetOf(range)->text, "<entry");
  EXPECT_EQ(SnippetOf(range)->caret, "^~~~~~");
}

TEST(Snippet, LineAtTheLimitIsNotCut) {
  const std::string line = Repeated("x", kMaxSnippet - 1) + "y";
  EXPECT_EQ(SnippetAt(line, "y").text, line);
}

TEST(Snippet, LongLinesAreCutAroundTheRange) {
  const std::string left = Repeated("\xc3\xa9", 500);
  const std::string right = Repeated("\xe4\xb8\xad", 500);
  const Snippet middle = SnippetAt(left + "MARK" + right, "MARK");
  EXPECT_EQ(middle.text, "\xe2\x80\xa6" + Repeated("\xc3\xa9", 78) + "MARK" + Repeated("\xe4\xb8\xad", 78) + "\xe2\x80\xa6");
  EXPECT_EQ(middle.caret, std::string(79, ' ') + "^~~~");
  const Snippet start = SnippetAt("MARK" + right, "MARK");
  EXPECT_EQ(start.text, "MARK" + Repeated("\xe4\xb8\xad", 156) + "\xe2\x80\xa6");
  EXPECT_EQ(start.caret, "^~~~");
  const Snippet end = SnippetAt(left + "MARK", "MARK");
  EXPECT_EQ(end.text, "\xe2\x80\xa6" + Repeated("\xc3\xa9", 156) + "MARK");
}

TEST(Snippet, LongRangeIsCutAtItsEnd) {
  const std::string marked = Repeated("m", 1000);
  const Snippet snippet = SnippetAt("<" + marked + ">", marked);
  EXPECT_EQ(snippet.text, "\xe2\x80\xa6" + Repeated("m", kMaxSnippet) + "\xe2\x80\xa6");
  EXPECT_EQ(snippet.caret, " ^" + Repeated("~", kMaxSnippet - 1));
}

TEST(Snippet, ImageHasNoSnippet) { EXPECT_EQ(SnippetOf(TextRange{}), std::nullopt); }

}  // namespace
}  // namespace report_test
