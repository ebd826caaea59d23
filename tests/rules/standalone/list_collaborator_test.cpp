// How the list rules use CheckTable: the order of calls, the handling of its failures, and its text, which is used as a format
// string.

#include "rules/standalone/stand_in_test.h"

namespace standalone {
namespace {

constexpr char kRule[] = "CheckListMetaInfo";
constexpr char kSort[] = "CompareSortListInfo";

class Collaborator : public StandInTest {
 protected:
  Outcome Kind() {
    return OutcomeOf(
        [&](ModifyTable& checker, auto log) { return checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), log, 1, 8); });
  }
  Outcome SortList() {
    return OutcomeOf([&](ModifyTable& checker, auto log) {
      return checker.CompareSortListInfo("mall%s", "shop%s", old_.Lib(), new_.Lib(), log);
    });
  }
};

// Any result except 0 and -46 is a failure, whatever its sign.
TEST_F(Collaborator, FailureOfOldSideIsMinusOneOfNewSideMinusTwo) {
  for (const int result : {1, 46, -1, -2, -45, -47, -50, 2147483647}) {
    SCOPED_TRACE(result);
    old_.table = {.result = result, .text = "old is wrong"};
    new_.table = {.result = 0, .text = "not a fault"};
    EXPECT_EQ(Kind(), Refused(-1, kRule, "old is wrong"));
    EXPECT_EQ(SortList(), Refused(-1, kSort, "old is wrong"));
    std::swap(old_.table, new_.table);
    EXPECT_EQ(Kind(), Refused(-2, kRule, "old is wrong"));
    EXPECT_EQ(SortList(), Refused(-2, kSort, "old is wrong"));
  }
}

TEST_F(Collaborator, NewSideIsNotReadIfTheOldOneFailed) {
  old_.table = new_.table = {.result = -50, .text = "wrong"};
  ModifyTable checker;
  EXPECT_EQ(checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), nullptr, 1, 8), -1);
  EXPECT_EQ(TheWorld().CallsOf("table "), Texts{"table mall%s of old server [] zeros no flag quiet"});
}

TEST_F(Collaborator, GetsServerVersionAndZeroedOutputs) {
  ModifyTable checker;
  checker.m_svr_ver = "3.28.9";
  support::CaptureCategory log;
  EXPECT_EQ(checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), &log, 1, 8), 0);
  EXPECT_EQ(TheWorld().CallsOf("table "), (Texts{"table mall%s of old server [3.28.9] zeros no flag loud",
                                                 "table mall%s of new server [3.28.9] zeros no flag loud"}));
}

TEST_F(Collaborator, GetsNoServerVersionForSortLists) {
  ModifyTable checker;
  checker.m_svr_ver = "3.28.9";
  EXPECT_EQ(checker.CompareSortListInfo("mall%s", "shop%s", old_.Lib(), new_.Lib(), nullptr), 0);
  EXPECT_EQ(TheWorld().CallsOf("table "),
            (Texts{"table mall%s of old server [] zeros no flag quiet", "table shop%s of new server [] zeros no flag quiet"}));
}

TEST_F(Collaborator, MainCheckReturnsMinusOneForEveryFailureWithoutOwnRecord) {
  old_.SetKey(Old({EntryFacts{.name = "uid"}}), {0});
  new_.SetKey(New({EntryFacts{.name = "uid"}}), {0});
  const auto modify = [&](ModifyTable& checker, auto log) {
    return checker.KorvelModifyTable(old_.Lib(), new_.Lib(), "mall%s", 0, 1, log, "", "", 0);
  };
  for (const int result : {-50, -3, 7}) {
    new_.table = {.result = result, .text = "new is %s"};
    const Outcome outcome = OutcomeOf(modify);
    EXPECT_EQ(outcome.code, -1);
    EXPECT_EQ(outcome.buffer, "new is %s");
    ASSERT_EQ(outcome.log.size(), 3U);
    EXPECT_EQ(outcome.log.back(), Error(kRule, "new is %s"));
  }
}

struct FormatRow {
  const char* name;
  std::string text;
  std::string shown;
};

void PrintTo(const FormatRow& row, std::ostream* out) { *out << row.name; }

// A doubled percent sign becomes one; a conversion has no argument and is shown unchanged; a single percent sign at the end makes
// the format invalid, which leaves an empty buffer.
const FormatRow kFormats[] = {
    {"plain", "all is wrong", "all is wrong"},
    {"empty", "", ""},
    {"doubled", "100%% wrong", "100% wrong"},
    {"doubled_at_the_end", "wrong by 100%%", "wrong by 100%"},
    {"doubled_twice", "%%%%", "%%"},
    {"text", "table '%s'", "table '%s'"},
    {"many_texts", "%s%s%s%s%s%s%s%s", "%s%s%s%s%s%s%s%s"},
    {"write", "table '%n'", "table '%n'"},
    {"write_conversion_of_every_size", "%hhn%hn%ln%lln%jn%zn%tn", "%hhn%hn%ln%lln%jn%zn%tn"},
    {"numbers", "%d %u %x %p %c", "%d %u %x %p %c"},
    {"fractions", "%f %5.2f %e %Lg %a", "%f %5.2f %e %Lg %a"},
    {"width_from_an_argument", "%*d %.*s", "%*d %.*s"},
    {"positions", "%1$s %2$n", "%1$s %2$n"},
    {"wide_and_flags", "%-08ld|%+#x|%ls", "%-08ld|%+#x|%ls"},
    {"percent_before_a_word", "50% of all", "50% of all"},
    {"doubled_before_a_conversion", "%%s %%%s", "%s %%s"},
    {"single_at_the_end", "wrong by 100%", ""},
    {"single_alone", "%", ""},
    {"single_after_a_doubled_one", "%%%", ""},
    {"single_after_conversions", "%s %n %", ""},
    {"letters_of_any_language", "\xe6\xbc\xa2 %% \xff\xfe", "\xe6\xbc\xa2 % \xff\xfe"},
};

class FormatText : public testing::TestWithParam<FormatRow>, protected NewWorld {
 protected:
  FakeLibrary old_{"old"};
  FakeLibrary new_{"new"};
};

TEST_P(FormatText, IsShownWithoutArguments) {
  const FormatRow& row = GetParam();
  new_.table = {.result = -50, .text = row.text};
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) {
              return checker.CheckListMetaInfo("mall%s", old_.Lib(), new_.Lib(), log, 1, 8);
            }),
            Refused(-2, kRule, row.shown));
  EXPECT_EQ(OutcomeOf([&](ModifyTable& checker, auto log) {
              return checker.CompareSortListInfo("mall%s", "shop%s", old_.Lib(), new_.Lib(), log);
            }),
            Refused(-2, kSort, row.shown));
}

std::string FormatName(const testing::TestParamInfo<FormatRow>& info) { return info.param.name; }
INSTANTIATE_TEST_SUITE_P(Text, FormatText, testing::ValuesIn(kFormats), FormatName);

TEST_F(Collaborator, LongestTextFits) {
  old_.table = {.result = -1, .text = std::string(1023, 't')};
  EXPECT_EQ(Kind(), Refused(-1, kRule, std::string(1023, 't')));
  std::string doubled;
  for (int i = 0; i < 511; ++i) doubled += "%%";
  old_.table.text = doubled + "x";
  EXPECT_EQ(Kind(), Refused(-1, kRule, std::string(511, '%') + "x"));
}

}  // namespace
}  // namespace standalone
