// The text of a history reports each cause once.
#include <gmock/gmock.h>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class HistoryTextTest : public ToolTest {
 protected:
  static constexpr std::size_t kTables = 40;

  // Tables t0, t1, ... that embed one structure.
  void WriteVersion(const std::string& file, int version, const std::string& price, const std::string& stock) const {
    std::vector<std::string> metas = {"<meta name=\"item\"><entry name=\"price\" type=\"" + price +
                                      "\"/><entry name=\"stock\" type=\"" + stock + "\"/></meta>"};
    for (std::size_t i = 0; i < kTables; ++i) {
      metas.push_back(Table({.name = "t" + std::to_string(i), .fields = "<entry name=\"a\" type=\"item\"/>"}));
    }
    Write(file, Library(version, metas));
  }

  std::string History(const std::vector<std::string>& versions, const std::vector<std::string>& more = {}) const {
    const Outcome outcome = Korvelcheck(Joined(Joined({"history"}, versions), more));
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }

  static std::size_t CountOf(const std::string& part, const std::string& text) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
    return count;
  }
};

TEST_F(HistoryTextTest, FindingOfASharedStructureIsOneBlock) {
  WriteVersion("v1.xml", 1, "int64", "int64");
  WriteVersion("v2.xml", 2, "int32", "int64");
  const std::string report = History({"v1.xml", "v2.xml"});
  EXPECT_EQ(CountOf("refused [field.size]", report), 1u);
  EXPECT_THAT(report, AllOf(HasSubstr("\n    also affected: t1.a.price, t2.a.price, "), HasSubstr(", t39.a.price\n")));
  EXPECT_THAT(
      report,
      HasSubstr("\n  39 more tables have only findings that are listed above: t1, t2, t3, t4, t5, t6, t7, t8, ...\n1 of 1 step"));
  EXPECT_EQ(CountOf(": refused", History({"v1.xml", "v2.xml"}, {"-v"})), kTables + 3) << "verdict, step, finding, and each table";
}

// A warning that the limit leaves out is not one that is listed above.
TEST_F(HistoryTextTest, CheckCountsTablesWithoutFindingsOfTheirOwn) {
  WriteVersion("v1.xml", 1, "int64", "int64");
  WriteVersion("v2.xml", 2, "int32", "int32");
  const std::string report = Korvelcheck({"check", "v1.xml", "v2.xml"}).out;
  EXPECT_EQ(CountOf("refused [field.size]", report), 2u);
  EXPECT_THAT(report, HasSubstr("\n39 more tables have only findings that are listed above: t1, t2, t3, t4, t5, t6, t7, t8, ...\n"
                                "40 tables refused, 0 allowed; 40 compared"));
  const std::string limited = Korvelcheck({"check", "v1.xml", "v2.xml", "--max-findings", "1"}).out;
  EXPECT_THAT(limited, Not(HasSubstr("more tables have only")));
  EXPECT_EQ(CountOf(": -3 ERROR_VALUE_FIELD\n", limited), kTables);
}

TEST_F(HistoryTextTest, TableWithChangesOfItsOwnIsListed) {
  WriteVersion("v1.xml", 1, "int64", "int64");
  WriteVersion("v2.xml", 2, "int32", "int64");
  std::string text = Read("v2.xml");
  const std::string end = "<entry name=\"a\" type=\"item\"/>";
  text.insert(text.rfind(end) + end.size(), "<entry name=\"note\" type=\"int8\" version=\"2\"/>");
  Write("v2.xml", text);
  EXPECT_THAT(Korvelcheck({"check", "v1.xml", "v2.xml"}).out,
              AllOf(HasSubstr("\n38 more tables have only findings"),
                    HasSubstr("table t39: -3 ERROR_VALUE_FIELD\n  same as above: "), HasSubstr("\n    field note added\n")));
}

// Every older version is refused for the same change.
TEST_F(HistoryTextTest, CauseOfAStepIsALineAgainstTheNewest) {
  WriteVersion("v1.xml", 1, "int64", "int64");
  WriteVersion("v2.xml", 2, "int64", "int64");
  WriteVersion("v3.xml", 3, "int32", "int64");
  WriteVersion("v4.xml", 4, "int32", "int64");
  const std::string line =
      "  same as in step 2: refused [field.size] type of price: int64 -> int32, path t0.a.price and 39 others\n";
  EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml", "v4.xml"}),
              HasSubstr("\nv1.xml -> v4.xml: refused\n" + line + "v2.xml -> v4.xml: refused\n" + line + "1 of 3 steps refused;"));
}

