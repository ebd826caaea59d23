// Which fields count as renamed, and which as removed and added.
#include "analysis/diff/renamed_entries.h"

#include <gmock/gmock.h>

#include <string>

#include "models.h"

namespace report_test {
namespace {

using korvel::EntryModel;
using testing::ElementsAre;
using testing::IsEmpty;

using Entries = std::vector<EntryModel>;

Entries Named(const std::vector<std::string>& names) {
  Entries entries;
  for (const std::string& name : names) entries.push_back({.name = name, .type = "int32"});
  return entries;
}

korvel::Difference Between(const Entries& old_entries, const Entries& new_entries) {
  const auto source = [](const Entries& entries) {
    return SourceOf("made", {"lib", 1, qmx::Protocol::kQmx, {{.name = "t", .entries = entries}}});
  };
  const korvel::Difference difference(source(old_entries), source(new_entries), "t");
  EXPECT_EQ(difference.Apply(std::vector<bool>(difference.edits().size(), true)), difference.new_model());
  return difference;
}

std::vector<std::string> Edits(const Entries& old_entries, const Entries& new_entries) {
  std::vector<std::string> texts;
  const korvel::Difference difference = Between(old_entries, new_entries);
  for (const korvel::Edit& edit : difference.edits()) texts.push_back(Describe(edit));
  return texts;
}

std::vector<std::string> Edits(const std::vector<std::string>& old_names, const std::vector<std::string>& new_names) {
  return Edits(Named(old_names), Named(new_names));
}

TEST(RenamedEntries, MisspelledFieldIsRenamed) {
  EXPECT_THAT(Edits({"key", "field_07", "last"}, {"key", "feild_07", "last"}), ElementsAre("field field_07 renamed to feild_07"));
  EXPECT_THAT(Edits({"field_07"}, {"feild_07"}), ElementsAre("field field_07 renamed to feild_07"));
}

TEST(RenamedEntries, OtherFieldAtSamePlaceIsAdded) {
  EXPECT_THAT(Edits({"key", "zone", "last"}, {"key", "area", "last"}), ElementsAre("field zone removed", "field area added"));
  EXPECT_THAT(Edits({"key", "price_1", "last"}, {"key", "price_2", "last"}),
              ElementsAre("field price_1 removed", "field price_2 added"));
}

TEST(RenamedEntries, FieldAtAnotherPlaceIsAdded) {
  EXPECT_THAT(Edits({"amount", "key", "last"}, {"key", "last", "amuont"}),
              ElementsAre("field amount removed", "field amuont added"));
}

// Anything but the name of the field and its counter.
TEST(RenamedEntries, FieldWithAnotherAttributeIsAdded) {
  const EntryModel before{.name = "amount", .type = "string", .size = 9};
  const auto edits_of = [&](auto change) {
    EntryModel after = before;
    after.name = "amuont";
    change(after);
    return Edits({before}, {after});
  };
  const auto is_added = ElementsAre("field amount removed", "field amuont added");
  EXPECT_THAT(edits_of([](EntryModel&) {}), ElementsAre("field amount renamed to amuont"));
  EXPECT_THAT(edits_of([](EntryModel& entry) { entry.type = "bytes"; }), is_added);
  EXPECT_THAT(edits_of([](EntryModel& entry) { entry.size = 10; }), is_added);
  EXPECT_THAT(edits_of([](EntryModel& entry) { entry.id = 3; }), is_added);
  EXPECT_THAT(edits_of([](EntryModel& entry) { entry.version = 2; }), is_added);
  EXPECT_THAT(edits_of([](EntryModel& entry) { entry.count = 2; }), is_added);
  EXPECT_THAT(edits_of([](EntryModel& entry) { entry.customattr2 = "sort=1"; }), is_added);
}

TEST(RenamedEntries, FieldWithAndWithoutCounterDiffer) {
  const EntryModel counter{.name = "n", .type = "int32"};
  EXPECT_THAT(Edits({counter, {.name = "items", .type = "int8", .count = 4, .refer = "n"}},
                    {counter, {.name = "itmes", .type = "int8", .count = 4}}),
              ElementsAre("field items removed", "field itmes added"));
}

TEST(RenamedEntries, RenamedCounterStaysCounter) {
  EXPECT_THAT(Edits({{.name = "number", .type = "int32"}, {.name = "items", .type = "int8", .count = 4, .refer = "number"}},
                    {{.name = "nubmer", .type = "int32"}, {.name = "itmes", .type = "int8", .count = 4, .refer = "nubmer"}}),
              ElementsAre("field number renamed to nubmer", "field items renamed to itmes"));
}

TEST(RenamedEntries, SeveralFieldsInARow) {
  EXPECT_THAT(Edits({"key", "field_a1", "field_a2", "field_a3"}, {"key", "feild_a1", "feild_a2", "feild_a3"}),
              ElementsAre("field field_a1 renamed to feild_a1", "field field_a2 renamed to feild_a2",
                          "field field_a3 renamed to feild_a3"));
}

TEST(RenamedEntries, BesideAddedAndRemovedFields) {
  EXPECT_THAT(Edits({"key", "zone", "amount", "last"}, {"key", "amuont", "extra", "last"}),
              ElementsAre("field zone removed", "field amount renamed to amuont", "field extra added"));
  EXPECT_THAT(Edits({"key", "amount"}, {"key", "extra", "amuont"}),
              ElementsAre("field extra added", "field amount renamed to amuont"));
}

// Counted from either end of the fields between two that stay.
TEST(RenamedEntries, BehindManyAddedFields) {
  std::vector<std::string> names{"key"};
  for (int i = 0; i < 50; ++i) names.push_back("extra_" + std::to_string(i));
  names.insert(names.end(), {"amuont", "last"});
  EXPECT_THAT(Edits({"key", "amount", "last"}, names), testing::Contains("field amount renamed to amuont"));
}

TEST(RenamedEntries, MovedNeighbourIsNoObstacle) {
  EXPECT_THAT(Edits({"a", "b", "amount", "c", "d"}, {"a", "amuont", "c", "d", "b"}),
              ElementsAre("field amount renamed to amuont", "field b moved after d"));
}

TEST(RenamedEntries, RenamedFieldsMayChangePlaces) {
  EXPECT_THAT(
      Edits({"key", "amount", "customer"}, {"key", "custmer", "amuont"}),
      ElementsAre("field customer moved after key", "field customer renamed to custmer", "field amount renamed to amuont"));
}

TEST(RenamedEntries, NearestNamesArePartners) {
  EXPECT_THAT(Edits({"key", "wordbook", "workbook"}, {"key", "workbok"}),
              ElementsAre("field wordbook removed", "field workbook renamed to workbok"));
}

// The name of a removed field.
TEST(RenamedEntries, NameOfAnotherFieldIsThatField) {
  EXPECT_THAT(Edits({"key", "amount", "amuont"}, {"key", "amuont"}), ElementsAre("field amount removed"));
}

TEST(RenamedEntries, SwappedNamesAreMovedFields) {
  EXPECT_THAT(Edits({"key", "amount", "amuont"}, {"key", "amuont", "amount"}), testing::SizeIs(1));
}

// A name is free once its field has lost it.
TEST(RenamedEntries, ChainOfNames) {
  Entries before = Named({"key", "amount", "amounts"});
  before[2].id = 7;
  Entries after = Named({"key", "amounts", "amountss"});
  after[2].id = 7;
  EXPECT_THAT(Edits(before, after), ElementsAre("field amount removed", "id of amounts: 7 -> none", "field amountss added"));
}

TEST(RenamedEntries, HundredsOfFields) {
  std::vector<std::string> before;
  std::vector<std::string> after;
  for (int i = 0; i < 800; ++i) {
    before.push_back("field_" + std::to_string(i));
    after.push_back("feild_" + std::to_string(i));
  }
  const std::vector<std::string> edits = Edits(before, after);
  ASSERT_EQ(edits.size(), 800u);
  for (std::size_t i = 0; i < 800; ++i) EXPECT_EQ(edits[i], "field " + before[i] + " renamed to " + after[i]);
}

TEST(RenamedEntries, LongNames) {
  std::vector<std::string> before;
  std::vector<std::string> after;
  for (int i = 0; i < 50; ++i) {
    const std::string name = std::string(20000, 'x') + std::to_string(i);
    before.push_back("ab" + name);
    after.push_back("ba" + name);
  }
  EXPECT_EQ(Edits(before, after).size(), 50u);
}

TEST(RenamedEntries, NothingToPair) {
  std::vector<korvel::Slot> partners{0, korvel::kNoSlot};
  PairRenamed(Named({"key"}), Named({"key", "kye"}), partners);
  EXPECT_THAT(partners, ElementsAre(0, korvel::kNoSlot));
  partners.clear();
  PairRenamed(Named({"key"}), {}, partners);
  EXPECT_THAT(partners, IsEmpty());
}

}  // namespace
}  // namespace report_test
