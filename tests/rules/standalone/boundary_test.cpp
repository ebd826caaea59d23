// Which external operations the checker calls, how often and in which order, and how it handles results that real libraries never
// return.

#include "rules/standalone/stand_in_test.h"

namespace standalone {
namespace {

constexpr char kEntry[] = "KorvelModifyTable";
constexpr char kNullMeta[] = "Invalid parameter, meta is null";

const EntryFacts kUid = {.name = "uid", .id = 1, .db_flag = 0x10};
const EntryFacts kZone = {.name = "zone", .id = 2};

class Boundary : public StandInTest {
 protected:
  void SetUp() override {
    old_.SetKey(old_meta_, {0});
    new_.SetKey(new_meta_, {0});
  }

  int Modify(ModifyTable& checker, LPVESKCATEGORYINST log, int init_version = 1, const std::string& server = {},
             const std::string& whitelist = {}) {
    return checker.KorvelModifyTable(old_.Lib(), new_.Lib(), "mall%s", 0, init_version, log, server, whitelist, 0);
  }

  LPQMXMETA old_meta_ = Old({kUid, kZone});
  LPQMXMETA new_meta_ = New({kUid, kZone});
};

TEST_F(Boundary, CompleteCheckRunsWithStandIns) {
  TheWorld().comparisons = {{"3.29.0", 1}, {"3.39.0", -1}};
  ModifyTable checker;
  support::CaptureCategory log;
  EXPECT_EQ(Modify(checker, &log, 1, "3.30", "a;b"), 0);
  EXPECT_STREQ(checker.GetErrType(), "entry name is too long:");
  EXPECT_EQ(TheWorld().CallsOf("table "), (Texts{"table mall%s of old server [3.30] zeros no flag loud",
                                                 "table mall%s of new server [3.30] zeros no flag loud"}));
  EXPECT_EQ(TheWorld().CallsOf("compare "), (Texts{"compare 3.30 with 3.29.0 no flag", "compare 3.30 with 3.39.0 no flag"}));
  EXPECT_EQ(TheWorld().CallsOf("split "), Texts{"split [a;b] at [;]"});
}

TEST_F(Boundary, EmptyWhitelistIsNotSplit) {
  TheWorld().comparisons = {{"3.29.0", 1}, {"3.39.0", 1}};
  TheWorld().whitelist = {"never"};
  ModifyTable checker;
  support::CaptureCategory log;
  EXPECT_EQ(Modify(checker, &log, 1, "3.30"), 0);
  EXPECT_TRUE(TheWorld().CallsOf("split ").empty());
  EXPECT_TRUE(checker.whiteVec.empty());
}

TEST_F(Boundary, EmptyPieceOfTheWhitelistMatchesNoField) {
  TheWorld().comparisons = {{"3.29.0", -1}, {"3.39.0", -1}};
  TheWorld().whitelist = {""};
  FakeLibrary large("large");
  large.AddMeta("mall%s", {EntryFacts{.name = "", .unit_size = 131073}});
  ModifyTable checker;
  support::CaptureCategory log;
  EXPECT_EQ(checker.CheckWhiteListFieldLen("mall%s", large.Lib(), large.Lib(), "1", ";", &log), -2);
  EXPECT_STREQ(checker.GetErrType(), "ERR_ENTRY_LEN;|");
}

TEST_F(Boundary, NothingIsComparedWithoutServerVersion) {
  ModifyTable checker;
  EXPECT_EQ(Modify(checker, nullptr), 0);
  EXPECT_TRUE(TheWorld().CallsOf("compare ").empty());
}

// Zero from the comparison means the same version, and the limit of that version applies.
TEST_F(Boundary, LimitsFollowTheComparison) {
  const auto largest = [&](int with_29, int with_39) {
    TheWorld().comparisons = {{"3.29.0", with_29}, {"3.39.0", with_39}};
    for (const std::size_t size : {131072U, 262144U, 10485760U}) {
      FakeLibrary larger("larger");
      larger.AddMeta("mall%s", {EntryFacts{.name = "blob", .unit_size = size + 1}});
      ModifyTable checker;
      support::CaptureCategory log;
      if (checker.CheckWhiteListFieldLen("mall%s", old_.Lib(), larger.Lib(), "x", "", &log) == -2) return size;
    }
    return std::size_t{0};
  };
  EXPECT_EQ(largest(-1, -1), 131072U);
  EXPECT_EQ(largest(0, -1), 262144U);
  EXPECT_EQ(largest(7, -7), 262144U);
  EXPECT_EQ(largest(1, 0), 10485760U);
  EXPECT_EQ(largest(9, 9), 10485760U);
}

TEST_F(Boundary, BothVersionsAreReadOnceAndTheOldOneAgain) {
  ModifyTable checker;
  EXPECT_EQ(Modify(checker, nullptr), 0);
  EXPECT_EQ(TheWorld().CallsOf("version "), (Texts{"version of old", "version of new", "version of old"}));
}

TEST_F(Boundary, OldVersionIsNotReadAgainIfOnlyTheTlvRulesRun) {
  old_.Lib()->iFlag = new_.Lib()->iFlag = 1;
  ModifyTable checker;
  EXPECT_EQ(Modify(checker, nullptr, 2), 0);
  EXPECT_EQ(TheWorld().CallsOf("version "), (Texts{"version of old", "version of new"}));
}

// The second reading fails: no text, no record, and the buffer is unchanged: it holds the trace.
TEST_F(Boundary, FailingSecondReadingWritesNoText) {
  old_.versions = {5, -1};
  const Outcome outcome = OutcomeOf([&](ModifyTable& checker, auto log) { return Modify(checker, log); }, false);
  const std::string trace = "src/common/modify_table.cpp(LINE)-<KorvelModifyTable>:  m_svr_ver: table:'mall%s' type is :0";
  EXPECT_EQ(outcome, (Outcome{-2,
                              trace,
                              {rules::Trace(kEntry, trace),
                               Info("CompareSplittableKey", "Table dose not have SplittableKey! table:'mall%s'")}}));
}

TEST_F(Boundary, SecondReadingCounts) {
  old_.SetKey(old_.AddMeta("shop%s", {kUid}), {0});
  new_.SetKey(new_.AddMeta("shop%s", {kUid, EntryFacts{.name = "note", .version = 7}}), {0});
  new_.versions = {9};
  const auto modify = [&](std::vector<int> versions) {
    old_.versions = std::move(versions);
    ModifyTable checker;
    return checker.KorvelModifyTable(old_.Lib(), new_.Lib(), "shop%s", 0, 1, nullptr, "", "", 0);
  };
  EXPECT_EQ(modify({8, 6}), 0);
  EXPECT_EQ(modify({6, 7}), -8);
}

TEST_F(Boundary, ValuesReadsOnlyTheVersionOfTheSource) {
  old_.versions = {-1};
  const auto values = [&](ModifyTable& checker, LPVESKCATEGORYINST log) {
    return checker.CompareValue(old_meta_, new_meta_, old_.Lib(), new_.Lib(), 1, log);
  };
  EXPECT_EQ(OutcomeOf(values),
            (Outcome{.code = -2, .log = {ErrorLogOnly("CompareValue", "get table [mall%s] metalib version failed.")}}));
  EXPECT_EQ(TheWorld().CallsOf("version "), (Texts{"version of old", "version of old"})) << "once for each of the two checkers";
}

TEST_F(Boundary, CompatibilityReadsOnlyTheOldVersion) {
  ModifyTable checker;
  EXPECT_EQ(checker.CheckTableMetaCompatible(old_.Lib(), new_.Lib(), "mall%s", nullptr), 0);
  EXPECT_EQ(TheWorld().CallsOf("version "), Texts{"version of old"});
  EXPECT_EQ(TheWorld().CallsOf("meta of "), (Texts{"meta of old mall%s", "meta of new mall%s"}));
  EXPECT_TRUE(TheWorld().CallsOf("table ").empty());
}

// The type of an added field is read from the old entry, which does not exist.
class TypeOfNull : public StandInTest {
 protected:
  Outcome Version(int type_of_null) {
    TheWorld().type_of_null = type_of_null;
    return OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareVersion(old_meta_, new_meta_, 5, log); });
  }

