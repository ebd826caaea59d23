// Files that cannot be checked: their faults are findings in every format, and all other files are checked.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Json = nlohmann::json;

constexpr char kBroken[] = "<metalib name=\"m\" version=\"1\">\n  <meta name=\"a\">\n</metalib>\n";
constexpr char kMismatch[] = "the end tag does not match its start tag";

class FaultTest : public ProjectTest {
 protected:
  // "RULE FILE:LINE:COLUMN" of each fault of a JSON report.
  static std::vector<std::string> Faults(const Outcome& outcome) {
    std::vector<std::string> lines;
    const Json json = Json::parse(outcome.out, nullptr, false);
    if (json.is_discarded()) return {"no report: " + outcome.err};
    for (const Json& fault : json.value("faults", Json::array())) {
      const Json& at = fault["location"];
      lines.push_back(fault["rule"].get<std::string>());
      if (at.is_null()) continue;
      lines.back() += " " + at["file"].get<std::string>();
      if (!at["line"].is_null()) lines.back() += ":" + at["line"].dump() + ":" + at["column"].dump();
    }
    return lines;
  }

  // One broken file, one refused table, one allowed table.
  Outcome CheckOneBroken(const std::string& format) const {
    Write("schemas/orders.xml", kBroken);
    Write("schemas/users.xml", Schema("users", "uint32"));
    return Against({"--format", format});
  }
};

// One broken file hid the findings of all others, and there was no report.
TEST_F(FaultTest, OtherFilesAreChecked) {
  const Outcome outcome = CheckOneBroken("json");
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.err, std::string("schemas/orders.xml:3:3: error: ") + kMismatch +
                             "; allowed: the end tag of the innermost open element\n");
  EXPECT_THAT(Faults(outcome), ElementsAre("schema.syntax schemas/orders.xml:3:3"));
  EXPECT_THAT(Tables(outcome), ElementsAre("schemas/deep/items.xml: items allowed", "schemas/users.xml: users refused"));
  const Json report = Json::parse(outcome.out);
  EXPECT_EQ(report["verdict"], "incomplete");
  EXPECT_EQ(report["findings"].size(), 1u);
  EXPECT_EQ(report["summary"]["files_not_checked"], 1);
  EXPECT_EQ(report["summary"]["failing"], 2);
  const Json& fault = report["faults"][0];
  EXPECT_EQ(fault["text"], kMismatch);
  EXPECT_EQ(fault["allowed"], "the end tag of the innermost open element");
  EXPECT_EQ(fault["needed_by"], nullptr);
}

TEST_F(FaultTest, TextReportListsFaultsFirst) {
  const Outcome outcome = CheckOneBroken("text");
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, HasSubstr("schemas/orders.xml:3:3: error: "));
  EXPECT_THAT(outcome.out,
              testing::StartsWith("verdict: incomplete (1 file was not checked)\n"
                                  "project file: korvelcheck.toml (3 files)\n"
                                  "schemas/orders.xml:3:3: error [schema.syntax] the end tag does not match its start tag\n"
                                  "  allowed: the end tag of the innermost open element\n"
                                  "schemas/users.xml:2:1: refused: table users: -3 ERROR_VALUE_FIELD\n"));
  EXPECT_THAT(outcome.out, HasSubstr("1 table refused, 1 allowed (0 changed, 1 unchanged); 2 compared, 0 new, 0 removed; 1 "
                                     "finding, 0 waived; 1 file not checked\n"));
}

TEST_F(FaultTest, SarifSaysThatTheRunFailed) {
  const Json run = Json::parse(CheckOneBroken("sarif").out)["runs"][0];
  const Json& invocation = run["invocations"][0];
  EXPECT_EQ(invocation["executionSuccessful"], false);
  EXPECT_EQ(invocation["exitCode"], 2);
  ASSERT_EQ(invocation["toolExecutionNotifications"].size(), 2u);
  EXPECT_EQ(invocation["toolExecutionNotifications"][1]["message"]["text"], "project file: korvelcheck.toml (3 files)");
  EXPECT_EQ(invocation["toolExecutionNotifications"][0]["level"], "error");
  ASSERT_EQ(run["results"].size(), 2u);
  const Json& fault = run["results"][0];
  EXPECT_EQ(fault["ruleId"], "schema.syntax");
  EXPECT_EQ(fault["level"], "error");
  const Json& place = fault["locations"][0]["physicalLocation"];
  EXPECT_EQ(place["artifactLocation"]["uri"], "schemas/orders.xml");
  EXPECT_EQ(place["region"]["startLine"], 3);
  const Json& rule = run["tool"]["driver"]["rules"][fault["ruleIndex"].get<std::size_t>()];
  EXPECT_EQ(rule["id"], "schema.syntax");
  EXPECT_THAT(rule["helpUri"].get<std::string>(), testing::EndsWith("/docs/rules/schema-syntax.md"));
  EXPECT_EQ(run["results"][1]["ruleId"], "primary-key.size");
}

