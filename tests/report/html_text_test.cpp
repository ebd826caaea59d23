// Escaping in HTML pages: text from a schema never becomes markup.
#include "report/render/html_text.h"

#include <gmock/gmock.h>

namespace report_test {
namespace {

using namespace korvel;

TEST(HtmlText, MarkupIsEscaped) {
  EXPECT_EQ(Html("<b a=\"1\" b='2'>&amp;</b>"), "&lt;b a=&quot;1&quot; b=&#39;2&#39;&gt;&amp;amp;&lt;/b&gt;");
  EXPECT_EQ(Html(""), "");
  EXPECT_EQ(Html("größe"), "größe");
}

// A right-to-left override. As bytes, because as text it would reverse the rest of this line.
constexpr char kTurned[] = {'\xE2', '\x80', '\xAE', 'x', '\0'};

TEST(HtmlText, ControlCharactersAreShown) {
  EXPECT_EQ(Html("a\nb\tc\x1b[31m\x7f"), "a\\nb\\tc\\x1b[31m\\x7f");
  EXPECT_EQ(Html(kTurned), "\\u202ex");
  EXPECT_EQ(Html(std::string_view("a\0b", 3)), "a\\x00b");
}

TEST(HtmlText, InvalidUtf8IsReplaced) {
  EXPECT_EQ(Html("a\xff"), "a\xEF\xBF\xBD");
  EXPECT_EQ(Html("\xc3<"), "\xEF\xBF\xBD&lt;") << "a truncated character does not consume the next one";
}

TEST(HtmlText, LinesKeepTheirTabs) { EXPECT_EQ(HtmlLine("\t<a>\tb\r"), "\t&lt;a&gt;\tb\\r"); }

TEST(HtmlText, LinksNeedATarget) {
  EXPECT_EQ(Link("f1", "F1"), "<a href=\"#f1\">F1</a>");
  EXPECT_EQ(Link("", "F1"), "F1");
}

}  // namespace
}  // namespace report_test
