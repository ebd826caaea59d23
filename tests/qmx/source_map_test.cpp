// Tests locations: lines and columns of bytes, attributes inside tags, elements by position.
#include "qmx/qmx_source_map.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using qmx::ElementId;
using Kind = qmx::ElementId::Kind;

std::string At(std::string_view text, std::size_t offset) {
  const qmx::LineColumn location = qmx::Locate(text, offset);
  return std::to_string(location.line) + ":" + std::to_string(location.column);
}

TEST(Locate, LinesAndColumnsCountFromOne) {
  EXPECT_EQ(At("", 0), "1:1");
  EXPECT_EQ(At("ab\ncd", 0), "1:1");
  EXPECT_EQ(At("ab\ncd", 1), "1:2");
  EXPECT_EQ(At("ab\ncd", 2), "1:3");
  EXPECT_EQ(At("ab\ncd", 3), "2:1");
  EXPECT_EQ(At("ab\ncd", 4), "2:2");
}

TEST(Locate, OffsetPastEndIsEnd) {
  EXPECT_EQ(At("ab", 2), "1:3");
  EXPECT_EQ(At("ab", 99), "1:3");
  EXPECT_EQ(At("ab\n", 99), "2:1");
}

TEST(Locate, LineEnds) {
  EXPECT_EQ(At("a\r\nb", 2), "1:3");
  EXPECT_EQ(At("a\r\nb", 3), "2:1");
  EXPECT_EQ(At("a\rb", 2), "2:1");
  EXPECT_EQ(At("a\n\rb", 3), "3:1");
  EXPECT_EQ(At("a\r", 2), "2:1");
}

TEST(Locate, ColumnsAreCharactersNotBytes) {
  const std::string text = "\tä€😀x";
  EXPECT_EQ(At(text, text.size() - 1), "1:5");
  EXPECT_EQ(At(text, 1), "1:2");
  EXPECT_EQ(At(text, 2), "1:2") << "inside a character";
  EXPECT_EQ(At(text, 9), "1:4") << "inside a character";
}

TEST(Locate, ByteOrderMarkDoesNotCount) {
  EXPECT_EQ(At("\xEF\xBB\xBF<a/>", 3), "1:1");
  EXPECT_EQ(At("\xEF\xBB\xBF<a/>", 4), "1:2");
}

TEST(LineCounter, AgreesWithLocateAtEveryOffset) {
  const std::string text = "\xEF\xBB\xBF<a>\r\n\tä€\r<b/>\n\n😀\xFF\x80\x80\x80\x80z";
  qmx::LineCounter counter(text);
  for (std::size_t offset = 0; offset <= text.size() + 2; ++offset) {
    const qmx::LineColumn location = counter.At(offset);
    EXPECT_EQ(std::to_string(location.line) + ":" + std::to_string(location.column), At(text, offset)) << offset;
  }
}

std::string ValueOf(std::string_view text, std::string_view attribute) {
  const auto span = qmx::FindAttributeValue(text, text.find("<e"), attribute);
  return span ? std::string(text.substr(span->begin, span->end - span->begin)) : "none";
}

TEST(FindAttributeValue, Found) {
  const std::string_view text = "<x a='no'/><e a=\"1\" bb = '2\"'\n\tc='>/' a2=\"\"/><y d='4'/>";
  EXPECT_EQ(ValueOf(text, "a"), "1");
  EXPECT_EQ(ValueOf(text, "bb"), "2\"");
  EXPECT_EQ(ValueOf(text, "c"), ">/");
  EXPECT_EQ(ValueOf(text, "a2"), "");
}

TEST(FindAttributeValue, Absent) {
  EXPECT_EQ(ValueOf("<e a='1'/><y d='4'/>", "d"), "none");
  EXPECT_EQ(ValueOf("<e a='b=1'/>", "b"), "none");
  EXPECT_EQ(ValueOf("<e/>", "a"), "none");
  EXPECT_EQ(ValueOf("<e>a='1'</e>", "a"), "none");
}

