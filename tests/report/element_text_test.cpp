// Changes elements in unusual layouts, and nothing else.
#include "analysis/suggest/element_text.h"

#include <gtest/gtest.h>

#include <functional>

namespace report_test {
namespace {

using korvel::ApplyReplacements;
using korvel::AttributeText;
using korvel::ElementEnd;
using korvel::TextEdits;

struct Case {
  const char* name;
  const char* text;
  const char* expected;
};

class Text {
 public:
  explicit Text(std::string_view text) : text_(text), edits_(text_) {}

  TextEdits& edits() { return edits_; }
  // The element with name="NAME", in either kind of quotes.
  std::size_t Named(const std::string& name) const {
    for (const char* quote : {"\"", "'"}) {
      const std::size_t at = text_.find("name=" + (quote + name) + quote);
      if (at != std::string::npos) return text_.rfind('<', at);
    }
    ADD_FAILURE() << "no element " << name;
    return 0;
  }
  std::string Result() { return ApplyReplacements(text_, edits_.Finish()); }

 private:
  std::string text_;
  TextEdits edits_;
};

void ExpectEach(const std::vector<Case>& cases, const std::function<void(Text&)>& change) {
  for (const Case& one : cases) {
    Text text(one.text);
    change(text);
    EXPECT_EQ(text.Result(), one.expected) << one.name;
  }
}

std::vector<AttributeText> Field(const char* version, const char* type = "int8", const char* note = nullptr) {
  const auto value = [](const char* text) { return text == nullptr ? std::nullopt : std::optional<std::string>(text); };
  return {{"name", "x"}, {"type", value(type)}, {"version", value(version)}, {"customattr2", value(note)}};
}

TEST(ElementEnd, IsAfterTheEndTagOfTheSameElement) {
  for (const std::string element : {"<a/>", "<a b='/>'/>", "<a b=\"x > y\">  </a>", "<a><!-- </a> --><b/></a>",
                                    "<a><b><c/></b><?p </a> ?></a>", "<a\n/>", "<a><![CDATA[ </a> ]]></a >"}) {
    EXPECT_EQ(ElementEnd("<r>" + element + "<z/></r>", 3), element.size() + 3) << element;
  }
}

TEST(ChangeAttributes, AddsAfterItsPredecessors) {
  ExpectEach(
      {{"one", R"(<e name="x" type="int8"/>)", R"(<e name="x" type="int8" version="6"/>)"},
       {"before later attributes", R"(<e name="x" type="int8" customattr2="p"/>)",
        R"(<e name="x" type="int8" version="6" customattr2="p"/>)"},
       {"other order", R"(<e type='int8'  name='x'>  </e>)", R"(<e type='int8'  name='x' version="6">  </e>)"},
       {"one attribute a line", "<e name=\"x\"\r\n\ttype=\"int8\"\r\n/>", "<e name=\"x\"\r\n\ttype=\"int8\" version=\"6\"\r\n/>"},
       {"keeps unknown attributes", R"(<e desc="a>b" name="x" type="int8"/>)",
        R"(<e desc="a>b" name="x" type="int8" version="6"/>)"}},
      [](Text& text) { EXPECT_TRUE(text.edits().ChangeAttributes(text.Named("x"), Field(nullptr), Field("6"))); });
}

TEST(ChangeAttributes, KeepsTheKindOfQuotes) {
  ExpectEach({{"double", R"(<e name="x" type="int8"  version = "1" />)", R"(<e name="x" type="int8"  version = "6" />)"},
              {"single", R"(<e name='x' version='1' type='int8'/>)", R"(<e name='x' version='6' type='int8'/>)"},
              {"a default that is written", R"(<e version="1" name="x"/>)", R"(<e version="6" name="x"/>)"}},
             [](Text& text) { EXPECT_TRUE(text.edits().ChangeAttributes(text.Named("x"), Field(nullptr), Field("6"))); });
}

TEST(ChangeAttributes, RemovesAttributesWithPrecedingBlanks) {
  ExpectEach({{"last", R"(<e name="x" type="int8"   version="6"/>)", R"(<e name="x" type="int8"/>)"},
              {"between", "<e name='x'\n  version='6'\n  type='int8'/>", "<e name='x'\n  type='int8'/>"},
              {"first", R"(<e version="6" name="x"/>)", R"(<e name="x"/>)"}},
             [](Text& text) { EXPECT_TRUE(text.edits().ChangeAttributes(text.Named("x"), Field("6"), Field(nullptr))); });
}

TEST(ChangeAttributes, EscapesSpecialCharacters) {
  ExpectEach({{"double", R"(<e name="x" customattr2="p"/>)", "<e name=\"x\" customattr2=\"a&quot;b'c&amp;&lt;&#10;\"/>"},
              {"single", "<e name='x' customattr2='p'/>", "<e name='x' customattr2='a\"b&apos;c&amp;&lt;&#10;'/>"}},
             [](Text& text) {
               EXPECT_TRUE(text.edits().ChangeAttributes(text.Named("x"), Field(nullptr, nullptr, "p"),
                                                         Field(nullptr, nullptr, "a\"b'c&<\n")));
             });
}

TEST(ChangeAttributes, RefusesCharactersThatXmlCannotContain) {
  Text text(R"(<e name="x"/>)");
  EXPECT_FALSE(text.edits().ChangeAttributes(text.Named("x"), Field(nullptr), Field("\x01")));
}

TEST(Remove, RemovesLineWithoutOtherContent) {
  ExpectEach({{"line", "<m>\n  <e name=\"x\"/>  \n  <f/>\n</m>", "<m>\n  <f/>\n</m>"},
              {"CRLF and tabs", "<m>\r\n\t<e name=\"x\"/>\r\n\t<f/>\r\n</m>", "<m>\r\n\t<f/>\r\n</m>"},
              {"old line ends", "<m>\r  <e name='x'/>\r  <f/>\r</m>", "<m>\r  <f/>\r</m>"},
              {"many lines", "<m>\n  <e name=\"x\">\n    <!-- c -->\n  </e>\n</m>", "<m>\n</m>"},
              {"first of two", "<m>\n  <e name=\"x\"/> <f/>\n</m>", "<m>\n  <f/>\n</m>"},
              {"second of two", "<m>\n  <f/> <e name=\"x\"/>\n</m>", "<m>\n  <f/>\n</m>"},
              {"between", "<m><f/><e name=\"x\"/><g/></m>", "<m><f/><g/></m>"},
              {"its comment stays", "<m>\n  <e name=\"x\"/> <!-- c -->\n</m>", "<m>\n  <!-- c -->\n</m>"}},
             [](Text& text) { text.edits().Remove(text.Named("x")); });
}

TEST(RemoveWithComments, RemovesCommentsOnTheLine) {
  ExpectEach({{"one", "<m>\n  <e name=\"x\"/> <!-- c -->\n  <f/>\n</m>", "<m>\n  <f/>\n</m>"},
              {"several lines", "<m>\n  <e name=\"x\"/> <!-- c\n -->\n</m>", "<m>\n  <!-- c\n -->\n</m>"},
              {"before the next element", "<m>\n  <e name=\"x\"/> <!-- c --> <f/>\n</m>", "<m>\n  <!-- c --> <f/>\n</m>"}},
             [](Text& text) { text.edits().RemoveWithComments(text.Named("x")); });
}

TEST(InsertBehind, StartsNewLineLikeTheOtherElement) {
  ExpectEach({{"line", "<m>\n  <e name=\"x\"/>\n</m>", "<m>\n  <e name=\"x\"/>\n  <n/>\n</m>"},
              {"CRLF and tabs", "<m>\r\n\t<e name=\"x\"/>\r\n</m>", "<m>\r\n\t<e name=\"x\"/>\r\n\t<n/>\r\n</m>"},
              {"after its comment", "<m>\n  <e name='x'/> <!-- c -->\n</m>", "<m>\n  <e name='x'/> <!-- c -->\n  <n/>\n</m>"},
              {"one line", "<m><e name=\"x\"/><f/></m>", "<m><e name=\"x\"/><n/><f/></m>"},
              {"one line with blanks", "<m> <e name=\"x\"/> <f/></m>", "<m> <e name=\"x\"/> <n/> <f/></m>"},
              {"first of two", "<m>\n  <e name=\"x\"/><f/>\n</m>", "<m>\n  <e name=\"x\"/><n/><f/>\n</m>"}},
             [](Text& text) { text.edits().InsertBehind(text.Named("x"), "<n/>"); });
}

TEST(InsertBefore, StartsNewLineLikeTheOtherElement) {
  ExpectEach({{"line", "<m>\n  <e name=\"x\"/>\n</m>", "<m>\n  <n/>\n  <e name=\"x\"/>\n</m>"},
              {"CRLF", "<m>\r\n\t<e name=\"x\"/>\r\n</m>", "<m>\r\n\t<n/>\r\n\t<e name=\"x\"/>\r\n</m>"},
              {"one line", "<m> <e name=\"x\"/></m>", "<m> <n/> <e name=\"x\"/></m>"}},
             [](Text& text) { text.edits().InsertBefore(text.Named("x"), "<n/>"); });
}

TEST(TextEdits, NeighborsOnOneLineShareBlanks) {
  Text text("<m>\n  <e name=\"x\"/>  <e name=\"y\"/>  <z/>\n</m>");
  text.edits().Remove(text.Named("x"));
  text.edits().Remove(text.Named("y"));
  text.edits().InsertBehind(text.Named("x"), "<n/>");
  EXPECT_EQ(text.Result(), "<m>\n  <n/>  <z/>\n</m>");
}

TEST(TextEdits, InsertionsAtOneOffsetKeepTheirOrderAndPrecedeRemovals) {
  Text text("<m>\n  <e name=\"x\"/>\n  <e name=\"y\"/>\n</m>");
  text.edits().Remove(text.Named("y"));
  text.edits().InsertBehind(text.Named("x"), "<n/>");
  text.edits().InsertBehind(text.Named("x"), "<o/>");
  EXPECT_EQ(text.Result(), "<m>\n  <e name=\"x\"/>\n  <n/>\n  <o/>\n</m>");
}

TEST(ReplacementBetween, IsTheSmallestPart) {
  const auto expect = [](const std::string& before, const std::string& after, std::size_t begin, std::size_t end) {
    const korvel::Replacement made = korvel::ReplacementBetween(before, after);
    EXPECT_EQ(made.span.begin, begin);
    EXPECT_EQ(made.span.end, end);
    EXPECT_EQ(korvel::ApplyReplacements(before, {made}), after);
  };
  expect("a name b", "a mane b", 2, 5);
  expect("aa", "aaa", 2, 2);
  expect("aaa", "aa", 2, 3);
  expect("", "a", 0, 0);
  expect("same", "same", 4, 4);
}

}  // namespace
}  // namespace report_test
