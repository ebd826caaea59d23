// What a text report lists: by default only what there is something to say about, with --verbose also allowed tables, with
// --quiet only what fails the call.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr char kNote[] = "<entry name=\"note\" type=\"int8\" version=\"6\"/>";

class QuietOutputTest : public ToolTest {
 protected:
  // old.xml to new.xml: orders changes, users does not, carts is new.
  QuietOutputTest() {
    Write("new.xml", Library(6, {Table({.fields = kNote}), Table({.name = "users"}), Table({.name = "carts"})}));
    Write("refused.xml", Library(6, {Table({.key_type = "uint32"}), Table({.name = "users"}), Table({.name = "carts"})}));
  }

  std::string Check(const std::string& new_file, const std::vector<std::string>& more, int exit_code) const {
    const Outcome outcome = Korvelcheck(Joined({"check", "old.xml", new_file}, more));
    EXPECT_EQ(outcome.exit_code, exit_code);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
};

TEST_F(QuietOutputTest, CountsAllowedTables) {
  EXPECT_EQ(Check("new.xml", {}, 0),
            "verdict: allowed\nnew.xml:4:1: new: table carts (not compared)\n"
            "0 tables refused, 2 allowed (1 changed, 1 unchanged); 2 compared, 1 new, 0 removed\n");
}

TEST_F(QuietOutputTest, OneAllowedTableIsSaidToBeAllowed) {
  EXPECT_EQ(Check("new.xml", {"--table", "orders"}, 0),
            "verdict: allowed\n0 tables refused, 1 allowed (1 changed, 0 unchanged); 1 compared, 0 new, 0 removed\n");
}

TEST_F(QuietOutputTest, VerboseListsAllowedTables) {
  const std::string expected =
      "verdict: allowed\nnew.xml:2:1: allowed: table orders, 1 change\nnew.xml:3:1: unchanged: table users\n"
      "new.xml:4:1: new: table carts (not compared)\n"
      "0 tables refused, 2 allowed (1 changed, 1 unchanged); 2 compared, 1 new, 0 removed\n";
  EXPECT_EQ(Check("new.xml", {"--verbose"}, 0), expected);
  EXPECT_EQ(Check("new.xml", {"-v"}, 0), expected);
}

TEST_F(QuietOutputTest, QuietPrintsTheVerdictAlone) {
  EXPECT_EQ(Check("new.xml", {"--quiet"}, 0), "verdict: allowed\n");
  EXPECT_EQ(Check("new.xml", {"-q"}, 0), "verdict: allowed\n");
}

TEST_F(QuietOutputTest, QuietPrintsRefusals) {
  const std::string report = Check("refused.xml", {"--quiet"}, 1);
  EXPECT_THAT(report, AllOf(HasSubstr("verdict: refused\nrefused.xml:2:1: refused: table orders: -3 ERROR_VALUE_FIELD\n"),
                            HasSubstr("refused [primary-key.size]"), HasSubstr("  suggestion: "), HasSubstr("  fingerprint: ")));
  EXPECT_THAT(report,
              AllOf(Not(HasSubstr("users")), Not(HasSubstr("carts")), Not(HasSubstr("compared")), Not(HasSubstr("explain"))));
}

// Waivers are for findings that nobody wants to see again.
TEST_F(QuietOutputTest, QuietLeavesOutWaivedFindings) {
  const auto json = nlohmann::json::parse(Check("refused.xml", {"--format", "json"}, 1));
  const std::string fingerprint = json["tables"][0]["changes"]["findings"][0]["fingerprint"];
  const Outcome waived =
      Korvelcheck({"waive", fingerprint, "old.xml", "refused.xml", "--reason", "not released", "--until", "2999-01-01"});
  EXPECT_EQ(waived.exit_code, 0) << waived.err;
  EXPECT_EQ(Check("refused.xml", {"--quiet"}, 0), "verdict: refused (all waived)\n");
  EXPECT_THAT(Check("refused.xml", {}, 0), HasSubstr("waived until 2999-01-01"));
}

TEST_F(QuietOutputTest, QuietPrintsWarningsOnlyIfTheyFailTheCall) {
  const auto shop = [](const std::string& refer) {
    return Library(5, {Table({.fields = "<entry name=\"n\" type=\"uint32\"/><entry name=\"list\" type=\"uint32\" count=\"4\"" +
                                        refer + "/>"})});
  };
  Write("old.xml", shop(" refer=\"n\""));
  Write("warned.xml", shop(""));
  EXPECT_EQ(Check("warned.xml", {"-q"}, 0), "verdict: allowed (with warnings)\n");
  EXPECT_THAT(Check("warned.xml", {"-q", "--fail-on", "warning"}, 1),
              AllOf(HasSubstr("warned.xml:2:1: allowed: table orders\n"), HasSubstr("warning [advice.refer-changed]")));
}

TEST_F(QuietOutputTest, QuietPrintsFaults) {
  Write("broken.xml", "<metalib");
  const Outcome outcome = Korvelcheck({"lint", "-q", "old.xml", "broken.xml"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("verdict: incomplete"), HasSubstr("error [schema.syntax]"), Not(HasSubstr("old.xml"))));
}

TEST_F(QuietOutputTest, QuietAndVerboseExcludeEachOther) {
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "new.xml", "-q", "-v"}).exit_code, 2);
}

