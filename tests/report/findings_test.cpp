// Labeled changes of a schema, and the exact findings of each.
#include "analysis/findings/findings.h"

#include <gmock/gmock.h>

#include "change_check.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::Changes;
using korvel::EditStatus;
using korvel::Finding;
using korvel::PartialSettings;
using korvel::Source;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr char kMall[] = R"(<metalib name="mall" version="5" protocol="QMX">
  <meta name="price"><entry name="amount" type="int64"/><entry name="unit" type="int32"/></meta>
  <meta name="item"><entry name="sku" type="string" size="32"/><entry name="cost" type="price"/></meta>
  <meta name="orders">
    <entry name="uid" type="uint32"/>
    <entry name="zone" type="uint32"/>
    <entry name="n_items" type="uint32"/>
    <entry name="items" type="item" count="10" refer="n_items"/>
    <entry name="gift" type="item"/>
    <entry name="tags" type="int16" count="4"/>
    <primarykey entries="uid"/>
    <index name="by_zone"><column entry="zone"/></index>
  </meta>
</metalib>
)";

// Replaces several pieces of a text, one after the other: old, new, old, new.
std::string With(std::string text, const std::vector<std::string>& pieces) {
  for (std::size_t i = 0; i + 1 < pieces.size(); i += 2) {
    const std::size_t at = text.find(pieces[i]);
    if (at == std::string::npos) {
      ADD_FAILURE() << "not found: " << pieces[i];
      continue;
    }
    text.replace(at, pieces[i].size(), pieces[i + 1]);
  }
  return text;
}

constexpr char kEnd[] = "    <primarykey entries=\"uid\"/>";

// A field added at the end.
std::vector<std::string> Add(const std::string& attributes) { return {kEnd, "    <entry " + attributes + "/>\n" + kEnd}; }

std::vector<std::string> operator+(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

std::string StatusWord(EditStatus status) {
  constexpr const char* kWords[] = {"allowed", "refused", "blocked", "not checked"};
  return kWords[static_cast<std::size_t>(status)];
}

// "refused type of uid: uint32 -> uint64" for each edit, then "primary-key.size at orders.uid" for each finding.
std::vector<std::string> ToText(const Changes& changes) {
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < changes.edits.size(); ++i) {
    lines.push_back(StatusWord(changes.status[i]) + " " + Describe(changes.edits[i]));
  }
  for (const Finding& finding : changes.findings) lines.push_back(finding.verdict.rule + " at " + finding.path);
  return lines;
}

struct Mutation {
  const char* name;
  std::vector<std::string> pieces;
  std::vector<std::string> expected;
};

