// Histories that must not pass for allowed: versions that cannot be read, and calls that fail.
#include <gmock/gmock.h>

#include <cstdlib>

#include "history_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

// --- Versions that cannot be read ---

class UnreadableVersionTest : public HistoryVerdictTest {
 protected:
  UnreadableVersionTest() {
    CommitFile("a.xml", Schema("a"));
    broken_ = CommitFile("a.xml", "<x");
    CommitFile("a.xml", Schema("a", kNote));
    Write("a.xml", "<x");
  }
  Outcome Formatted(const std::string& format) const {
    Outcome outcome = History({"--git", "a.xml"}, format);
    EXPECT_EQ(outcome.exit_code, 2) << format;
    EXPECT_THAT(outcome.err, HasSubstr("git:" + broken_ + ":a.xml:1:")) << format;
    return outcome;
  }
  std::string broken_;
};

// The verdict was allowed, and SARIF said that the run was successful with exit code 1.
TEST_F(UnreadableVersionTest, VerdictIsIncompleteInEveryFormat) {
  EXPECT_THAT(Formatted("text").out, testing::StartsWith("verdict: incomplete (2 versions cannot be read)\n"));
  EXPECT_THAT(Formatted("html").out,
              HasSubstr("<p class=\"verdict refused\">verdict: incomplete (2 versions cannot be read)</p>"));
  EXPECT_THAT(Formatted("markdown").out, HasSubstr("### korvelcheck: incomplete"));
  EXPECT_THAT(Formatted("github").out, HasSubstr("verdict: incomplete"));
  EXPECT_THAT(Formatted("junit").out, HasSubstr("errors=\"2\""));
  const Json gitlab = Parsed(Formatted("gitlab"));
  ASSERT_EQ(gitlab.size(), 2u);
  EXPECT_EQ(gitlab[0]["check_name"], "schema.syntax");
  EXPECT_EQ(gitlab[0]["location"]["path"], "a.xml");
}

TEST_F(UnreadableVersionTest, JsonListsTheFaults) {
  const Json json = Parsed(Formatted("json"));
  EXPECT_EQ(json["verdict"], "incomplete");
  EXPECT_EQ(json["files"][0]["verdict"], "incomplete");
  EXPECT_EQ(json["files"][0]["steps"][0]["verdict"], "allowed");
  EXPECT_EQ(json["files"][0]["versions"][1]["faults"].size(), 1u);
  ASSERT_EQ(json["faults"].size(), 2u);
  EXPECT_EQ(json["faults"][0]["rule"], "schema.syntax");
  EXPECT_EQ(json["faults"][0]["location"]["file"], "git:" + broken_ + ":a.xml");
  EXPECT_EQ(json["faults"][1]["location"]["file"], "a.xml");
}

TEST_F(UnreadableVersionTest, SarifSaysThatTheRunFailed) {
  const Json run = Parsed(Formatted("sarif"))["runs"][0];
  EXPECT_EQ(run["invocations"][0]["executionSuccessful"], false);
  EXPECT_EQ(run["invocations"][0]["exitCode"], 2);
  EXPECT_EQ(run["properties"]["verdict"], "incomplete");
  EXPECT_EQ(run["results"][0]["ruleId"], "schema.syntax");
}

// As for check, a refusal does not replace the verdict.
TEST_F(UnreadableVersionTest, VerdictIsIncompleteIfSomethingIsRefused) {
  CommitFile("a.xml", Schema("a", kNote, "uint32"));
  EXPECT_EQ(Parsed(Formatted("json"))["verdict"], "incomplete");
  EXPECT_EQ(Parsed(Formatted("json"))["files"][0]["steps"][1]["verdict"], "refused");
}

// --- Calls that fail ---

class FailedHistoryTest : public HistoryVerdictTest {
 protected:
  // The report has one fault of the rule; standard error has its message.
  void ExpectFault(const std::vector<std::string>& arguments, const std::string& rule, const std::string& text) const {
    const Outcome outcome = History(arguments, "json");
    EXPECT_EQ(outcome.exit_code, 2);
    EXPECT_THAT(outcome.err, HasSubstr(text));
    const Json json = Parsed(outcome);
    ASSERT_TRUE(json.is_object()) << outcome.out;
    EXPECT_EQ(json["command"], "history");
    EXPECT_EQ(json["verdict"], "incomplete");
    EXPECT_EQ(json["files"].size(), 0u);
    ASSERT_EQ(json["faults"].size(), 1u);
    EXPECT_EQ(json["faults"][0]["rule"], rule);
    const Json run = Parsed(History(arguments, "sarif"))["runs"][0];
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], false);
    EXPECT_EQ(run["results"][0]["ruleId"], rule);
    EXPECT_THAT(History(arguments, "junit").out, HasSubstr("errors=\"1\""));
    EXPECT_THAT(History(arguments, "html").out, HasSubstr("verdict: incomplete (the check failed)"));
    EXPECT_EQ(History(arguments).out, "");
  }
};

// There was no report.
TEST_F(FailedHistoryTest, ReportHasTheFault) {
  CommitFile("a.xml", Schema("a"));
  CommitFile("a.xml", Schema("a", kNote));
  ExpectFault({"--tags", "v*", "a.xml"}, "check.failed", "no tag matches");
  ExpectFault({"--from", "v1", "a.xml"}, "check.failed", "unknown revision");
  ExpectFault({"--from", "HEAD", "a.xml"}, "check.failed", "only one commit");
  Write("broken.xml", "<x");
  ExpectFault({"a.xml", "broken.xml"}, "schema.syntax", "broken.xml:1:");
  ExpectFault({"a.xml", "missing.xml"}, "schema.unreadable", "missing.xml");
}

TEST_F(FailedHistoryTest, OutputFileHasTheReport) {
  CommitFile("a.xml", Schema("a"));
  Write("report.txt", "verdict: allowed\n");
  EXPECT_EQ(History({"--tags", "v*", "a.xml", "-o", "report.txt"}).exit_code, 2);
  EXPECT_THAT(Read("report.txt"), testing::StartsWith("verdict: incomplete (the check failed)\nerror [check.failed] "));
}

TEST_F(FailedHistoryTest, WrongUsageHasNoReport) {
  const Outcome outcome = History({"a.xml"}, "json");
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.out, "");
}

TEST_F(FailedHistoryTest, JsonMatchesItsSchema) {
  CommitFile("a.xml", Schema("a"));
  Write("failed.json", History({"--tags", "v*", "a.xml"}, "json").out);
  CommitFile("a.xml", "<x");
  CommitFile("a.xml", Schema("a", kNote));
  Write("unreadable.json", History({"--git", "a.xml"}, "json").out);
  const std::string source = KORVEL_SOURCE_DIR;
  for (const char* const file : {"failed.json", "unreadable.json"}) {
    const std::string command = KORVEL_PYTHON " '" + source + "/tests/report/validate.py' '" + source +
                                "/docs/history.schema.json' '" + PathOf(file).string() + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
  }
}

}  // namespace
}  // namespace tool_test
