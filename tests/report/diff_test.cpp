// Splits changes into edits: one mutation a row, with the exact list of edits.
#include "analysis/diff/diff.h"

#include <gmock/gmock.h>

#include "models.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::Difference;
using korvel::Edit;
using testing::ElementsAre;

constexpr char kOld[] = R"(<metalib name="mall" version="5" protocol="QMX">
  <meta name="item">
    <entry name="sku" id="1" type="string" size="32"/>
    <entry name="price" id="2" type="int64"/>
  </meta>
  <meta name="orders" customattr="TableType=LIST;ListNum=1024">
    <entry name="uid" id="1" type="uint32"/>
    <entry name="zone" id="2" type="uint32"/>
    <entry name="n_items" id="3" type="uint32"/>
    <entry name="items" id="4" type="item" count="100" refer="n_items"/>
    <entry name="gift" id="5" type="item"/>
    <primarykey entries="uid zone"/>
    <splittablekey entries="uid"/>
    <index name="by_zone"><column entry="zone" desc="true"/><column entry="uid"/></index>
    <index name="by_uid"><column entry="uid"/></index>
  </meta>
</metalib>
)";

// `text` with one occurrence of `from` replaced.
std::string With(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

struct Mutation {
  const char* label;
  std::vector<std::pair<std::string, std::string>> replacements;
  std::vector<std::string> edits;
};

const std::vector<Mutation> kMutations = {
    {"nothing", {{"version=\"5\"", "version=\"5\" desc=\"documents\""}}, {}},
    {"library",
     {{"name=\"mall\" version=\"5\" protocol=\"QMX\"", "name=\"shop\" version=\"6\""}},
     {"library-name : name of the library: mall -> shop", "library-version : version of the library: 5 -> 6",
      "library-protocol : protocol of the library: QMX -> none"}},
    {"kind of a structure",
     {{"<meta name=\"item\">", "<meta name=\"item\" kind=\"union\">"}},
     {"meta-kind orders.items[]: kind of item: structure -> union (2 ways)"}},
    {"one table attribute",
     {{"ListNum=1024", "ListNum=2048"}},
     {"table-attribute orders: attribute ListNum of orders: 1024 -> 2048"}},
    {"table attributes removed",
     {{" customattr=\"TableType=LIST;ListNum=1024\"", ""}},
     {"table-attribute orders: attribute TableType of orders: LIST -> none; needs 1",
      "table-attribute orders: attribute ListNum of orders: 1024 -> none; needs 0"}},
    {"table attributes that do not split",
     {{"TableType=LIST;ListNum=1024", "list"}},
     {"table-attribute orders: attribute of orders: TableType=LIST;ListNum=1024 -> list"}},
    {"table attributes in another order",
     {{"TableType=LIST;ListNum=1024", "ListNum=1024;TableType=LIST"}},
     {"table-attribute orders: attribute of orders: TableType=LIST;ListNum=1024 -> ListNum=1024;TableType=LIST"}},
    {"type and version",
     {{"<entry name=\"uid\" id=\"1\" type=\"uint32\"/>", "<entry name=\"uid\" id=\"1\" type=\"uint64\" version=\"6\"/>"}},
     {"entry-type orders.uid: type of uid: uint32 -> uint64", "entry-version orders.uid: version of uid: 1 -> 6"}},
    {"size", {{"size=\"32\"", "size=\"64\""}}, {"entry-size orders.items[].sku: size of sku: 32 -> 64 (2 ways)"}},
    {"type that has a size",
     {{"type=\"int64\"", "type=\"bytes\" size=\"8\""}},
     {"entry-type orders.items[].price: type of price: int64 -> bytes(8) (2 ways)"}},
    {"count", {{"count=\"100\"", "count=\"200\""}}, {"entry-count orders.items: count of items: 100 -> 200"}},
    {"refer removed", {{" refer=\"n_items\"", ""}}, {"entry-refer orders.items: refer of items: n_items -> none"}},
    {"customattr2",
     {{"id=\"2\" type=\"uint32\"", "id=\"2\" type=\"uint32\" customattr2=\"sort=1\""}},
     {"entry-customattr2 orders.zone: customattr2 of zone: none -> sort=1"}},
    {"customattr2 that is empty",
     {{"id=\"2\" type=\"uint32\"", "id=\"2\" type=\"uint32\" customattr2=\"\""}},
     {"entry-customattr2 orders.zone: customattr2 of zone: none -> \"\""}},
    {"sort fields, with the type of the table",
     {{"TableType=LIST", "TableType=SORTLIST"},
      {"id=\"2\" type=\"uint32\"", "id=\"2\" type=\"uint32\" customattr2=\"sort=1\""},
      {"<primarykey", "<entry name=\"at\" type=\"int64\" customattr2=\"sort=2\"/><primarykey"}},
     {"table-attribute orders: attribute TableType of orders: LIST -> SORTLIST; needs 1 2",
      "entry-customattr2 orders.zone: customattr2 of zone: none -> sort=1; needs 0 2",
      "entry-added orders.at: field at added; needs 0 1"}},
    {"id", {{"name=\"gift\" id=\"5\"", "name=\"gift\" id=\"6\""}}, {"entry-id orders.gift: id of gift: 5 -> 6"}},
    {"renamed with all references",
     {{"name=\"n_items\"", "name=\"number\""}, {"refer=\"n_items\"", "refer=\"number\""}},
     {"entry-renamed orders.n_items: field n_items renamed to number"}},
    {"renamed key field",
     {{"name=\"zone\"", "name=\"area\""}, {"\"uid zone\"", "\"uid area\""}, {"entry=\"zone\"", "entry=\"area\""}},
     {"entry-renamed orders.zone: field zone renamed to area"}},
    {"removed with all references",
     {{"    <entry name=\"n_items\" id=\"3\" type=\"uint32\"/>\n", ""}, {" refer=\"n_items\"", ""}},
     {"entry-removed orders.n_items: field n_items removed"}},
    {"removed key field",
     {{"    <entry name=\"zone\" id=\"2\" type=\"uint32\"/>\n", ""},
      {"\"uid zone\"", "\"uid\""},
      {"<column entry=\"zone\" desc=\"true\"/>", ""}},
     {"entry-removed orders.zone: field zone removed"}},
    {"added at the end",
     {{"<primarykey", "<entry name=\"note\" type=\"string\" size=\"9\" version=\"6\"/><primarykey"}},
     {"entry-added orders.note: field note added"}},
    {"two fields swapped",
     {{"<entry name=\"uid\" id=\"1\" type=\"uint32\"/>\n    <entry name=\"zone\" id=\"2\" type=\"uint32\"/>",
       "<entry name=\"zone\" id=\"2\" type=\"uint32\"/>\n    <entry name=\"uid\" id=\"1\" type=\"uint32\"/>"}},
     {"entry-moved orders.zone: field zone moved to the front"}},
    {"first field moved to the end",
     {{"    <entry name=\"uid\" id=\"1\" type=\"uint32\"/>\n", ""},
      {"<primarykey", "<entry name=\"uid\" id=\"1\" type=\"uint32\"/><primarykey"}},
     {"entry-moved orders.uid: field uid moved after gift"}},
    {"names of two fields swapped, ids kept",
     {{"name=\"uid\" id=\"1\"", "name=\"x\" id=\"1\""},
      {"name=\"zone\" id=\"2\"", "name=\"uid\" id=\"2\""},
      {"name=\"x\" id=\"1\"", "name=\"zone\" id=\"1\""},
      {"entries=\"uid zone\"", "entries=\"zone uid\""}},
     {"entry-moved orders.zone: field zone moved to the front", "entry-id orders.zone: id of zone: 2 -> 1",
      "entry-id orders.uid: id of uid: 1 -> 2", "primary-key orders: primary key of orders: uid zone -> zone uid"}},
    {"key gets a new field",
     {{"<primarykey entries=\"uid zone\"/>", "<entry name=\"day\" type=\"uint32\"/><primarykey entries=\"uid zone day\"/>"}},
     {"entry-added orders.day: field day added", "primary-key orders: primary key of orders: uid zone -> uid zone day; needs 0"}},
    {"splittable key removed",
     {{"<splittablekey entries=\"uid\"/>", ""}},
     {"splittable-key orders: splittable key of orders: uid -> none"}},
    {"index removed",
     {{"<index name=\"by_uid\"><column entry=\"uid\"/></index>", ""}},
     {"index-removed orders: index by_uid removed"}},
    {"index of a new field",
     {{"<primarykey", "<entry name=\"day\" type=\"uint32\"/><index name=\"by_day\"><column entry=\"day\"/></index><primarykey"}},
     {"entry-added orders.day: field day added", "index-added orders: index by_day added; needs 0"}},
    {"direction of a column",
     {{" desc=\"true\"", ""}},
     {"index-columns orders: columns of index by_zone: zone desc, uid -> zone, uid"}},
    {"indexes swapped",
     {{"\"by_zone\"", "\"x\""}, {"\"by_uid\"", "\"by_zone\""}, {"\"x\"", "\"by_uid\""}},
     {"index-moved orders: index by_uid moved to the front",
      "index-columns orders: columns of index by_uid: uid -> zone desc, uid",
      "index-columns orders: columns of index by_zone: zone desc, uid -> uid"}},
    {"another structure, which is added too",
     {{"<meta name=\"orders\"",
       "<meta name=\"box\"><entry name=\"in\" type=\"case\"/></meta><meta name=\"case\"><entry name=\"x\" "
       "type=\"int8\"/></meta><meta name=\"orders\""},
      {"name=\"gift\" id=\"5\" type=\"item\"", "name=\"gift\" id=\"5\" type=\"box\""}},
     {"entry-meta orders.gift: structure of gift: item -> box"}},
    {"a renamed structure",
     {{"<meta name=\"item\">", "<meta name=\"itm\">"},
      {"type=\"item\" count", "type=\"itm\" count"},
      {"type=\"item\"/>", "type=\"itm\"/>"}},
     {"meta-renamed orders.items[]: structure item renamed to itm (2 ways)"}},
    {"a renamed structure with another change",
     {{"<meta name=\"item\">", "<meta name=\"itm\">"},
      {"type=\"int64\"", "type=\"double\""},
      {"type=\"item\" count", "type=\"itm\" count"},
      {"type=\"item\"/>", "type=\"itm\"/>"}},
     {"meta-renamed orders.items[]: structure item renamed to itm (2 ways)",
      "entry-type orders.items[].price: type of price: int64 -> double (2 ways)"}},
    {"a renamed structure that one field has no longer",
     {{"<meta name=\"item\">", "<meta name=\"box\"><entry name=\"x\" type=\"int8\"/></meta><meta name=\"itm\">"},
      {"type=\"item\" count", "type=\"itm\" count"},
      {"type=\"item\"/>", "type=\"box\"/>"}},
     {"entry-meta orders.gift: structure of gift: item -> box",
      "meta-renamed orders.items[]: structure item renamed to itm (2 ways)"}},
    {"a structure that the library keeps",
     {{"<meta name=\"orders\"",
       "<meta name=\"itm\"><entry name=\"sku\" id=\"1\" type=\"string\" size=\"32\"/><entry name=\"price\" id=\"2\" "
       "type=\"int64\"/></meta><meta name=\"orders\""},
      {"type=\"item\" count", "type=\"itm\" count"},
      {"type=\"item\"/>", "type=\"itm\"/>"}},
     {"entry-meta orders.items: structure of items: item -> itm", "entry-meta orders.gift: structure of gift: item -> itm"}},
    {"a structure instead of a number",
     {{"id=\"2\" type=\"uint32\"", "id=\"2\" type=\"item\""}},
     {"entry-type orders.zone: type of zone: uint32 -> item"}},
    {"counted by a new field",
     {{"<entry name=\"n_items\"", "<entry name=\"n\" type=\"int8\"/><entry name=\"n_items\""},
      {"refer=\"n_items\"", "refer=\"n\""}},
     {"entry-added orders.n: field n added", "entry-refer orders.items: refer of items: n_items -> n; needs 0"}},
    {"table that is not compared",
     {{"</metalib>", "<meta name=\"users\"><entry name=\"uid\" type=\"int8\"/><primarykey entries=\"uid\"/></meta></metalib>"}},
     {}},
};

void PrintTo(const Mutation& mutation, std::ostream* out) { *out << mutation.label; }

class MutationTest : public testing::TestWithParam<Mutation> {};

TEST_P(MutationTest, HasExpectedEdits) {
  const auto& [label, replacements, edits] = GetParam();
  std::string changed = kOld;
  for (const auto& [from, to] : replacements) changed = With(changed, from, to);
  const korvel::Source old_source = ReadSource("old.xml", kOld);
  const korvel::Source new_source = ReadSource("new.xml", changed);
  const Difference difference(old_source, new_source, "orders");
  EXPECT_EQ(Lines(difference), edits) << label;
  EXPECT_EQ(difference.Apply(std::vector<bool>(edits.size(), true)), ModelOf(new_source, "orders"));
}

INSTANTIATE_TEST_SUITE_P(All, MutationTest, testing::ValuesIn(kMutations), [](const auto& mutation) {
  std::string name = mutation.param.label;
  for (char& c : name) c = std::isalnum(static_cast<unsigned char>(c)) != 0 ? c : '_';
  return name;
});

std::vector<std::string> EditsOf(const std::string& old_text, const std::string& new_text, const std::string& table) {
  return Lines(Difference(ReadSource("old.xml", old_text), ReadSource("new.xml", new_text), table));
}

std::string TableOf(const std::string& protocol, const std::string& entries) {
  return "<metalib name=\"m\" version=\"1\" protocol=\"" + protocol + "\"><meta name=\"t\">" + entries + "</meta></metalib>";
}

constexpr char kAB[] = "<entry name=\"a\" id=\"1\" type=\"int8\"/><entry name=\"b\" id=\"2\" type=\"int32\"/>";
constexpr char kBA[] = "<entry name=\"b\" id=\"1\" type=\"int8\"/><entry name=\"a\" id=\"2\" type=\"int32\"/>";

// Fields are identified by name in the record format, and by id in TLV.
TEST(Difference, EntriesOfTlvLibrariesAreIdentifiedById) {
  EXPECT_THAT(
      EditsOf(TableOf("TLV", kAB), TableOf("TLV", kBA), "t"),
      ElementsAre("entry-renamed t.a: field a renamed to b; needs 1", "entry-renamed t.b: field b renamed to a; needs 0"));
  EXPECT_THAT(EditsOf(TableOf("QMX", kAB), TableOf("QMX", kBA), "t"),
              ElementsAre("entry-moved t.b: field b moved to the front", "entry-id t.b: id of b: 2 -> 1",
                          "entry-type t.b: type of b: int32 -> int8", "entry-id t.a: id of a: 1 -> 2",
                          "entry-type t.a: type of a: int8 -> int32"));
}

// A name that is freed and used again never occurs twice.
TEST(Difference, AddedFieldNeedsUnusedName) {
  EXPECT_THAT(EditsOf(TableOf("TLV", kAB),
                      TableOf("TLV", With(kAB, "\"a\"", "\"z\"") + "<entry name=\"a\" id=\"9\" type=\"bool\"/>"), "t"),
              ElementsAre("entry-renamed t.a: field a renamed to z", "entry-added t.a: field a added; needs 0"));
}

TEST(Difference, LibraryBecomesTlvTogetherWithItsIds) {
  const std::string bare = With(With(kAB, " id=\"1\"", ""), " id=\"2\"", "");
  EXPECT_THAT(EditsOf(TableOf("QMX", bare), TableOf("TLV", kAB), "t"),
              ElementsAre("library-protocol : protocol of the library: QMX -> TLV; needs 1 2", "entry-id t.a: id of a: none -> 1",
                          "entry-id t.b: id of b: none -> 2"));
  EXPECT_THAT(EditsOf(TableOf("TLV", kAB), TableOf("QMX", bare), "t"),
              ElementsAre("library-protocol : protocol of the library: TLV -> QMX", "entry-id t.a: id of a: 1 -> none; needs 0",
                          "entry-id t.b: id of b: 2 -> none; needs 0"));
}

// Each structure has two fields of the structure below, 120 levels deep: too many paths to visit.
TEST(Difference, SharedStructuresAreListedOnceWithTheirPaths) {
  std::string text = "<metalib name=\"m\" version=\"1\">";
  for (int i = 0; i < 40; ++i) {
    const std::string below = i == 0 ? "int8" : "s" + std::to_string(i - 1);
    text += "<meta name=\"s" + std::to_string(i) + "\"><entry name=\"a\" type=\"" + below + "\"/><entry name=\"b\" type=\"" +
            below + "\"/></meta>";
  }
  text += "</metalib>";
  const korvel::Source old_source = ReadSource("old.xml", text);
  const korvel::Source new_source = ReadSource("new.xml", With(text, "\"a\" type=\"int8\"", "\"a\" type=\"uint8\""));
  const Difference three(old_source, new_source, "s2");
  ASSERT_EQ(three.edits().size(), 1u);
  EXPECT_THAT(three.edits()[0].paths, ElementsAre("s2.a.a.a", "s2.a.b.a", "s2.b.a.a", "s2.b.b.a"));
  EXPECT_EQ(three.edits()[0].path_count, 4u);
  const Difference many(old_source, new_source, "s39");
  ASSERT_EQ(many.edits().size(), 1u);
  EXPECT_EQ(many.edits()[0].paths.size(), korvel::kMaxPaths);
  EXPECT_EQ(many.edits()[0].path_count, std::size_t{1} << 32);
}

// An image may contain names that no schema file can: they are matched in order.
TEST(Difference, RepeatedNamesAreMatchedInOrder) {
  korvel::Model old_model{
      "lib", 1, qmx::Protocol::kQmx, {{.name = "t", .entries = {{"x", "int8"}, {"x", "int16"}, {"x", "int32"}}}}};
  korvel::Model new_model = old_model;
  new_model.metas[0].entries[1].type = "uint16";
  new_model.metas[0].entries.pop_back();
  const Difference difference(SourceOf("old", old_model), SourceOf("new", new_model), "t");
  EXPECT_THAT(Lines(difference), ElementsAre("entry-type t.x: type of x: int16 -> uint16", "entry-removed t.x: field x removed"));
  EXPECT_EQ(difference.Apply({true, true}), new_model);
  EXPECT_EQ(difference.Apply({false, false}), old_model);
}

class PartialChange : public testing::Test {
 protected:
  // The names of the fields of "t" after the edits with these descriptions.
  static std::string Fields(const Difference& difference, const std::vector<std::string>& descriptions) {
    std::vector<bool> chosen;
    for (const Edit& edit : difference.edits()) {
      chosen.push_back(std::ranges::find(descriptions, Describe(edit)) != descriptions.end());
    }
    EXPECT_EQ(std::ranges::count(chosen, true), std::ssize(descriptions));
    std::string names;
    const korvel::Model model = difference.Apply(chosen);
    for (const auto& entry : model.metas.front().entries) names += entry.name;
    return names;
  }

  static Difference Between(const std::string& old_names, const std::string& new_names) {
    const auto source = [](const std::string& names) {
      korvel::Model model{"lib", 1, qmx::Protocol::kQmx, {{.name = "t"}}};
      for (const char name : names) model.metas[0].entries.push_back({.name = std::string(1, name), .type = "int8"});
      return SourceOf("made", model);
    };
    return {source(old_names), source(new_names), "t"};
  }
};

TEST_F(PartialChange, AddsFieldsBeforeNextUnmovedField) {
  const Difference difference = Between("abcd", "axbyd");
  EXPECT_EQ(Fields(difference, {"field x added"}), "axbcd");
  EXPECT_EQ(Fields(difference, {"field y added"}), "abcyd");
  EXPECT_EQ(Fields(difference, {"field c removed"}), "abd");
}

TEST_F(PartialChange, AddsTrailingFieldAtTheEnd) {
  EXPECT_EQ(Fields(Between("abc", "abz"), {"field z added"}), "abcz");
  EXPECT_EQ(Fields(Between("abcd", "bcdaz"), {"field z added"}), "abcdz");
}

TEST_F(PartialChange, MovesFieldsOneByOne) {
  const Difference difference = Between("abcdefg", "gabcfde");
  EXPECT_EQ(Fields(difference, {"field g moved to the front"}), "gabcdef");
  EXPECT_EQ(Fields(difference, {"field f moved after c"}), "abcfdeg");
}

}  // namespace
}  // namespace report_test