TEST_F(QuietOutputTest, LintAndIndividualChecksCountTablesOnly) {
  EXPECT_EQ(Korvelcheck({"lint", "old.xml"}).out,
            "verdict: allowed\n0 tables refused, 2 allowed; 2 compared, 0 new, 0 removed\n");
  EXPECT_EQ(Korvelcheck({"lint", "old.xml", "-v"}).out,
            "verdict: allowed\nold.xml:2:1: allowed: table orders\nold.xml:3:1: allowed: table users\n"
            "0 tables refused, 2 allowed; 2 compared, 0 new, 0 removed\n");
  EXPECT_EQ(Korvelcheck({"compat", "old.xml", "new.xml", "-v", "--table", "users"}).out,
            "verdict: allowed\nnew.xml:3:1: allowed: table users\n0 tables refused, 1 allowed; 1 compared, 0 new, 0 removed\n");
}

TEST_F(QuietOutputTest, JsonCountsTheChangesOfEachTable) {
  const auto json = nlohmann::json::parse(Check("new.xml", {"--format", "json", "-q"}, 0));
  EXPECT_EQ(json["tables"].size(), 3) << "--quiet is about text";
  EXPECT_EQ(json["tables"][0]["changes"]["count"], 1);
  EXPECT_EQ(json["tables"][1]["changes"]["count"], 0);
  EXPECT_EQ(json["summary"]["unchanged"], 1);
}

// A protocol changes how every record is written.
TEST_F(QuietOutputTest, ProtocolIsAChangeOfEveryTable) {
  Write("old.xml", Library(5, {Table()}, "QMX"));
  Write("unset.xml", "<metalib name=\"mall\" version=\"5\">\n" + Table() + "</metalib>\n");
  const Outcome outcome = Korvelcheck({"check", "old.xml", "unset.xml", "-v"});
  EXPECT_THAT(outcome.out, Not(HasSubstr("unchanged: table")));
  EXPECT_THAT(outcome.out, Not(HasSubstr("1 unchanged")));
}

TEST_F(QuietOutputTest, HistoryListsAllowedTablesOnRequest) {
  const std::string heading = "step 1: old.xml -> new.xml: allowed\n";
  EXPECT_THAT(Korvelcheck({"history", "old.xml", "new.xml"}).out,
              HasSubstr(heading + "  new.xml:4:1: new: table carts (not compared)\n0 of 1 step"));
  EXPECT_THAT(Korvelcheck({"history", "old.xml", "new.xml", "-v"}).out,
              HasSubstr(heading + "  new.xml:2:1: allowed: table orders, 1 change\n  new.xml:3:1: unchanged: table users\n"
                                  "  new.xml:4:1: new: table carts (not compared)\n0 of 1 step"));
  EXPECT_EQ(Korvelcheck({"history", "old.xml", "new.xml", "-q"}).out, "verdict: allowed\n");
}

TEST_F(QuietOutputTest, QuietHistoryPrintsOnlyWhatIsRefused) {
  const std::string report = Korvelcheck({"history", "old.xml", "new.xml", "refused.xml", "refused.xml", "-q"}).out;
  EXPECT_THAT(report, AllOf(HasSubstr("verdict: refused\nstep 2: new.xml -> refused.xml: refused\n"),
                            HasSubstr("[primary-key.size]"), HasSubstr("\nold.xml -> refused.xml: refused\n")));
  EXPECT_THAT(report, AllOf(Not(HasSubstr("step 1")), Not(HasSubstr("step 3")), Not(HasSubstr("against the newest")),
                            Not(HasSubstr("older version"))));
}

}  // namespace
}  // namespace tool_test
