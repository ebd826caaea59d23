// The comparison of sort attributes at the end of CheckListMetaInfo, with entries that may be missing, nameless or without
// attribute.

#include "rules/standalone/stand_in_test.h"

namespace standalone {
namespace {

constexpr char kRule[] = "CheckListMetaInfo";

// An entry with an attribute.
EntryFacts With(const std::string& name, const std::string& attr2) { return {.name = name, .attr2 = attr2}; }
EntryFacts Nameless(const std::string& attr2) { return {.attr2 = attr2}; }
EntryFacts Bare(const std::string& name) { return {.name = name}; }

const std::string kSeen = Info(kRule, "CheckListMetaInfo(mall%s) old_table_type:2,new_table_type:2");
const Outcome kPassed = {.log = {kSeen}};

Outcome Differs(int code, const std::string& text) { return {code, text, {kSeen, Error(kRule, text)}}; }

struct AttributeRow {
  const char* name;
  Entries old_entries;
  Entries new_entries;
  Outcome expected;
};

void PrintTo(const AttributeRow& row, std::ostream* out) { *out << row.name; }

class SortAttribute : public testing::TestWithParam<AttributeRow>, protected NewWorld {
 protected:
  SortAttribute() { old_.table = new_.table = {.result = 0, .type = 2, .number = 8, .sort_fields = 1}; }

  Outcome Compare() {
    return OutcomeOf(
        [&](ModifyTable& checker, auto log) { return checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), log, 0, 0); });
  }

  FakeLibrary old_{"old"};
  FakeLibrary new_{"new"};
};

TEST_P(SortAttribute, HasExpectedOutcome) {
  old_.AddMeta("mall%s", GetParam().old_entries);
  new_.AddMeta("mall%s", GetParam().new_entries);
  EXPECT_EQ(Compare(), GetParam().expected);
}

std::vector<AttributeRow> Rows() {
  const EntryFacts level = With("level", "sort=1"), other = With("other", "x"), bare = Bare("bare"), empty = With("level", "");
  const Outcome changed = Differs(-11, "System error:old_customattr2:sort=1,new_customattr2:%s");
  return {
      {"same", {level}, {level}, kPassed},
      {"no_entries", {}, {}, kPassed},
      {"new_without_entries", {level}, {}, kPassed},
      {"old_without_entries", {}, {level, other}, kPassed},
      {"attribute_gained", {Bare("level")}, {level}, kPassed},
      {"attribute_gained_where_it_was_empty", {empty}, {level}, kPassed},
      {"attribute_lost", {level}, {Bare("level")}, kPassed},
      {"attribute_emptied", {level}, {empty}, kPassed},
      {"field_added", {other}, {other, level}, kPassed},
      {"text_changed", {level}, {With("level", "%s")}, changed},
      {"text_changed_in_letter_case",
       {level},
       {With("level", "Sort=1")},
       Differs(-11, "System error:old_customattr2:sort=1,new_customattr2:Sort=1")},
      {"text_longer",
       {level},
       {With("level", "sort=1 ")},
       Differs(-11, "System error:old_customattr2:sort=1,new_customattr2:sort=1 ")},
      {"name_in_other_letter_case_is_another_field", {level}, {With("LEVEL", "sort=2")}, kPassed},
      {"second_field_changed", {other, level}, {other, With("level", "%s")}, changed},
      {"stops_at_first_change", {level, other}, {With("level", "%s"), With("other", "y")}, changed},
      {"empty_attribute_of_the_name_is_skipped", {empty, level}, {With("level", "%s")}, changed},
      {"missing_attribute_of_the_name_is_skipped", {Bare("level"), level}, {With("level", "%s")}, changed},
      {"search_ends_at_the_first_of_the_name", {level, With("level", "%s")}, {level}, kPassed},
      {"null_new_entry", {level}, {level, kNull}, Differs(-7, "System error:get entry(1) failed <-7>")},
      {"null_new_entry_first", {}, {kNull, level}, Differs(-7, "System error:get entry(0) failed <-7>")},
      {"nameless_new_entry", {level}, {level, bare, Nameless("x")}, Differs(-8, "System error:get entry(2) name failed <-8>")},
      {"nameless_new_entry_without_attribute", {level}, {EntryFacts{}, level}, kPassed},
      {"nameless_new_entry_with_empty_attribute", {level}, {Nameless(""), level}, kPassed},
      {"null_old_entry", {other, kNull, level}, {level}, Differs(-9, "System error:get entry(1) failed <-9>")},
      {"null_old_entry_first", {kNull, level}, {level}, Differs(-9, "System error:get entry(0) failed <-9>")},
      {"nameless_old_entry_first", {Nameless("x")}, {level}, Differs(-10, "System error:get entry(0) name failed <-10>")},
      {"null_old_entry_after_the_match", {level, kNull}, {level}, kPassed},
      {"null_old_entry_after_a_match_of_one_field_only",
       {level, kNull},
       {level, other},
       Differs(-9, "System error:get entry(1) failed <-9>")},
      {"null_old_entry_but_no_attribute_in_new", {kNull}, {bare}, kPassed},
      {"nameless_old_entry", {other, Nameless("x"), level}, {level}, Differs(-10, "System error:get entry(1) name failed <-10>")},
      {"nameless_old_entry_after_the_match", {level, Nameless("x")}, {level}, kPassed},
      {"nameless_old_entry_without_attribute", {EntryFacts{}, level}, {level}, kPassed},
      {"nameless_old_entry_with_empty_attribute", {Nameless(""), level}, {level}, kPassed},
  };
}

