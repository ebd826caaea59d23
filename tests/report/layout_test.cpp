// Layouts: offsets and sizes of packed records, limits, and two layouts compared.
#include "report/result/layout.h"

#include <gmock/gmock.h>

#include "base/characters.h"
#include "read_source.h"
#include "report/render/render.h"

namespace report_test {
namespace {

using namespace korvel;
using testing::ElementsAre;

Source Library(const std::string& metas, const std::string& protocol = "QMX") {
  return ReadSource("mall.xml", "<metalib name='mall' version='5' protocol='" + protocol + "'>" + metas + "</metalib>");
}

Source Orders(const std::string& fields, const std::string& protocol = "QMX") {
  return Library("<meta name='orders'><entry name='uid' id='1' type='uint32'/>" + fields + "<primarykey entries='uid'/></meta>",
                 protocol);
}

// "path@offset+size", with a '+' before offsets inside an element.
std::vector<std::string> ToText(const TableLayout& layout) {
  std::vector<std::string> shown;
  for (const FieldLayout& field : layout.fields) {
    shown.push_back(field.path + "@" + (field.in_element ? "+" : "") + std::to_string(field.offset) + ":" +
                    std::to_string(field.size));
  }
  return shown;
}

constexpr char kNested[] = R"(
  <meta name="money"><entry name="cents" type="int64"/><entry name="currency" type="string" size="4"/></meta>
  <meta name="line">
    <entry name="sku" type="uint32"/>
    <entry name="price" type="money"/>
    <entry name="taxes" type="money" count="2"/>
  </meta>
  <meta name="orders">
    <entry name="uid" type="uint64"/>
    <entry name="n" type="uint8"/>
    <entry name="lines" type="line" count="10" refer="n"/>
    <entry name="total" type="money"/>
    <primarykey entries="uid"/>
  </meta>)";

TEST(Layout, OffsetsCountFromRecordOrInnermostElement) {
  EXPECT_THAT(
      ToText(LayoutOf(Library(kNested), "orders")),
      ElementsAre("uid@0:8", "n@8:1", "lines@9:400", "lines[].sku@+0:4", "lines[].price@+4:12", "lines[].price.cents@+4:8",
                  "lines[].price.currency@+12:4", "lines[].taxes@+16:24", "lines[].taxes[].cents@+0:8",
                  "lines[].taxes[].currency@+8:4", "total@409:12", "total.cents@409:8", "total.currency@417:4"));
}

TEST(Layout, OccurrencesAreMultiplied) {
  const TableLayout layout = LayoutOf(Library(kNested), "orders");
  EXPECT_EQ(layout.size, 421u);
  EXPECT_EQ(layout.own_fields, 4u);
  EXPECT_EQ(layout.fields[2].in_record, 400u);
  EXPECT_EQ(layout.fields[8].in_record, 8u * 2 * 10);
  EXPECT_EQ(layout.fields[2].end, 10u) << "after all fields inside lines";
}

TEST(Layout, UnionMembersStartAtZero) {
  const Source source = Library(R"(
    <meta name="value" kind="union"><entry name="number" type="int64"/><entry name="word" type="string" size="12"/></meta>
    <meta name="orders"><entry name="uid" type="uint32"/><entry name="v" type="value"/><entry name="end" type="uint8"/>
    <primarykey entries="uid"/></meta>)");
  EXPECT_THAT(ToText(LayoutOf(source, "orders")), ElementsAre("uid@0:4", "v@4:12", "v.number@4:8", "v.word@4:12", "end@16:1"));
}

TEST(Layout, OnlyFieldsOfTheTableAreKeysAndSortFields) {
  const Source source = Library(R"(
    <meta name="part"><entry name="uid" type="uint32" customattr2="sort=1"/></meta>
    <meta name="orders" customattr="TableType=SORTLIST;ListNum=4">
      <entry name="uid" type="uint32"/><entry name="at" type="uint32" customattr2="sort=1"/><entry name="p" type="part"/>
      <entry name="note" type="uint8" customattr2="pii"/>
      <primarykey entries="uid"/><splittablekey entries="uid"/></meta>)");
  const TableLayout layout = LayoutOf(source, "orders");
  EXPECT_TRUE(layout.fields[0].key && layout.fields[0].splittable);
  EXPECT_EQ(layout.fields[1].sort, "sort=1");
  EXPECT_EQ(layout.fields[3].path, "p.uid");
  EXPECT_TRUE(!layout.fields[3].key && !layout.fields[3].splittable && layout.fields[3].sort.empty());
  EXPECT_EQ(layout.fields[4].sort, "");
}

TEST(Layout, MissingTableHasNoFields) {
  const TableLayout layout = LayoutOf(Library(kNested), "carts");
  EXPECT_FALSE(layout.found);
  EXPECT_TRUE(layout.fields.empty());
}

// Each structure contains the previous one twice: the innermost has 2^100 paths.
TEST(Layout, LimitsNestedStructures) {
  std::string metas = "<meta name='m0'><entry name='x' type='uint8'/></meta>";
  for (int i = 1; i <= 50; ++i) {
    const std::string inner = "m" + std::to_string(i - 1);
    metas += "<meta name='m" + std::to_string(i) + "'><entry name='a' type='" + inner + "'/><entry name='b' type='" + inner +
             "'/></meta>";
  }
  metas +=
      "<meta name='orders'><entry name='uid' type='uint32'/><entry name='deep' type='m50'/><entry name='end' type='uint8'/>"
      "<primarykey entries='uid'/></meta>";
  const TableLayout layout = LayoutOf(Library(metas), "orders");
  EXPECT_LE(layout.fields.size(), kMaxInnerFields + layout.own_fields);
  EXPECT_GT(layout.fields.size(), kMaxInnerFields / 2);
  EXPECT_GT(layout.closed, 0u);
  EXPECT_EQ(layout.fields.back().path, "end");
  EXPECT_EQ(layout.fields.back().offset, 4 + (std::uint64_t{1} << 50));
}

TEST(Layout, LongNamesCountForMoreFields) {
  const std::string name(60'000, 'n');
  std::string fields;
  for (int i = 0; i < 1000; ++i) fields += "<entry name='f" + std::to_string(i) + "' type='uint8'/>";
  const Source source =
      Library("<meta name='part'>" + fields + "</meta><meta name='orders'><entry name='uid' type='uint32'/><entry name='" + name +
              "' type='part'/><primarykey entries='uid'/></meta>");
  EXPECT_EQ(LayoutOf(source, "orders").closed, 1u);
}

// --- Two layouts ---

struct PairCase {
  std::string label;
  std::string before;
  std::string after;
  std::vector<std::string> changes;  // of the fields after uid: "path: what"
};

TEST(LayoutPairs, DescribesEachChange) {
  const std::string a = "<entry name='a' id='2' type='uint32'/>";
  const std::string b = "<entry name='b' id='3' type='uint8'/>";
  const PairCase kCases[] = {
      {"nothing", a + b, a + b, {"a: ", "b: "}},
      {"added in the middle", b, a + b, {"a: added", "b: moved by +4"}},
      {"removed", a + b, b, {"a: removed", "b: moved by -4"}},
      {"wider", a + b, "<entry name='a' id='2' type='uint64'/>" + b, {"a: type uint32 -> uint64, grew by 4", "b: moved by +4"}},
      {"renamed", a + b, "<entry name='c' id='2' type='uint32'/>" + b, {"c: renamed from a", "b: "}},
      {"renamed without ids", "<entry name='a' type='uint32'/>", "<entry name='c' type='uint32'/>", {"a: removed", "c: added"}},
      {"swapped", a + b, b + a, {"b: moved by -4", "a: moved by +1"}},
      {"fewer",
       "<entry name='a' type='uint16' count='4'/>",
       "<entry name='a' type='uint16' count='2'/>",
       {"a: count 4 -> 2, shrank by 4"}},
  };
  for (const PairCase& one : kCases) {
    const Source old_source = Orders(one.before);
    const Source new_source = Orders(one.after);
    const TableLayout before = LayoutOf(old_source, "orders");
    const TableLayout after = LayoutOf(new_source, "orders");
    std::vector<std::string> changes;
    for (const FieldPair& pair : PairFields(before, after)) {
      changes.push_back(pair.Either().path + ": " + DescribeChange(pair, false));
    }
    ASSERT_FALSE(changes.empty());
    EXPECT_EQ(changes.front(), "uid: ") << one.label;
    changes.erase(changes.begin());
    EXPECT_THAT(changes, testing::UnorderedElementsAreArray(one.changes)) << one.label;
  }
}

TEST(LayoutPairs, MatchesByIdInTlv) {
  const std::string swapped = "<entry name='b' id='2' type='uint32'/><entry name='a' id='3' type='uint32'/>";
  const std::string plain = "<entry name='a' id='2' type='uint32'/><entry name='b' id='3' type='uint32'/>";
  const Source old_source = Orders(plain, "TLV");
  const Source new_source = Orders(swapped, "TLV");
  const TableLayout before = LayoutOf(old_source, "orders");
  const TableLayout after = LayoutOf(new_source, "orders");
  const std::vector<FieldPair> pairs = PairFields(before, after);
  ASSERT_EQ(pairs.size(), 3u);
  EXPECT_EQ(DescribeChange(pairs[1], true), "renamed from a");
  EXPECT_EQ(DescribeChange(pairs[2], true), "renamed from b");
}

TEST(LayoutPairs, MatchesFieldsWithinTheirStructure) {
  const auto with = [](const std::string& inner) {
    return Library("<meta name='part'>" + inner +
                   "</meta><meta name='orders'><entry name='uid' type='uint32'/>"
                   "<entry name='p' type='part' count='3'/><entry name='x' type='uint8'/><primarykey entries='uid'/></meta>");
  };
  const Source old_source = with("<entry name='x' type='uint8'/>");
  const Source new_source = with("<entry name='y' type='uint8'/><entry name='x' type='uint8'/>");
  const TableLayout before = LayoutOf(old_source, "orders");
  const TableLayout after = LayoutOf(new_source, "orders");
  std::vector<std::string> changes;
  for (const FieldPair& pair : PairFields(before, after)) {
    changes.push_back(std::to_string(pair.level) + " " + pair.Either().path + ": " + DescribeChange(pair, false));
  }
  EXPECT_THAT(changes, ElementsAre("1 uid: ", "1 p: grew by 3", "2 p[].y: added", "2 p[].x: moved by +1", "1 x: moved by +3"));
}

// --- Columns ---

TEST(Columns, CountCharactersNotBytes) {
  EXPECT_EQ(CharacterCount("größe"), 5u);
  EXPECT_EQ(CharacterCount("\xff\xfe"), 2u);
  EXPECT_EQ(InColumns({Align::kLeft, Align::kRight}, {{"größe", "1"}, {"a", "22"}}), "größe   1\na      22\n");
}

TEST(Columns, LinesHaveNoTrailingBlanks) {
  EXPECT_EQ(InColumns({Align::kLeft, Align::kLeft}, {{"a", ""}, {"bb", "c"}}), "a\nbb  c\n");
}

TEST(Percent, IsRoundedToTenths) {
  EXPECT_EQ(Percent(1, 3), "33.3");
  EXPECT_EQ(Percent(2, 3), "66.7");
  EXPECT_EQ(Percent(1, 1), "100.0");
  EXPECT_EQ(Percent(0, 0), "0.0");
  EXPECT_EQ(Percent(std::uint64_t{1} << 62, std::uint64_t{1} << 63), "50.0");
}

}  // namespace
}  // namespace report_test
