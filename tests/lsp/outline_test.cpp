// Tests the elements and attributes that are found in well-formed and in broken text.
#include "lsp/outline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "lsp/marked_text.h"
#include "lsp/schema_files.h"
#include "lsp/value_text.h"
#include "qmx/qmx_xml.h"

namespace {

using korvel::lsp::DecodeValue;
using korvel::lsp::Element;
using korvel::lsp::ElementIndex;
using korvel::lsp::kNoElement;
using korvel::lsp::Outline;
using korvel::lsp::TagAttribute;
using korvel::lsp::ValueWord;
using korvel::lsp::WordsOf;
using lsp_test::MarkedText;
using testing::ElementsAre;

using Kind = qmx::ElementId::Kind;

// One element a line: its attributes with values in brackets, indented by its depth. "~" marks one that is not closed.
std::string Shown(std::string_view text) {
  const Outline outline(text);
  std::string shown;
  for (ElementIndex i = 0; i < outline.elements().size(); ++i) {
    const Element& element = outline.elements()[i];
    for (ElementIndex parent = element.parent; parent != kNoElement; parent = outline.elements()[parent].parent) shown += "  ";
    shown += outline.Piece(element.name());
    for (const TagAttribute& attribute : outline.AttributesOf(i)) {
      shown.append(" ").append(outline.Piece(attribute.name()));
      if (attribute.HasValue()) shown.append("[").append(outline.Piece(attribute.value())).append("]");
    }
    shown += element.is_closed ? "\n" : " ~\n";
  }
  return shown;
}

TEST(OutlineTest, FindsElementsAndAttributes) {
  EXPECT_EQ(Shown("<?xml version='1.0'?>\n<metalib name = 'm' version=\"1\">\n"
                  "<meta name='t' desc='a > b / \"c\"'><entry name='a'\n type='int8' /></meta></metalib>\n"),
            "metalib name[m] version[1]\n"
            "  meta name[t] desc[a > b / \"c\"]\n"
            "    entry name[a] type[int8]\n");
}

TEST(OutlineTest, SkipsOtherMarkup) {
  EXPECT_EQ(Shown("<!-- <meta> --><!DOCTYPE a [<!ENTITY b 'c'>]><?p <meta> ?><meta><![CDATA[<entry>]]></meta>"), "meta\n");
}

TEST(OutlineTest, CommentWithoutEndTakesTheRest) { EXPECT_EQ(Shown("<meta/><!-- <meta/>"), "meta\n"); }

TEST(OutlineTest, TagWithoutEndHasNoContent) {
  EXPECT_EQ(Shown("<meta><entry name='a'\n  <entry name='b'/></meta>"), "meta\n  entry name[a] ~\n  entry name[b]\n");
  EXPECT_EQ(Shown("<meta><ent\n</meta>"), "meta\n  ent ~\n");
  EXPECT_EQ(Shown("<meta><"), "meta ~\n   ~\n");
}

TEST(OutlineTest, ElementWithoutEndTagEndsInFrontOfTheNextOfItsParent) {
  EXPECT_EQ(Shown("<metalib><meta name='a'><entry><index><column/><index><meta name='b'></metalib>"),
            "metalib\n  meta name[a] ~\n    entry ~\n    index ~\n      column\n    index ~\n  meta name[b] ~\n");
}

TEST(OutlineTest, UnclosedValueEndsInFrontOfTheNextAttribute) {
  EXPECT_EQ(Shown("<entry name=\"uid type=\"int8\"/>"), "entry name[uid] type[int8]\n");
  EXPECT_EQ(Shown("<entry name=\" type=\"int8\" id=\"1\"/>"), "entry name[] type[int8] id[1]\n");
  EXPECT_EQ(Shown("<entry name='a=' type='int8'/>"), "entry name[a=] type[int8]\n");
}

TEST(OutlineTest, UnclosedValueEndsWithItsLineOrTag) {
  EXPECT_EQ(Shown("<entry name=\"uid\n type='int8'/>"), "entry name[uid] type[int8]\n");
  EXPECT_EQ(Shown("<entry type='int8' name=\"uid/><entry/>"), "entry type[int8] name[uid]\nentry\n");
  EXPECT_EQ(Shown("<meta name=\"uid><entry/>"), "meta name[uid] ~\n  entry\n");
}

TEST(OutlineTest, TakesValuesWithoutQuotesAndSkipsWhatNothingExplains) {
  EXPECT_EQ(Shown("<entry name=uid type= id = '1' / ' = desc refer=/>"), "entry name[uid] type[] id[1] desc refer[]\n");
}

TEST(OutlineTest, IgnoresEndTagsWithoutStart) { EXPECT_EQ(Shown("</meta><meta></entry></></meta></meta>"), "meta\n"); }

TEST(OutlineTest, NestsAsDeeplyAsTheReader) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "<a>";
  const Outline outline(text);
  ElementIndex element = 999;
  int depth = 1;
  for (; outline.elements()[element].parent != kNoElement; ++depth) element = outline.elements()[element].parent;
  EXPECT_EQ(depth, int{qmx::kMaxElementDepth} + 1);
}

