// Entries that cannot be read: skipped, unless the operation defines a result for them.

#include "common/lookup.h"
#include "qmx/qmx_metalib_kernel.h"
#include "rules/standalone/stand_in_test.h"

namespace standalone {
namespace {

using NullEntries = StandInTest;

const EntryFacts kUid = {.name = "uid", .id = 1};
const EntryFacts kZone = {.name = "zone", .id = 2};

TEST_F(NullEntries, LookupByNameCountsTheirPositions) {
  LPQMXMETA meta = Old({kNull, kUid, kNull, kZone});
  ModifyTable checker;
  int offset = 77;
  EXPECT_NE(checker.CheckWhetherExistEntry("zone", meta, offset, nullptr), nullptr);
  EXPECT_EQ(offset, 3);
  EXPECT_EQ(checker.CheckWhetherExistEntry("far", meta, offset, nullptr), nullptr);
  EXPECT_EQ(offset, 3);
  EXPECT_STREQ(checker.GetErrType(), "");
}

TEST_F(NullEntries, LookupByIdSkipsThem) {
  LPQMXMETA meta = Old({kNull, kUid, EntryFacts{.name = "first", .id = 0}});
  ModifyTable checker;
  EXPECT_NE(checker.CheckWhetherExistEntryById(1, meta, nullptr), nullptr);
  EXPECT_NE(checker.CheckWhetherExistEntryById(0, meta, nullptr), nullptr);
  EXPECT_EQ(checker.CheckWhetherExistEntryById(2, meta, nullptr), nullptr);
  EXPECT_STREQ(checker.GetErrType(), "");
}

TEST_F(NullEntries, FieldSetSkipsThem) {
  LPQMXMETA old_meta = Old({kNull, kUid, kZone}), new_meta = New({kZone, kNull, kUid});
  const Outcome same = {.log = {Info("CompareTableField", "CompareValueField between new and old table:mall%s successed")}};
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareTableField(old_meta, new_meta, log); }), same);
}

TEST_F(NullEntries, FieldSetFindsNothingAmongThem) {
  LPQMXMETA old_meta = Old({kUid}), new_meta = New({kNull});
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareTableField(old_meta, new_meta, log); }),
            Refused(-34, "CompareTableField", "can not find value_entry:uid in mall%s"));
}

TEST_F(NullEntries, VersionRuleSkipsThem) {
  LPQMXMETA old_meta = Old({kNull, kUid}), new_meta = New({kNull, kUid});
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareVersion(old_meta, new_meta, 5, log); }),
            Outcome{});
}

TEST_F(NullEntries, OrderRuleSkipsThem) {
  LPQMXMETA old_meta = Old({kNull, kUid, kNull, kZone}), new_meta = New({kNull, kUid, kNull, kZone});
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareOrder(old_meta, new_meta, log); }), Outcome{});
}

TEST_F(NullEntries, RecordRulesSkipThem) {
  LPQMXMETA old_meta = Old({kNull, kUid}), new_meta = New({kNull, kNull, kUid});
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareEntryValueField(old_meta, new_meta, log); }),
            Outcome{});
}

// The survival test defines a result for a null entry, which the rule treats as a deletion.
TEST_F(NullEntries, OldOnesFailTheSurvivalTest) {
  LPQMXMETA old_meta = Old({kUid, kNull}), new_meta = New({kUid});
  const std::string deleted = "The entry:(null) can't be delete now,it will be supported by korvsvr of 3.28.0!";
  const Outcome expected = {-3,
                            deleted,
                            {Error("CheckWhetherExistEntryOfTLV", "needCheckPstEntry or new_meta can't be null"),
                             Error("CompareEntryValueFieldTLV", deleted)}};
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareEntryValueFieldTLV(old_meta, new_meta, log); }),
            expected);
}

TEST_F(NullEntries, SurvivalTestSkipsNewOnes) {
  LPQMXMETA old_meta = Old({kUid}), new_meta = New({kNull, kUid});
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareEntryValueFieldTLV(old_meta, new_meta, log); }),
            Outcome{});
}

TEST_F(NullEntries, SurvivalTestSkipsNewOnesIfFirstWithTheIdHasAnotherName) {
  LPQMXMETA old_meta = Old({kUid}), new_meta = New({EntryFacts{.name = "other", .id = 1}, kNull, kUid});
  ModifyTable checker;
  EXPECT_TRUE(checker.CheckWhetherExistEntryOfTLV(qmx_get_entry_by_index(old_meta, 0), new_meta, nullptr));
  EXPECT_STREQ(checker.GetErrType(), "");
}