TEST_F(FaultTest, OtherFormatsHaveFaultsAndFindings) {
  const std::string junit = CheckOneBroken("junit").out;
  EXPECT_THAT(junit, HasSubstr("<testsuites name=\"korvelcheck check\" tests=\"3\" failures=\"1\" errors=\"1\" skipped=\"0\">"));
  EXPECT_THAT(junit, HasSubstr("<testcase name=\"schema.syntax at schemas/orders.xml:3:3\" classname=\"not checked\" "
                               "file=\"schemas/orders.xml\">\n      <error message=\"the end tag does not match its start tag\" "
                               "type=\"schema.syntax\">"));
  const std::string github = Against({"--format", "github"}).out;
  EXPECT_THAT(github, HasSubstr("::notice title=korvelcheck::verdict: incomplete (1 file was not checked)"));
  EXPECT_THAT(github, HasSubstr("\n::error file=schemas/orders.xml,line=3,endLine=3,col=3,endColumn=3,title=korvelcheck%3A "
                                "schema.syntax::the end tag does not match its start tag%0Aallowed: "));
  EXPECT_THAT(github, HasSubstr("primary-key.size"));
  const Json gitlab = Json::parse(Against({"--format", "gitlab"}).out);
  ASSERT_EQ(gitlab.size(), 2u);
  EXPECT_EQ(gitlab[0]["check_name"], "schema.syntax");
  EXPECT_EQ(gitlab[0]["severity"], "critical");
  EXPECT_EQ(gitlab[0]["location"]["path"], "schemas/orders.xml");
  EXPECT_EQ(gitlab[0]["location"]["lines"]["begin"], 3);
  const std::string markdown = Against({"--format", "markdown"}).out;
  EXPECT_THAT(markdown, HasSubstr("### korvelcheck: incomplete (1 file was not checked)\n"));
  EXPECT_THAT(markdown, HasSubstr("| error | <code>schema.syntax</code> | <code>schemas/orders.xml:3:3</code> | the end tag does "
                                  "not match its start tag |"));
  const std::string html = Against({"--format", "html"}).out;
  EXPECT_THAT(html, HasSubstr("verdict: incomplete (1 file was not checked)"));
  EXPECT_THAT(html, HasSubstr("<code>schema.syntax</code>"));
  for (const char* format : {"junit", "github", "gitlab", "markdown", "html"}) {
    EXPECT_EQ(Against({"--format", format}).exit_code, 2) << format;
  }
}

// Its location is in the baseline. A service that shows the new files gets no line of it.
TEST_F(FaultTest, FaultOfTheBaselineNamesItsRevision) {
  Write("schemas/late.xml", kBroken);
  Commit("second");
  Write("schemas/late.xml", Schema("late"));
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(Faults(outcome), ElementsAre("schema.syntax git:HEAD:schemas/late.xml:3:3"));
  EXPECT_EQ(Json::parse(outcome.out)["faults"][0]["needed_by"], "schemas/late.xml");
  EXPECT_EQ(Tables(outcome).size(), 3u);
  EXPECT_THAT(Against({"--format", "github"}).out,
              HasSubstr("::error file=schemas/late.xml,title=korvelcheck%3A schema.syntax::git:HEAD:schemas/late.xml:3:3: "));
  const Json gitlab = Json::parse(Against({"--format", "gitlab"}).out);
  EXPECT_EQ(gitlab[0]["location"]["path"], "schemas/late.xml");
  EXPECT_THAT(gitlab[0]["content"]["body"].get<std::string>(), HasSubstr("cannot be compared with"));
}