TEST(OutlineTest, DecodesValues) {
  EXPECT_EQ(DecodeValue("a&amp;&lt;&gt;&apos;&quot;&#65;&#x42;&#xe4;&#x20ac;&#x1F600;"),
            "a&<>'\"AB\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(DecodeValue("a\r\nb\tc\nd&#10;e"), "a b c d\ne");
  EXPECT_EQ(DecodeValue("&b; && &#; &#xD800; &#99999999; &amp"), "&b; && &#; &#xD800; &#99999999; &amp");
}

TEST(OutlineTest, SplitsListsIntoWords) {
  const std::string text = "x='  uid\tz&#111;ne&#32;a&amp;b '";
  std::vector<std::string> words;
  for (const ValueWord& word : WordsOf(text, {3, text.size() - 1})) {
    words.push_back(text.substr(word.span.begin, word.span.end - word.span.begin) + "=" + word.text);
  }
  EXPECT_THAT(words, ElementsAre("uid=uid", "z&#111;ne=zone", "a&amp;b=a&b"));
}

// The name of the innermost element at the mark; "" outside.
std::string NameAt(const std::string& marked) {
  const MarkedText at(marked);
  const Outline outline(at.text);
  const ElementIndex element = outline.ElementAt(at.offset);
  return element == kNoElement ? "" : std::string(outline.Piece(outline.elements()[element].name()));
}

TEST(OutlineTest, FindsInnermostElement) {
  EXPECT_EQ(NameAt("|<a><b/></a>"), "");
  EXPECT_EQ(NameAt("<|a><b/></a>"), "a");
  EXPECT_EQ(NameAt("<a>|<b/></a>"), "a");
  EXPECT_EQ(NameAt("<a><b|/></a>"), "b");
  EXPECT_EQ(NameAt("<a><b/>|</a>"), "a");
  EXPECT_EQ(NameAt("<a><b/></a>|"), "");
  EXPECT_EQ(NameAt("<a><b |<c/></a>"), "b");
  EXPECT_EQ(NameAt("<a><b></b>|"), "a");
}

// The offsets of all elements as the reader found them, in the order of the text.
std::vector<std::size_t> OffsetsOf(const qmx::SourceMap& map, const Outline& outline) {
  std::vector<std::size_t> offsets;
  std::uint32_t metas = 0;
  std::uint32_t entries = 0;
  std::uint32_t indexes = 0;
  std::uint32_t columns = 0;
  for (const Element& element : outline.elements()) {
    qmx::ElementId id{element.form->kind, metas == 0 ? 0 : metas - 1};
    if (element.Is(Kind::kMeta)) {
      id.meta = metas++;
      entries = indexes = 0;
    }
    if (element.Is(Kind::kEntry)) id.item = entries++;
    if (element.Is(Kind::kIndex)) {
      id.item = indexes++;
      columns = 0;
    }
    if (element.Is(Kind::kColumn)) {
      id.item = indexes - 1;
      id.column = columns++;
    }
    offsets.push_back(map.Find(id).value_or(0));
  }
  return offsets;
}

TEST(OutlineTest, AgreesWithReader) {
  std::size_t elements = 0;
  for (const std::string& text : lsp_test::NewSchemas()) {
    const qmx::ReadResult read = qmx::ReadXml(text);
    if (!read.schema) continue;
    const Outline outline(text);
    std::vector<std::size_t> offsets;
    for (const Element& element : outline.elements()) offsets.push_back(element.begin);
    EXPECT_EQ(offsets, OffsetsOf(read.schema->source_map, outline)) << text;
    elements += offsets.size();
  }
  EXPECT_GT(elements, 1000U);
}

}  // namespace
