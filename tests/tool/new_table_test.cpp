// Tables that only the new schema has: the checker has nothing to compare them with, so they are checked against themselves.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "git_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kBadField[] = "<entry name=\"unit-price\" type=\"uint32\"/>";
constexpr char kRefused[] = "table carts added (refused by field-name.invalid: CheckFieldNameValidate failed! table:'carts')";

// new.xml adds the table carts, with a field name that the checker refuses.
class NewTableTest : public GitTest {
 protected:
  NewTableTest() {
    Write("old.xml", Library(5, {Table()}));
    Write("new.xml", Library(6, {Table(), Table({.name = "carts", .fields = kBadField})}));
  }

  Outcome Check(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"check", "old.xml", "new.xml"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Run(arguments);
  }
};

// Such a table passed unnoticed, and no change of it was ever allowed afterwards.
TEST_F(NewTableTest, IsReportedIfTheCheckerRefusesItAsItIs) {
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("verdict: allowed (with warnings)\n"));
  EXPECT_THAT(outcome.out, HasSubstr("new.xml:3:1: new: table carts (not compared)\n"
                                     "new.xml:3:1: warning [advice.new-table] the checker refuses a new table even if nothing "
                                     "changes in it\n"));
  EXPECT_THAT(outcome.out, HasSubstr(std::string("\n  change: ") + kRefused + "\n  suggestion: change the table until "));
  EXPECT_THAT(outcome.out, HasSubstr("accepts it: Use ASCII letters, digits and underscores, "));
  EXPECT_THAT(outcome.out,
              HasSubstr("\n0 tables refused, 1 allowed (0 changed, 1 unchanged); 1 compared, 1 new, 0 removed; 1 warning\n"));
}

TEST_F(NewTableTest, IsNotReportedIfItIsAcceptable) {
  Write("new.xml", Library(6, {Table(), Table({.name = "carts"})}));
  EXPECT_THAT(Check({"--fail-on", "warning"}).out, Not(HasSubstr("advice.")));
  EXPECT_EQ(Check({"--fail-on", "warning"}).exit_code, 0);
}

TEST_F(NewTableTest, IsCheckedWithItsSettings) {
  const std::string blob = "<entry name=\"blob\" type=\"bytes\" size=\"131073\"/>";
  Write("new.xml", Library(6, {Table(), Table({.name = "carts", .fields = blob})}));
  EXPECT_THAT(Check().out, Not(HasSubstr("advice.")));
  EXPECT_THAT(Check({"--server-version", "3.28.9"}).out, HasSubstr("(refused by length.limit: ERR_ENTRY_LEN;blob|)"));
  Write("korvelcheck.toml", "[tables.carts]\nserver-version = \"3.28.9\"\n");
  EXPECT_THAT(Check().out, HasSubstr("[advice.new-table]"));
  EXPECT_THAT(Check({"--table", "orders"}).out, Not(HasSubstr("advice.")));
}

TEST_F(NewTableTest, EveryFormatHasTheWarning) {
  const nlohmann::json json = nlohmann::json::parse(Check({"--format", "json"}).out);
  EXPECT_EQ(json["verdict"], "allowed");
  EXPECT_EQ(json["tables"][1]["status"], "new");
  const nlohmann::json& warning = json["tables"][1]["warnings"][0];
  EXPECT_EQ(warning["level"], "warning");
  EXPECT_EQ(warning["kind"], "table-added");
  EXPECT_EQ(warning["description"], kRefused);
  EXPECT_EQ(warning["path"], "carts");
  EXPECT_EQ(warning["old_location"], nullptr);
  EXPECT_EQ(warning["new_location"]["line"], 3);
  const nlohmann::json sarif = nlohmann::json::parse(Check({"--format", "sarif"}).out)["runs"][0];
  ASSERT_EQ(sarif["results"].size(), 1u);
  EXPECT_EQ(sarif["results"][0]["ruleId"], "advice.new-table");
  EXPECT_EQ(sarif["results"][0]["level"], "warning");
  EXPECT_THAT(Check({"--format", "github"}).out, HasSubstr("\n::warning file=new.xml,line=3,"));
  EXPECT_EQ(nlohmann::json::parse(Check({"--format", "gitlab"}).out)[0]["severity"], "minor");
  EXPECT_THAT(Check({"--format", "markdown"}).out, HasSubstr("\n| warning | <code>advice.new-table</code> |"));
  const std::string html = Check({"--format", "html"}).out;
  EXPECT_THAT(html, HasSubstr("<code>advice.new-table</code>"));
  EXPECT_THAT(html, HasSubstr("data-status=\"warning\""));
}