TEST(FindAttributeValue, StaysInsideTruncatedText) {
  const std::string whole = "<e a = 'x' b='y'/>";
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const std::string text = whole.substr(0, size);
    const auto span = qmx::FindAttributeValue(text, 0, "b");
    EXPECT_EQ(span.has_value(), size >= 16) << size;
  }
  EXPECT_EQ(qmx::FindAttributeValue("<e/>", 100, "a"), std::nullopt);
}

}  // namespace

namespace qmx {
// So that optional spans compare and print in tests.
bool operator==(const Span& a, const Span& b) { return a.begin == b.begin && a.end == b.end; }
std::ostream& operator<<(std::ostream& out, const Span& span) { return out << span.begin << ".." << span.end; }
}  // namespace qmx

namespace {

// Two metas: the first with two entries, both keys and two indexes of one and two columns, the second empty.
qmx::SourceMap Filled() {
  qmx::SourceMap map;
  map.Add({Kind::kMetalib}, 1);
  map.Add({Kind::kMeta, 0}, 10);
  map.Add({Kind::kEntry, 0, 0}, 11);
  map.Add({Kind::kIndex, 0, 0}, 12);
  map.Add({Kind::kColumn, 0, 0, 0}, 13);
  map.Add({Kind::kEntry, 0, 1}, 14);
  map.Add({Kind::kSplittableKey, 0}, 15);
  map.Add({Kind::kPrimaryKey, 0}, 16);
  map.Add({Kind::kIndex, 0, 1}, 17);
  map.Add({Kind::kColumn, 0, 1, 0}, 18);
  map.Add({Kind::kColumn, 0, 1, 1}, 19);
  map.Add({Kind::kMeta, 1}, 20);
  return map;
}

TEST(SourceMap, FindsAddedElements) {
  const qmx::SourceMap map = Filled();
  EXPECT_EQ(map.Find({Kind::kMetalib}), 1u);
  EXPECT_EQ(map.Find({Kind::kMeta, 0}), 10u);
  EXPECT_EQ(map.Find({Kind::kEntry, 0, 0}), 11u);
  EXPECT_EQ(map.Find({Kind::kIndex, 0, 0}), 12u);
  EXPECT_EQ(map.Find({Kind::kColumn, 0, 0, 0}), 13u);
  EXPECT_EQ(map.Find({Kind::kEntry, 0, 1}), 14u);
  EXPECT_EQ(map.Find({Kind::kSplittableKey, 0}), 15u);
  EXPECT_EQ(map.Find({Kind::kPrimaryKey, 0}), 16u);
  EXPECT_EQ(map.Find({Kind::kIndex, 0, 1}), 17u);
  EXPECT_EQ(map.Find({Kind::kColumn, 0, 1, 0}), 18u);
  EXPECT_EQ(map.Find({Kind::kColumn, 0, 1, 1}), 19u);
  EXPECT_EQ(map.Find({Kind::kMeta, 1}), 20u);
}

TEST(SourceMap, FindsNoOtherElements) {
  const qmx::SourceMap map = Filled();
  constexpr std::uint32_t kLast = 0xFFFFFFFF;
  for (const ElementId& id :
       {ElementId{Kind::kMeta, 2}, ElementId{Kind::kMeta, kLast}, ElementId{Kind::kEntry, 0, 2}, ElementId{Kind::kEntry, 1, 0},
        ElementId{Kind::kEntry, 9, 0}, ElementId{Kind::kPrimaryKey, 1}, ElementId{Kind::kSplittableKey, 1},
        ElementId{Kind::kIndex, 0, 2}, ElementId{Kind::kColumn, 0, 0, 1}, ElementId{Kind::kColumn, 0, 0, kLast},
        ElementId{Kind::kColumn, 0, 2, 0}}) {
    EXPECT_EQ(map.Find(id), std::nullopt) << static_cast<int>(id.kind) << " " << id.meta << " " << id.item << " " << id.column;
  }
  EXPECT_EQ(qmx::SourceMap().Find({Kind::kMetalib}), std::nullopt);
}

}  // namespace
