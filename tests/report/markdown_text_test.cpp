// Texts in Markdown are shown literally, whatever they contain.
#include "base/text.h"

#include <gtest/gtest.h>

namespace report_test {
namespace {

using korvel::MarkdownBlock;
using korvel::MarkdownCode;
using korvel::MarkdownText;

struct TextCase {
  const char* what;
  const char* text;
  const char* markdown;
};

constexpr TextCase kCases[] = {
    {"plain text", "can't be modified! entry:'uid' metaname:'orders'", "can't be modified! entry:'uid' metaname:'orders'"},
    {"names", "note_2 old.xml -> new.xml", "note_2 old.xml -> new.xml"},
    {"a cell's end", "a|b", "a&#124;b"},
    {"code", "`a`", "&#96;a&#96;"},
    {"tags", "<b>&amp;</b>", "&#60;b>&#38;amp;&#60;/b>"},
    {"emphasis", "*a* _b_ ~c~", "&#42;a&#42; &#95;b&#95; <code>&#126;c&#126;</code>"},
    {"links", "[a](http://b) www.c", "<code>&#91;a&#93;(http://b)</code> <code>www.c</code>"},
    {"images", "![a](b)", "&#33;&#91;a&#93;(b)"},
    {"mentions and issues", "@all #1 !2 o/r#3 a@b.c",
     "<code>&#64;all</code> <code>&#35;1</code> <code>&#33;2</code> <code>o/r&#35;3</code> <code>a&#64;b.c</code>"},
    {"issues by key", "(GH-1) JIRA_2-12: a-b", "<code>(GH-1)</code> <code>JIRA_2-12:</code> a-b"},
    {"labels and other references", "~a %1 $1 &1 100% a~b",
     "<code>&#126;a</code> <code>%1</code> <code>&#36;1</code> <code>&#38;1</code> 100% <code>a&#126;b</code>"},
    {"commits", "0123abc 0123456789abcdef0123456789abcdef01234567, 123abc",
     "<code>0123abc</code> <code>0123456789abcdef0123456789abcdef01234567,</code> 123abc"},
    {"words that look like commits", "0123abcx x0123abc effaced", "0123abcx x0123abc <code>effaced</code>"},
    {"days", "2027-01-31", "2027-01-31"},
    {"pictures", ":100: a.xml:100:3", "<code>:100:</code> <code>a.xml:100:3</code>"},
    {"lines", "a\nb\r\n\n# c", "<code>a&#92;nb&#92;r&#92;n&#92;n&#35;</code> c"},
    {"backslashes", "\\|", "&#92;&#124;"},
    {"lists", "1. a", "1&#46; a"},
    {"numbered lists", "1) a", "1&#41; a"},
    {"bulleted lists", "- a", "&#45; a"},
    {"quotations", "> a", "&#62; a"},
    {"commands", "/close", "&#47;close"},
    {"formulas", "$a$", "&#36;a&#36;"},
    {"invalid UTF-8", "a\xff", "a\xef\xbf\xbd"},
    {"hidden characters", "a\xe2\x80\xae", "a&#92;u202e"},
};

TEST(MarkdownText, IsShownLiterally) {
  for (const TextCase& test : kCases) EXPECT_EQ(MarkdownText(test.text), test.markdown) << test.what;
}

TEST(MarkdownCode, IsCodeInATableCell) {
  EXPECT_EQ(MarkdownCode("old.xml:3:4"), "<code>old.xml:3:4</code>");
  EXPECT_EQ(MarkdownCode("a`|</code>@x"), "<code>a&#96;&#124;&#60;/code>&#64;x</code>");
}

TEST(MarkdownBlock, NoLineEndsIt) {
  EXPECT_EQ(MarkdownBlock("diff", "-a\n"), "```diff\n-a\n```\n");
  EXPECT_EQ(MarkdownBlock("", "a\n````\n``\n"), "`````\na\n````\n``\n`````\n");
}

TEST(Text, WrapsAtBlanks) {
  EXPECT_EQ(korvel::Wrapped("one two three", 7), "one two\nthree\n");
  EXPECT_EQ(korvel::Wrapped("one two three", 6, "  "), "  one\n  two\n  three\n");
  EXPECT_EQ(korvel::Wrapped("longer-than-that", 4), "longer-than-that\n");
  EXPECT_EQ(korvel::Wrapped("", 4), "\n");
}

}  // namespace
}  // namespace report_test
