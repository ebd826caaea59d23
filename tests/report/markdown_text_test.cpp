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
    {"emphasis", "*a* _b_ ~c~", "&#42;a&#42; &#95;b&#95; &#126;c&#126;"},
    {"links", "[a](http://b) www.c", "&#91;a&#93;(http&#58;//b) www&#46;c"},
    {"images", "![a](b)", "&#33;&#91;a&#93;(b)"},
    {"mentions and issues", "@all #1 !2", "<code>&#64;</code>all <code>&#35;</code>1 &#33;2"},
    {"pictures", ":100:", "&#58;100:"},
    {"lines", "a\nb\r\n\n# c", "a&#92;nb&#92;r&#92;n&#92;n<code>&#35;</code> c"},
    {"backslashes", "\\|", "&#92;&#124;"},
    {"lists", "1. a", "1&#46; a"},
    {"numbered lists", "1) a", "1&#41; a"},
    {"bulleted lists", "- a", "&#45; a"},
    {"quotations", "> a", "&#62; a"},
    {"commands", "/close", "&#47;close"},
    {"formulas", "$a$", "&#36;a&#36;"},
    {"invalid UTF-8", "a\xff", "a\xef\xbf\xbd"},
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