const std::vector<Mutation>& Mutations() {
  static const std::vector<Mutation> kMutations = {
      {"GrowCountWithRefer", {"count=\"10\"", "count=\"20\""}, {"allowed count of items: 10 -> 20"}},
      {"ShrinkCountWithRefer",
       {"count=\"10\"", "count=\"9\""},
       {"refused count of items: 10 -> 9", "field.count-refer at orders.items"}},
      {"GrowFixedCount", {"count=\"4\"", "count=\"5\""}, {"refused count of tags: 4 -> 5", "field.count at orders.tags"}},
      {"WiderField",
       {"name=\"zone\" type=\"uint32\"", "name=\"zone\" type=\"uint64\""},
       {"refused type of zone: uint32 -> uint64", "field.type at orders.zone"}},
      {"WiderString", {"size=\"32\"", "size=\"64\""}, {"allowed size of sku: 32 -> 64"}},
      {"NarrowerString", {"size=\"32\"", "size=\"16\""}, {"refused size of sku: 32 -> 16", "field.size at orders.items[].sku"}},
      {"AddField", Add(R"(name="note" type="int32" version="6")"), {"allowed field note added"}},
      {"AddFieldWithOldVersion",
       Add(R"(name="note" type="int32" version="5")"),
       {"refused field note added", "field.new-version at orders.note"}},
      {"AddFieldWithBadName",
       Add(R"(name="9note" type="int32" version="6")"),
       {"refused field 9note added", "field-name.invalid at orders.9note"}},
      // Another rule reports the edit first; the bad name is reported as well.
      {"AddFieldWithBadNameAndOldVersion",
       Add(R"(name="9note" type="int32" version="5")"),
       {"refused field 9note added", "field.new-version at orders.9note", "field-name.invalid at orders.9note"}},
      {"TwoRefusedAndTwoAllowed",
       std::vector<std::string>{"version=\"5\" protocol", "version=\"6\" protocol", "count=\"4\"", "count=\"5\"",
                                "name=\"uid\" type=\"uint32\"", "name=\"uid\" type=\"uint64\""} +
           Add(R"(name="note" type="int32" version="6")"),
       {"allowed version of the library: 5 -> 6", "refused type of uid: uint32 -> uint64", "refused count of tags: 4 -> 5",
        "allowed field note added", "primary-key.size at orders.uid", "field.count at orders.tags"}},
      // There are two paths to the structure, but one finding.
      {"SharedStructure",
       {"name=\"unit\" type=\"int32\"", "name=\"unit\" type=\"float\""},
       {"refused type of unit: int32 -> float", "field.type at orders.items[].cost.unit"}},
      {"IndexOfANewField",
       Add(R"(name="note" type="int32" version="6")") +
           std::vector<std::string>{"</index>", "</index><index name=\"by_note\"><column entry=\"note\"/></index>"},
       {"allowed field note added", "refused index by_note added", "index.count at orders"}},
      {"KeyOfARefusedField",
       Add(R"(name="note" type="int32" version="5")") +
           std::vector<std::string>{"<column entry=\"zone\"/>", "<column entry=\"note\"/>"},
       {"refused field note added", "refused columns of index by_zone: zone -> note", "field.new-version at orders.note",
        "index.columns at orders"}},
  };
  return kMutations;
}

void PrintTo(const Mutation& mutation, std::ostream* out) { *out << mutation.name; }

class RefusedMutationTest : public testing::TestWithParam<Mutation> {};

TEST_P(RefusedMutationTest, HasExpectedFindings) {
  const Source old_source = ReadSource("old.xml", kMall);
  const Source new_source = ReadSource("new.xml", With(kMall, GetParam().pieces));
  const ChangeCheck check = MakeCheck(old_source, new_source, "orders");
  const Changes changes = check.Find();
  EXPECT_THAT(ToText(changes), ElementsAreArray(GetParam().expected));
  ExpectLaws(check, changes);
}

std::string NameOf(const testing::TestParamInfo<Mutation>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(All, RefusedMutationTest, testing::ValuesIn(Mutations()), NameOf);

// --- Other changes ---

constexpr char kRanking[] = R"(<metalib name="game" version="5" protocol="TLV">
  <meta name="ranking" customattr="TableType=SORTLIST;ListNum=10">
    <entry name="uid" id="1" type="uint64"/>
    <entry name="score" id="2" type="uint32" customattr2="sort=1"/>
    <entry name="name" id="3" type="string" size="16"/>
    <entry name="level" id="4" type="uint32"/>
    <primarykey entries="uid"/>
  </meta>
</metalib>
)";

// An unsorted list that becomes sorted is refused, and so are two first sort fields; sorting by another field is not.
TEST(FindChanges, AllowsEditsThatCompensateForEachOther) {
  const Source old_source = ReadSource("old.xml", kRanking);
  const Source new_source = ReadSource("new.xml", With(kRanking, {" customattr2=\"sort=1\"", "", "size=\"16\"", "size=\"8\"",
                                                                  "id=\"4\"", "id=\"4\" customattr2=\"sort=1\""}));
  const ChangeCheck check = MakeCheck(old_source, new_source, "ranking");
  const Changes changes = check.Find();
  EXPECT_THAT(ToText(changes), ElementsAre("allowed customattr2 of score: sort=1 -> none", "refused size of name: 16 -> 8",
                                           "allowed customattr2 of level: none -> sort=1", "field.size at ranking.name"));
  ExpectLaws(check, changes);
}

