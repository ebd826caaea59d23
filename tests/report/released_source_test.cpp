// Sources without library and text.
#include "report/result/released_source.h"

#include <gtest/gtest.h>

#include "read_source.h"
#include "report/result/words.h"

namespace report_test {
namespace {

using korvel::DeclaredAt;
using korvel::FindReleased;
using korvel::FindTextRanges;
using korvel::Location;
using korvel::Source;

constexpr char kMall[] =
    "<metalib name=\"mall\" version=\"1\">\n"
    "  <meta name=\"a\"><entry name=\"k\" type=\"int8\"/></meta> <meta name=\"b\"><entry name=\"k\" type=\"int8\"/></meta>\n"
    "  <meta\n    name=\"c\"><entry name=\"k\" type=\"int8\"/></meta>\n"
    "</metalib>\n";

Location In(const Source& source, const Location& location) {
  return {&source, location.element, location.attribute, location.part};
}

TEST(ReleasedSource, KeepsNameAndChosenLocations) {
  const Source mall = ReadSource("mall.xml", kMall);
  const Location b = DeclaredAt(mall, "b");
  const Location c = DeclaredAt(mall, "c");
  const auto released = Release(mall, {c, b}, false);
  EXPECT_EQ(FindReleased(mall), nullptr);
  EXPECT_EQ(FindReleased(*released), released.get());
  EXPECT_EQ(released->name, "mall.xml");
  EXPECT_FALSE(released->text);
  for (const Location& location : {b, c}) {
    const auto before = FindTextRanges({location}).at(0);
    const auto after = FindTextRanges({In(*released, location)}).at(0);
    ASSERT_TRUE(before && after && after->begin);
    EXPECT_EQ(ToText(*after), ToText(*before));
    EXPECT_EQ(after->end.line, before->end.line);
    EXPECT_EQ(after->end.column, before->end.column);
    EXPECT_TRUE(BeginAlike(*after, *before));
  }
}

TEST(ReleasedSource, ShowsOnlyTheFileOfOtherLocations) {
  const Source mall = ReadSource("mall.xml", kMall);
  const auto released = Release(mall, {DeclaredAt(mall, "b")}, false);
  for (const char* const other : {"a", "c"}) {
    const auto range = FindTextRanges({In(*released, DeclaredAt(mall, other))}).at(0);
    ASSERT_TRUE(range);
    EXPECT_EQ(ToText(*range), "mall.xml");
  }
}

TEST(ReleasedSource, KeepsPartsOfAnAttribute) {
  const Source mall = ReadSource("mall.xml",
                                 "<metalib name=\"m\" version=\"1\"><meta name=\"t\" customattr=\"A=1;B=2\">"
                                 "<entry name=\"a\" type=\"int8\"/></meta></metalib>");
  const Location meta = DeclaredAt(mall, "t");
  const Location first{&mall, meta.element, "customattr", {0, 3}};
  const Location second{&mall, meta.element, "customattr", {4, 7}};
  const auto released = korvel::ReleaseExcept(mall, {second, first});
  EXPECT_EQ(ToText(*FindTextRanges({In(*released, first)}).at(0)), "mall.xml:1:58");
  EXPECT_EQ(ToText(*FindTextRanges({In(*released, second)}).at(0)), "mall.xml:1:62");
}

TEST(ReleasedSource, OfImageShowsOnlyTheFile) {
  Source image = ReadSource("mall.qmb", kMall);
  image.text.reset();
  const auto released = Release(image, {DeclaredAt(image, "b")}, true);
  EXPECT_FALSE(released->text);
  EXPECT_EQ(ToText(*FindTextRanges({In(*released, DeclaredAt(image, "b"))}).at(0)), "mall.qmb");
}

TEST(ReleasedSource, KeepsTextWithoutItsParser) {
  Source mall = ReadSource("mall.xml", kMall);
  mall.text->is_dump = true;
  const auto released = Release(mall, {DeclaredAt(mall, "b")}, true);
  mall.text.reset();
  ASSERT_TRUE(released->text);
  EXPECT_EQ(released->text->Bytes(), kMall);
  EXPECT_TRUE(released->text->is_dump);
}

}  // namespace
}  // namespace report_test