  LPQMXMETA old_meta_ = Old({kUid});
  LPQMXMETA new_meta_ = New({kUid, EntryFacts{.name = "note", .version = 6}, EntryFacts{.name = "more", .version = 6}});
};

TEST_F(TypeOfNull, SimpleTypePasses) {
  for (const int type : {-1, 2, 7}) EXPECT_EQ(Version(type), Outcome{}) << type;
}

TEST_F(TypeOfNull, CompositeTypeIsRefusedByTheParameterCheck) {
  for (const int type : {0, 1}) EXPECT_EQ(Version(type), Refused(-1, "CompareVersion", kNullMeta)) << type;
}

TEST_F(TypeOfNull, IsReadForEveryAddedField) {
  ModifyTable checker;
  EXPECT_EQ(checker.CompareVersion(old_meta_, new_meta_, 5, nullptr), 0);
  EXPECT_EQ(TheWorld().CallsOf("type of null").size(), 2U);
  EXPECT_EQ(checker.CompareVersion(old_meta_, new_meta_, 6, nullptr), -8);
  EXPECT_EQ(TheWorld().CallsOf("type of null").size(), 2U) << "not called for a refused field";
}

TEST_F(TypeOfNull, IsNotReadByTheOrderRule) {
  ModifyTable checker;
  EXPECT_EQ(checker.CompareOrder(old_meta_, new_meta_, nullptr), 0);
  EXPECT_TRUE(TheWorld().CallsOf("type of null").empty());
}