TEST_F(NewTableTest, JunitSkipsTheTableUnlessTheWarningFails) {
  const std::string skipped = Check({"--format", "junit"}).out;
  EXPECT_THAT(skipped, HasSubstr("tests=\"2\" failures=\"0\" errors=\"0\" skipped=\"1\""));
  EXPECT_THAT(skipped, HasSubstr("<skipped message=\"new table: there is nothing to compare it with\"/>\n"
                                 "      <system-out>new.xml:3:1: warning [advice.new-table] "));
  const std::string failed = Check({"--format", "junit", "--fail-on", "warning"}).out;
  EXPECT_THAT(failed, HasSubstr("tests=\"2\" failures=\"1\" errors=\"0\" skipped=\"0\""));
  EXPECT_THAT(failed, Not(HasSubstr("<skipped")));
}

TEST_F(NewTableTest, FailsTheCallOnRequestUnlessItIsWaived) {
  EXPECT_EQ(Check({"--fail-on", "warning"}).exit_code, 1);
  const auto json = nlohmann::json::parse(Check({"--format", "json"}).out);
  const std::string fingerprint = json["tables"][1]["warnings"][0]["fingerprint"];
  const Outcome waive = Run({"waive", fingerprint, "old.xml", "new.xml", "--reason", "it is for tests", "--until", "2026-01-01"});
  ASSERT_EQ(waive.exit_code, 0) << waive.err;
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr(std::string("\nchange = \"") + kRefused + "\"\n"));
  const Outcome waived = Check({"--fail-on", "warning"});
  EXPECT_EQ(waived.exit_code, 0);
  EXPECT_THAT(waived.out, HasSubstr("new.xml:3:1: waived [advice.new-table] "));
  Write("new.xml", Library(6, {Table(), Table({.name = "carts", .attributes = "Type=1", .fields = kBadField})}));
  EXPECT_EQ(Check({"--fail-on", "warning"}).exit_code, 1) << "another rule refuses the table now";
}

// A waiver of an earlier version names no table; a new table has no old library.
TEST_F(NewTableTest, BareFingerprintIsReplaced) {
  Write("korvelcheck.toml", "[[waivers]]\nfingerprint = \"0123456789abcdef\"\nreason = \"r\"\nuntil = 2026-01-01\n");
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("[waiver.malformed]"));
}

TEST_F(NewTableTest, ProjectCheckReportsTablesOfNewFiles) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"*.xml\"]\n");
  std::filesystem::remove(PathOf("new.xml"));
  Commit("first");
  Write("new.xml", Library(6, {Table({.name = "carts", .fields = kBadField})}));
  const Outcome outcome = Run({"check", "--against", "git:HEAD"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("new.xml:2:1: warning [advice.new-table] "));
  EXPECT_EQ(Run({"check", "--against", "git:HEAD", "--fail-on", "warning"}).exit_code, 1);
}

TEST_F(NewTableTest, HistoryReportsItInTheStep) {
  Write("v3.xml", Read("new.xml"));
  const Outcome outcome = Run({"history", "old.xml", "new.xml", "v3.xml"});
  EXPECT_THAT(outcome.out, HasSubstr("\n  new.xml:3:1: warning [advice.new-table] "));
  EXPECT_THAT(outcome.out, HasSubstr("; 1 warning\n")) << "the same warning about the newest version is not repeated";
}

}  // namespace
}  // namespace tool_test