std::string AttributeName(const testing::TestParamInfo<AttributeRow>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(List, SortAttribute, testing::ValuesIn(Rows()), AttributeName);

// The same comparison, for tables that are more than a row.
class AttributeSearch : public StandInTest {
 protected:
  AttributeSearch() { old_.table = new_.table = {.result = 0, .type = 2, .number = 8, .sort_fields = 1}; }

  int Compare() {
    ModifyTable checker;
    return checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), nullptr, 0, 0);
  }
};

TEST_F(AttributeSearch, NameOfEntryWithoutAttributeIsNotRead) {
  Old({Bare("bare"), With("level", "sort=1")});
  New({Bare("plain"), With("level", "sort=1")});
  EXPECT_EQ(Compare(), 0);
  EXPECT_TRUE(TheWorld().CallsOf("name of bare").empty());
  EXPECT_TRUE(TheWorld().CallsOf("name of plain").empty());
  EXPECT_FALSE(TheWorld().CallsOf("name of level").empty());
}

TEST_F(AttributeSearch, AttributesAreReadThroughTheirOwnLibrary) {
  Old({With("level", "sort=1")});
  New({With("level", "sort=1")});
  EXPECT_EQ(Compare(), 0);
  EXPECT_EQ(TheWorld().CallsOf("attribute in"), (Texts{"attribute in new", "attribute in old"}));
}

TEST_F(AttributeSearch, UnsortedListIsNotCompared) {
  old_.table.sort_fields = new_.table.sort_fields = 0;
  Old({With("level", "a"), kNull});
  New({With("level", "b"), kNull});
  EXPECT_EQ(Compare(), 0);
  EXPECT_TRUE(TheWorld().CallsOf("meta of").empty());
}

// Long lists are not searched linearly: the attribute is that of the matching entry, in whatever order entries were read.
TEST_F(AttributeSearch, LongListsGiveTheSameResultsAsShortOnes) {
  Entries old_entries, new_entries;
  for (int i = 0; i < 40; ++i) old_entries.emplace_back(With("f" + std::to_string(i), "a" + std::to_string(i)));
  old_entries.emplace_back(With("f3", "another"));
  for (int i = 39; i >= 0; --i) new_entries.emplace_back(old_entries[static_cast<std::size_t>(i)]);
  Old(old_entries);
  LPQMXMETA new_meta = New(new_entries);
  EXPECT_EQ(Compare(), 0);
  TheWorld()
      .entries
      .at(TheWorld().metas.at(new_meta).entries[36])  // "f3"
      .attr2 = "b";
  const auto call = [&](ModifyTable& checker, auto log) {
    return checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), log, 0, 0);
  };
  EXPECT_EQ(OutcomeOf(call), Differs(-11, "System error:old_customattr2:a3,new_customattr2:b"));
}

TEST_F(AttributeSearch, LongListsEndAtMissingEntry) {
  Entries entries;
  for (int i = 0; i < 20; ++i) entries.emplace_back(With("f" + std::to_string(i), "a"));
  New(entries);
  entries[15] = kNull;
  Old(entries);
  const auto call = [&](ModifyTable& checker, auto log) {
    return checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), log, 0, 0);
  };
  EXPECT_EQ(OutcomeOf(call), Differs(-9, "System error:get entry(15) failed <-9>"));
}

TEST_F(AttributeSearch, LongAttributesAreTruncated) {
  const std::string text(2000, 'a');
  Old({With("level", text)});
  New({With("level", "b")});
  const auto call = [&](ModifyTable& checker, auto log) {
    return checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), log, 0, 0);
  };
  EXPECT_EQ(OutcomeOf(call), Differs(-11, ("System error:old_customattr2:" + text).substr(0, 1023)));
}

}  // namespace
}  // namespace standalone