// No step has the change from int64 to int8.
TEST_F(HistoryTextTest, CauseOfSeveralStepsIsOneBlock) {
  WriteVersion("v1.xml", 1, "int64", "int64");
  WriteVersion("v2.xml", 2, "int64", "int64");
  WriteVersion("v3.xml", 3, "int32", "int64");
  WriteVersion("v4.xml", 4, "int8", "int64");
  const std::string report = History({"v1.xml", "v2.xml", "v3.xml", "v4.xml"});
  EXPECT_EQ(CountOf("    caused by: type of price: int64 -> int8, in step 3: v3.xml -> v4.xml\n", report), 1u) << report;
  EXPECT_THAT(report, HasSubstr("\n    also affected: t1.a.price, "));
  EXPECT_THAT(report,
              HasSubstr("\nv2.xml -> v4.xml: refused\n"
                        "  same as above: refused [field.size] type of price: int64 -> int8, path t0.a.price and 39 others\n"));
}

// The old schema breaks a rule already, so every step is refused for it.
TEST_F(HistoryTextTest, FindingOfAnEarlierStepIsALine) {
  const auto version = [](int number) {
    return Library(number, {Table({.fields = "<entry name=\"1st\" type=\"int8\"/>"}), Table({.name = "users"})});
  };
  for (int i = 1; i <= 4; ++i) Write("v" + std::to_string(i) + ".xml", version(i));
  const std::string report = History({"v1.xml", "v2.xml", "v3.xml", "v4.xml"});
  EXPECT_EQ(CountOf("\n    checker: CheckFieldNameValidate failed!", report), 1u) << report;
  EXPECT_THAT(
      report,
      HasSubstr(
          "step 3: v3.xml -> v4.xml: refused\n  1 more table has only findings that are listed above, in step 1: orders\n"));
  EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml"}, {"-v"}),
              HasSubstr("[field-name.invalid] a field name is not a valid identifier: "
                        "same as in step 1\n"));
}

// Regression: a version referred to step 3, which itself only referred to step 1.
TEST_F(HistoryTextTest, ReferencesNameTheStepThatListsTheFinding) {
  WriteVersion("v1.xml", 1, "int64", "int64");
  WriteVersion("v2.xml", 2, "int32", "int64");
  WriteVersion("v3.xml", 3, "int64", "int64");
  WriteVersion("v4.xml", 4, "int32", "int64");
  for (const std::vector<std::string>& more : {std::vector<std::string>(), {"-q"}}) {
    EXPECT_THAT(
        History({"v1.xml", "v2.xml", "v3.xml", "v4.xml"}, more),
        AllOf(HasSubstr(
                  "\nstep 3: v3.xml -> v4.xml: refused\n  40 more tables have only findings that are listed above, in step 1: "),
              HasSubstr("\nv1.xml -> v4.xml: refused\n  same as in step 1: refused [field.size] ")));
  }
}

// Regression: with -q, a version referred to a step that was left out because it is waived.
TEST_F(HistoryTextTest, QuietRefersToNoWaivedStep) {
  WriteVersion("v1.xml", 1, "int64", "int64");
  WriteVersion("v2.xml", 2, "int32", "int64");
  WriteVersion("v3.xml", 3, "int32", "int64");
  Write("korvelcheck.toml",
        "[[waivers]]\nrule = \"field.size\"\ntable = \"t0\"\npath = \"t0.a.price\"\nfile = \"v2.xml\"\n"
        "change = \"type of price: int64 -> int32\"\nreason = \"empty\"\nuntil = 2999-01-01\n");
  EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml"}), HasSubstr(": waived [field.size] "));
  const std::string quiet = History({"v1.xml", "v2.xml", "v3.xml"}, {"-q"});
  EXPECT_THAT(quiet, AllOf(HasSubstr("verdict: refused\nv1.xml -> v3.xml: refused\n  table t0: refused [field.size] "),
                           Not(HasSubstr("same as"))));
}

// A finding of another table, or with another value, is not the same.
TEST_F(HistoryTextTest, OtherChangeOfTheSameFieldIsABlock) {
  WriteVersion("v1.xml", 1, "int64", "int64");
  WriteVersion("v2.xml", 2, "int32", "int64");
  WriteVersion("v3.xml", 3, "int64", "int64");
  WriteVersion("v4.xml", 4, "int16", "int64");
  EXPECT_THAT(History({"v1.xml", "v2.xml", "v3.xml", "v4.xml"}),
              AllOf(HasSubstr("\n    was: v1.xml:2:"), HasSubstr("\n    was: v3.xml:2:"), Not(HasSubstr(": same as in step"))));
}

}  // namespace
}  // namespace tool_test