// The length of a field is size times count: either may grow a little, but not both.
TEST(FindChanges, ReportsSmallestRefusedCombination) {
  const std::string old_text = With(kMall, {"name=\"tags\" type=\"int16\" count=\"4\"",
                                            "name=\"tags\" type=\"bytes\" size=\"1000\" count=\"100\" refer=\"n_items\""});
  const Source old_source = ReadSource("old.xml", old_text);
  const Source new_source = ReadSource(
      "new.xml", With(old_text, {"size=\"1000\" count=\"100\"", "size=\"1200\" count=\"120\"", "count=\"10\"", "count=\"11\""}));
  PartialSettings given;
  given.server_version = "3.0.0";
  const ChangeCheck check = MakeCheck(old_source, new_source, "orders", given);
  const Changes changes = check.Find();
  EXPECT_THAT(ToText(changes), ElementsAre("allowed count of items: 10 -> 11", "allowed size of tags: 1000 -> 1200",
                                           "refused count of tags: 100 -> 120", "length.limit at orders.tags"));
  ASSERT_EQ(changes.findings.size(), 1u);
  EXPECT_THAT(changes.findings.front().edits, ElementsAre(1, 2));
  ExpectLaws(check, changes);
}

TEST(FindChanges, PreexistingFindingIsLocatedAtTheName) {
  const std::string old_text = With(kMall, {"name=\"gift\"", "name=\"a gift\"", "name=\"tags\"", "name=\"9tags\""});
  const Source old_source = ReadSource("old.xml", old_text);
  const Source new_source = ReadSource("new.xml", With(old_text, {"count=\"10\"", "count=\"9\"", "\"9tags\"", "\"tags\""}));
  const ChangeCheck check = MakeCheck(old_source, new_source, "orders");
  const Changes changes = check.Find();
  EXPECT_THAT(ToText(changes),
              ElementsAre("refused count of items: 10 -> 9", "refused field 9tags removed", "refused field tags added",
                          "field-name.invalid at orders.a gift", "field.count-refer at orders.items",
                          "field.missing at orders.9tags", "field.new-version at orders.tags"));
  const Finding& preexisting = changes.findings.front();
  EXPECT_THAT(preexisting.edits, IsEmpty());
  EXPECT_EQ(preexisting.new_location.attribute, "name");
  EXPECT_EQ(preexisting.new_location.element.item, 4u);
  EXPECT_EQ(preexisting.old_location.source, &old_source);
  EXPECT_TRUE(changes.allowed_together.Refused());
  ExpectLaws(check, changes);
}

constexpr char kLarge[] = R"(<metalib name="shop" version="5" protocol="TLV">
  <meta name="goods">
    <entry name="uid" id="1" type="uint64"/>
    <entry name="text" id="2" type="string" size="9"/>
    <entry name="photo" id="3" type="bytes" size="200000"/>
    <entry name="film" id="4" type="bytes" size="200000"/>
    <primarykey entries="uid"/>
  </meta>
</metalib>
)";

// The check of lengths reports all fields that are too large at once, in order.
TEST(FindChanges, OversizedFieldsMaySwapPositions) {
  const std::string changed =
      With(kLarge, {"\"photo\" id=\"3\"", "\"film\" id=\"4\"", "\"film\" id=\"4\" type=\"bytes\" size=\"200000\"/>\n    <p",
                    "\"photo\" id=\"3\" type=\"bytes\" size=\"200000\"/>\n    <p"});
  const Source old_source = ReadSource("old.xml", kLarge);
  const Source moved = ReadSource("new.xml", changed);
  PartialSettings given;
  given.server_version = "3.0.0";
  const ChangeCheck check = MakeCheck(old_source, moved, "goods", given);
  const Changes changes = check.Find();
  EXPECT_THAT(ToText(changes), ElementsAre("not checked field film moved after text", "length.limit at goods"));
  ExpectLaws(check, changes);

  const Source larger = ReadSource("new.xml", With(changed, {"size=\"9\"", "size=\"300000\""}));
  const ChangeCheck also_check = MakeCheck(old_source, larger, "goods", given);
  const Changes also = also_check.Find();
  EXPECT_THAT(ToText(also), ElementsAre("refused size of text: 9 -> 300000", "not checked field film moved after text",
                                        "length.limit at goods", "length.limit at goods.text"));
  ExpectLaws(also_check, also);
}

