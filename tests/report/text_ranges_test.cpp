// Text ranges: line, column and span of an element or attribute.
#include "report/result/text_ranges.h"

#include <gmock/gmock.h>

#include "read_source.h"

namespace report_test {
namespace {

using korvel::FindPositions;
using korvel::FindTextRanges;
using korvel::Location;
using korvel::Source;
using korvel::TextRange;
using korvel::TextRanges;
using qmx::ElementId;
using Kind = ElementId::Kind;

constexpr char kMall[] =
    "<metalib name=\"mall\" version=\"1\" protocol=\"QMX\">\n"
    "  <meta name=\"orders\">\n"
    "\t<entry name=\"\xc3\xa9\" type='uint32' desc=\"a > b\"/><entry name=\"zone\" type=\"uint8\"/>\n"
    "    <entry\n"
    "      name=\"note\" size=\"64\" type=\"string\"/>\n"
    "    <primarykey entries=\"zone\n zone\"/>\n"
    "  </meta>\n"
    "</metalib>\n";

// "LINE:COLUMN-LINE:COLUMN text"
std::string ToText(const Source& source, const TextRange& range) {
  if (!range.begin) return range.file;
  const auto place = [](const qmx::LineColumn& at) { return std::to_string(at.line) + ":" + std::to_string(at.column); };
  return place(*range.begin) + "-" + place(range.end) + " " +
         std::string(source.text->Bytes().substr(range.span.begin, range.span.end - range.span.begin));
}

struct PlaceCase {
  const char* what;
  ElementId element;
  const char* attribute;
  const char* text;
};

constexpr PlaceCase kCases[] = {
    {"the library", {Kind::kMetalib}, "", "1:1-1:49 <metalib name=\"mall\" version=\"1\" protocol=\"QMX\">"},
    {"an attribute of the library", {Kind::kMetalib}, "version", "1:31-1:32 1"},
    {"a meta", {Kind::kMeta, 0}, "", "2:3-2:23 <meta name=\"orders\">"},
    {"columns count characters", {Kind::kEntry, 0, 0}, "type", "3:24-3:30 uint32"},
    {"a value does not end its tag",
     {Kind::kEntry, 0, 0},
     "",
     "3:2-3:46 <entry name=\"\xc3\xa9\" type='uint32' desc=\"a > b\"/>"},
    {"the second of a line", {Kind::kEntry, 0, 1}, "name", "3:59-3:63 zone"},
    {"a tag over lines", {Kind::kEntry, 0, 2}, "", "4:5-5:44 <entry\n      name=\"note\" size=\"64\" type=\"string\"/>"},
    {"a missing attribute gives its element", {Kind::kMeta, 0}, "customattr", "2:3-2:23 <meta name=\"orders\">"},
    {"an attribute over lines", {Kind::kPrimaryKey, 0}, "entries", "6:26-7:6 zone\n zone"},
};

TEST(FindTextRanges, ResolvesLocations) {
  const Source mall = ReadSource("mall.xml", kMall);
  for (const PlaceCase& test : kCases) {
    const auto ranges = FindTextRanges({Location{&mall, test.element, test.attribute}});
    ASSERT_TRUE(ranges.at(0)) << test.what;
    EXPECT_EQ(ToText(mall, *ranges[0]), test.text) << test.what;
    EXPECT_EQ(ranges[0]->file, "mall.xml");
  }
}

// Parts of a value are bytes of the library; the text may have references for them.
TEST(FindTextRanges, ResolvesPartsOfAnAttribute) {
  const Source mall =
      ReadSource("mall.xml",
                 "<metalib name=\"m\" version=\"1\">\n"
                 "<meta name=\"t\" customattr='A=&lt;&#x3b;B=\xc3\xa9;\n C=1'><entry name=\"a\" type=\"int8\"/></meta>\n"
                 "</metalib>");
  const auto text_of = [&](const qmx::Span& part) {
    return ToText(mall, *FindTextRanges({Location{&mall, {Kind::kMeta}, "customattr", part}}).at(0));
  };
  EXPECT_EQ(text_of({0, 3}), "2:28-2:34 A=&lt;");
  EXPECT_EQ(text_of({4, 8}), "2:40-2:43 B=\xc3\xa9");
  EXPECT_EQ(text_of({9, 14}), "2:44-3:5 \n C=1");
  EXPECT_EQ(text_of({}), "2:28-3:5 A=&lt;&#x3b;B=\xc3\xa9;\n C=1");
  EXPECT_EQ(text_of({9, 15}), "2:28-3:5 A=&lt;&#x3b;B=\xc3\xa9;\n C=1") << "not inside the value: the value as a whole";
}

TEST(TextRanges, FindPartsByLocation) {
  const Source mall = ReadSource("mall.xml",
                                 "<metalib name=\"m\" version=\"1\"><meta name=\"t\" customattr=\"A=1;B=2\">"
                                 "<entry name=\"a\" type=\"int8\"/></meta></metalib>");
  const Location whole{&mall, {Kind::kMeta}, "customattr"};
  const Location first{&mall, {Kind::kMeta}, "customattr", {0, 3}};
  const Location second{&mall, {Kind::kMeta}, "customattr", {4, 7}};
  const TextRanges ranges({second, whole, first});
  EXPECT_EQ(ToText(mall, *ranges.Find(first)), "1:58-1:61 A=1");
  EXPECT_EQ(ToText(mall, *ranges.Find(second)), "1:62-1:65 B=2");
  EXPECT_EQ(ToText(mall, *ranges.Find(whole)), "1:58-1:65 A=1;B=2");
}

TEST(FindTextRanges, ManyAtOnceEqualOneByOne) {
  const Source mall = ReadSource("mall.xml", kMall);
  const Source other = ReadSource("other.xml", kMall);
  std::vector<Location> locations;
  for (const PlaceCase& test : kCases) {
    locations.insert(locations.begin(), {&mall, test.element, test.attribute});
    locations.push_back({&other, test.element, test.attribute});
    locations.push_back({});
  }
  const auto ranges = FindTextRanges(locations);
  ASSERT_EQ(ranges.size(), locations.size());
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    ASSERT_EQ(ranges[i].has_value(), locations[i].source != nullptr);
    if (!ranges[i]) continue;
    const auto alone = FindTextRanges({locations[i]});
    EXPECT_EQ(ToText(*locations[i].source, *ranges[i]), ToText(*locations[i].source, *alone[0]));
    EXPECT_EQ(ranges[i]->line, alone[0]->line);
    EXPECT_EQ(ranges[i]->line_begin, alone[0]->line_begin);
  }
}

TEST(FindTextRanges, LinesEndAtAnyLineEnd) {
  const Source crlf = ReadSource("crlf.xml",
                                 "\xef\xbb\xbf<metalib name=\"m\" version=\"1\">\r\n<meta name=\"a\">\r"
                                 "<entry name=\"x\" type=\"int8\"/>\n</meta></metalib>");
  const auto ranges =
      FindTextRanges({{&crlf, {Kind::kMetalib}, ""}, {&crlf, {Kind::kMeta}, ""}, {&crlf, {Kind::kEntry}, "name"}});
  EXPECT_EQ(ranges[0]->line, "<metalib name=\"m\" version=\"1\">") << "without the byte order range";
  EXPECT_EQ(ranges[0]->line_begin, 3u);
  EXPECT_EQ(ranges[0]->begin->column, 1u);
  EXPECT_EQ(ranges[1]->line, "<meta name=\"a\">");
  EXPECT_EQ(ranges[2]->line, "<entry name=\"x\" type=\"int8\"/>");
}

TEST(FindTextRanges, ImageHasNoLines) {
  Source image = ReadSource("mall.qmb", kMall);
  image.text.reset();
  const auto ranges = FindTextRanges({{&image, {Kind::kMeta}, "name"}});
  EXPECT_EQ(ranges[0]->file, "mall.qmb");
  EXPECT_EQ(ranges[0]->begin, std::nullopt);
}

TEST(TextRanges, FindByLocation) {
  const Source mall = ReadSource("mall.xml", kMall);
  const Location type{&mall, {Kind::kEntry, 0, 0}, "type"};
  const Location name{&mall, {Kind::kEntry, 0, 1}, "name"};
  const TextRanges ranges({name, type, {}, type});
  EXPECT_EQ(ToText(mall, *ranges.Find(type)), "3:24-3:30 uint32");
  EXPECT_EQ(ToText(mall, *ranges.Find(name)), "3:59-3:63 zone");
  EXPECT_EQ(ranges.Find({}), nullptr);
}

TEST(FindPositions, KeepsTheOrderOfOffsets) {
  const auto positions = FindPositions("ab\ncd\n", {4, 0, 3, 6});
  ASSERT_EQ(positions.size(), 4u);
  EXPECT_EQ(positions[0].line, 2u);
  EXPECT_EQ(positions[0].column, 2u);
  EXPECT_EQ(positions[1].line, 1u);
  EXPECT_EQ(positions[2].column, 1u);
  EXPECT_EQ(positions[3].line, 3u);
}

}  // namespace
}  // namespace report_test