TEST_F(TypeOfNull, StructuresComeFromTheLibrariesThatOwnTheMetas) {
  LPQMXMETA old_box = old_.AddMeta("box%s", {kZone}), new_box = new_.AddMeta("box%s", {kZone});
  LPQMXMETA old_meta = old_.AddMeta("shop%s", {EntryFacts{.name = "items", .type = 1, .type_meta = old_box}});
  LPQMXMETA new_meta = new_.AddMeta("shop%s", {EntryFacts{.name = "items", .type = 1, .type_meta = new_box}});
  ModifyTable checker;
  EXPECT_EQ(checker.CompareVersion(old_meta, new_meta, 5, nullptr), 0);
  EXPECT_EQ(checker.CompareOrder(old_meta, new_meta, nullptr), 0);
  EXPECT_EQ(checker.CompareEntryValueField(old_meta, new_meta, nullptr), 0);
  EXPECT_EQ(TheWorld().CallsOf("structure in old").size(), 3U);
  EXPECT_EQ(TheWorld().CallsOf("structure in new").size(), 3U);
}

// The text of the splittable key cannot be read.
class SplittableKey : public StandInTest {
 protected:
  Outcome Compare(int old_result, int new_result, const std::string& old_text, const std::string& new_text) {
    LPQMXMETA old_meta = old_.AddMeta("mall%s", {kUid}), new_meta = new_.AddMeta("shop%s", {kUid});
    old_.SetSplittableKey(old_meta, old_text, old_result);
    new_.SetSplittableKey(new_meta, new_text, new_result);
    return OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareSplittableKey(old_meta, new_meta, log); });
  }
};

TEST_F(SplittableKey, NonZeroResultIsAFailure) {
  const Outcome no_new = Refused(-5, "CompareSplittableKey", "Can't get new splittablekey! table:'shop%s'");
  const Outcome no_old = Refused(-5, "CompareSplittableKey", "Can't get old splittablekey! table:'mall%s'");
  EXPECT_EQ(Compare(0, -1, "uid", "uid"), no_new);
  EXPECT_EQ(Compare(0, 9, "uid", "uid"), no_new);
  EXPECT_EQ(Compare(-1, 0, "uid", "uid"), no_old);
  EXPECT_EQ(Compare(9, 0, "uid", "uid"), no_old);
}

TEST_F(SplittableKey, OldTextIsNotReadIfTheNewOneFailed) {
  Compare(-1, -1, "uid", "uid");
  const std::string call = "splittable key of shop%s size 1024 zeros no error";
  EXPECT_EQ(TheWorld().CallsOf("splittable "), (Texts{call, call})) << "once for each of the two checkers";
}

TEST_F(SplittableKey, NewTextIsReadFirstIntoZeroedBuffers) {
  EXPECT_EQ(Compare(0, 0, "uid", "uid"), Outcome{});
  const std::string old_call = "splittable key of mall%s size 1024 zeros no error";
  const std::string new_call = "splittable key of shop%s size 1024 zeros no error";
  EXPECT_EQ(TheWorld().CallsOf("splittable "), (Texts{new_call, old_call, new_call, old_call}));
}

TEST_F(SplittableKey, TextsAreComparedCompletelyAndShownUnchanged) {
  EXPECT_EQ(Compare(0, 0, "", ""), Outcome{});
  EXPECT_EQ(Compare(0, 0, "%n%s", "%n"),
            Refused(-5, "CompareSplittableKey", "Splittablekey can't be modified! splittablekey:'%n%s' table:'mall%s'"));
}

// Indexes in poisoned memory: only name, number and columns of an index are read.
using Offsets = StandInTest;

TEST_F(Offsets, IndexesAreReadThroughTheirOffsets) {
  LPQMXMETA old_meta = Old({kUid, kZone}), new_meta = New({kZone, kUid});
  old_.AddIndex(old_meta, "by%s", {0, 1});
  new_.AddIndex(new_meta, "by%s", {0, 1});
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) { return checker.CompareIndex(old_meta, new_meta, 0, log); }),
            Outcome{});
}

}  // namespace
}  // namespace standalone