// The caret is below the part of the field that is wrong.
TEST(FindChanges, LocatesBadName) {
  const Source old_source = ReadSource("old.xml", kMall);
  const Source new_source = ReadSource("new.xml", With(kMall, Add(R"(name="9note" type="int32" version="6")")));
  const Changes changes = MakeCheck(old_source, new_source, "orders").Find();
  ASSERT_EQ(changes.findings.size(), 1u);
  EXPECT_EQ(changes.findings.front().new_location.attribute, "name");
  EXPECT_EQ(changes.findings.front().new_location.element.item, 6u);
}

TEST(FindChanges, StopsAtMaxFindings) {
  const Source old_source = ReadSource("old.xml", kMall);
  const Source new_source = ReadSource(
      "new.xml", With(kMall, {"count=\"10\"", "count=\"9\"", "count=\"4\"", "count=\"5\"", "size=\"32\"", "size=\"8\""}));
  const ChangeCheck check = MakeCheck(old_source, new_source, "orders");
  EXPECT_FALSE(check.Find(3).stopped);
  const Changes changes = check.Find(1);
  EXPECT_TRUE(changes.stopped);
  EXPECT_THAT(ToText(changes), ElementsAre("refused count of items: 10 -> 9", "not checked count of tags: 4 -> 5",
                                           "not checked size of sku: 32 -> 8", "field.count-refer at orders.items"));
  ExpectLaws(check, changes);
}

// An edit that needs a reported one is blocked by it, wherever the search stopped.
TEST(FindChanges, BlocksEditsOfAReportedFindingWhenStopped) {
  const Source old_source = ReadSource("old.xml", kMall);
  const Source new_source = ReadSource(
      "new.xml", With(With(kMall, Add(R"(name="9note" type="int32" version="6")")),
                      {"size=\"32\"", "size=\"8\"", "<column entry=\"zone\"/></index>",
                       "<column entry=\"zone\"/></index>\n    <index name=\"by_note\"><column entry=\"9note\"/></index>"}));
  const ChangeCheck check = MakeCheck(old_source, new_source, "orders");
  const Changes changes = check.Find(1);
  EXPECT_TRUE(changes.stopped);
  EXPECT_THAT(ToText(changes), ElementsAre("refused field 9note added", "blocked index by_note added",
                                           "not checked size of sku: 32 -> 8", "field-name.invalid at orders.9note"));
  ExpectLaws(check, changes);
}

TEST(FindChanges, FindingHasLocationsOfItsEdit) {
  const Source old_source = ReadSource("old.xml", kMall);
  const Source new_source = ReadSource("new.xml", With(kMall, {"count=\"10\"", "count=\"9\""}));
  const Finding finding = MakeCheck(old_source, new_source, "orders").Find().findings.at(0);
  EXPECT_EQ(finding.old_location.source, &old_source);
  EXPECT_EQ(finding.new_location.source, &new_source);
  EXPECT_EQ(finding.new_location.attribute, "count");
  EXPECT_EQ(finding.new_location.element.item, 3u);
}

TEST(FindRemovedTable, ReportsOneFindingAtTheLibrary) {
  const Source old_source = ReadSource("old.xml", kMall);
  const Source new_source = ReadSource("new.xml", "<metalib name=\"mall\" version=\"6\"/>");
  const Changes changes = MakeCheck(old_source, new_source, "orders").Find();
  EXPECT_THAT(ToText(changes), ElementsAre("library.table at orders"));
  const Finding& finding = changes.findings.front();
  EXPECT_EQ(finding.old_location.element.kind, qmx::ElementId::Kind::kMeta);
  EXPECT_EQ(finding.new_location.source, &new_source);
  EXPECT_EQ(finding.new_location.element.kind, qmx::ElementId::Kind::kMetalib);
  EXPECT_FALSE(changes.allowed_together.Refused());
}

}  // namespace
}  // namespace report_test