TEST_F(NullEntries, MembersOfStructuresAreSkipped) {
  LPQMXMETA old_meta = Old({kNull, kUid}), new_meta = New({kNull, kNull, kUid});
  EXPECT_EQ(
      OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareEntrySubMetaFieldTLV(old_meta, new_meta, log); }),
      Outcome{});
}

TEST_F(NullEntries, NameRuleSkipsThem) {
  LPQMXMETA meta = New({kNull, kUid, kNull});
  const Outcome passed = {.buffer = "entry name is too long:",
                          .log = {Info("CheckFieldNameValidate", "length of entry name uid is 3")}};
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CheckFieldNameValidate(meta, log); }), passed);
}

// Field lengths: a null entry ends the rule, whatever was found before.
class NullEntriesInLengths : public StandInTest {
 protected:
  NullEntriesInLengths() { TheWorld().comparisons = {{"3.29.0", -1}, {"3.39.0", -1}}; }

  Outcome Lengths(const std::string& whitelist) {
    return OutcomeOf(
        [&](ModifyTable& checker, auto log) {
          return checker.CheckWhiteListFieldLen("mall%s", old_.Lib(), new_.Lib(), "1.0", whitelist, log);
        },
        false);
  }

  const EntryFacts small_ = {.name = "history", .unit_size = 8}, large_ = {.name = "history", .unit_size = 200000};
  const std::string text_ = "entry 1 is null! Meta name: mall%s";
};

TEST_F(NullEntriesInLengths, EndTheRuleAtOnce) {
  Old({small_});
  New({large_, kNull, large_});
  EXPECT_EQ(Lengths(""), (Outcome{-2,
                                  text_,
                                  {ErrorLogOnly("CheckWhiteListFieldLen", "entry history length(200000) is greater than 256KB"),
                                   Error("CheckWhiteListFieldLen", text_)}}));
}

TEST_F(NullEntriesInLengths, KeepEarlierRecords) {
  TheWorld().whitelist = {"history"};
  Old({small_});
  New({large_, kNull});
  EXPECT_EQ(
      Lengths("history"),
      (Outcome{-2,
               text_,
               {Info("CheckWhiteListFieldLen", "entry history old_len:8,new_len:200000"), Error("CheckWhiteListFieldLen", text_)},
               {"history 8 -> 200000"},
               {"history"}}));
}

// In the old schema a null entry ends the search for the field's size.
TEST_F(NullEntriesInLengths, EndTheSearchForTheOldSize) {
  ModifyTable checker;
  std::size_t size = 77;
  EXPECT_FALSE(checker.CheckWhiteFieldIsModify(Old({kNull, small_}), 200000, "history", size));
  EXPECT_EQ(size, 77U);
  size = 0;
  EXPECT_TRUE(checker.CheckWhiteFieldIsModify(Old({small_, kNull}), 200000, "history", size));
  EXPECT_EQ(size, 8U);
}

// Long lists are not searched linearly.
TEST_F(NullEntriesInLengths, EndTheSearchInALongListToo) {
  Entries entries;
  for (int i = 0; i < 20; ++i) entries.emplace_back(EntryFacts{.name = "f" + std::to_string(i)});
  entries[15] = kNull;
  LPQMXMETA meta = Old(entries);
  ModifyTable checker;
  std::size_t size = 77;
  EXPECT_FALSE(checker.CheckWhiteFieldIsModify(meta, 200000, "f16", size));
  korvel::Lookup lookup(std::pmr::get_default_resource());
  EXPECT_EQ(lookup.PositionBeforeMissing(meta, "f16"), -1);
  EXPECT_EQ(size, 77U);
  EXPECT_TRUE(checker.CheckWhiteFieldIsModify(meta, 200000, "f14", size));
  EXPECT_EQ(size, 4U);
}

TEST_F(NullEntriesInLengths, TruncateTheTableNameInTheRefusal) {
  const std::string table(2000, 'm');
  new_.AddMeta(table, {kNull});
  const std::string text = ("entry 0 is null! Meta name: " + table).substr(0, 1023);
  const auto call = [&](ModifyTable& checker, auto log) {
    return checker.CheckWhiteListFieldLen(table.c_str(), old_.Lib(), new_.Lib(), "1.0", "", log);
  };
  EXPECT_EQ(OutcomeOf(call, false), Refused(-2, "CheckWhiteListFieldLen", text));
}

}  // namespace
}  // namespace standalone