TEST_F(FaultTest, EveryKindHasItsRule) {
  Write("schemas/orders.xml", "<metalib name=\"m\" version=\"1\" colour=\"red\"/>");
  Write("schemas/users.xml", "QMXIMAGE");
  std::filesystem::create_symlink("orders.xml", PathOf("schemas/link.xml"));
  Korvelcheck({"compile", "schemas/deep/items.xml", "-o", "schemas/deep/items.qmb"});
  Write("schemas/users.xml", Read("schemas/deep/items.qmb").substr(0, 100));
  std::filesystem::remove(PathOf("schemas/deep/items.qmb"));
  Git({"add", "schemas/link.xml"});
  Git({"commit", "-q", "-m", "link"});
  std::filesystem::remove(PathOf("schemas/link.xml"));
  Write("schemas/link.xml", Schema("link"));
  const std::vector<std::string> faults = Faults(Against({"--format", "json"}));
  EXPECT_THAT(faults, testing::IsSupersetOf({"schema.image schemas/users.xml", "schema.unreadable git:HEAD:schemas/link.xml"}));
  EXPECT_THAT(faults, testing::Contains("schema.invalid schemas/orders.xml:1:31"));
}

TEST_F(FaultTest, CannotBeWaived) {
  CheckOneBroken("text");
  Write("korvelcheck.toml",
        "[schemas]\npaths = [\"schemas/**/*.xml\"]\n"
        "[[waivers]]\nrule = \"schema.syntax\"\ntable = \"orders\"\nentry = \"\"\nreason = \"r\"\nuntil = \"2999-01-01\"\n");
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(Faults(outcome), ElementsAre("schema.syntax schemas/orders.xml:3:3"));
}

// The table of the waiver may be in the file that was not checked.
TEST_F(FaultTest, WaiversAreNotUnusedBecauseOfAFault) {
  Write("korvelcheck.toml",
        "[schemas]\npaths = [\"schemas/**/*.xml\"]\n"
        "[[waivers]]\nrule = \"primary-key.size\"\ntable = \"orders\"\nentry = \"orders.uid\"\nreason = \"r\"\nuntil = "
        "\"2999-01-01\"\n");
  EXPECT_THAT(Against().out, HasSubstr("waiver.unused"));
  Write("schemas/orders.xml", kBroken);
  EXPECT_THAT(Against().out, Not(HasSubstr("waiver.unused")));
}

TEST_F(FaultTest, SeveralBaselinesReportAFaultOnce) {
  Git({"tag", "v1"});
  Write("schemas/orders.xml", kBroken);
  const Outcome outcome = Against({"--against", "git:v1", "--format", "json"});
  EXPECT_THAT(Faults(outcome), ElementsAre("schema.syntax schemas/orders.xml:3:3"));
}

TEST_F(FaultTest, UnknownTableMayBeInTheFaultyFile) {
  Write("schemas/orders.xml", kBroken);
  const Outcome outcome = Against({"--table", "orders", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(Faults(outcome), ElementsAre("schema.syntax schemas/orders.xml:3:3"));
}

TEST_F(FaultTest, LintChecksTheOtherFiles) {
  Write("broken.xml", kBroken);
  Write("empty.xml", "<metalib name=\"m\" version=\"1\">\n<meta name=\"a\"><entry name=\"b\" type=\"int8\"/></meta>\n</metalib>");
  const Outcome outcome = Run({"lint", "broken.xml", "schemas/users.xml", "empty.xml", "missing.xml", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(Faults(outcome),
              ElementsAre("schema.syntax broken.xml:3:3", "schema.unreadable missing.xml", "schema.no-table empty.xml"));
  EXPECT_THAT(Tables(outcome), ElementsAre("schemas/users.xml: users allowed"));
  EXPECT_THAT(outcome.err, HasSubstr("korvelcheck: empty.xml: no table (a meta with a primary key)\n"));
}

// People see the messages of a call about few files on standard error, programs get a report in any case.
TEST_F(FaultTest, CallsAboutTwoFilesReportFaultsToPrograms) {
  Write("broken.xml", kBroken);
  const std::string message =
      "broken.xml:3:3: error: the end tag does not match its start tag; allowed: the end tag of the innermost open element\n";
  ExpectInputError(Run({"check", "schemas/users.xml", "broken.xml"}), message);
  for (const char* command : {"check", "compat", "values", "same"}) {
    const Outcome outcome = Run({command, "schemas/users.xml", "broken.xml", "--format", "json"});
    EXPECT_EQ(outcome.exit_code, 2) << command;
    EXPECT_EQ(outcome.err, message);
    EXPECT_THAT(Faults(outcome), ElementsAre("schema.syntax broken.xml:3:3"));
    EXPECT_EQ(Json::parse(outcome.out)["command"], command);
  }
}

}  // namespace
}  // namespace tool_test
