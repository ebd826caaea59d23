// The limit on findings of history: one for the whole call. It applied to each step.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::Not;

class HistoryLimitTest : public ToolTest {
 protected:
  // Every step refuses every table: a field shrinks.
  std::vector<std::string> WriteVersions(int versions, int tables) const {
    std::vector<std::string> files;
    for (int version = 1; version <= versions; ++version) {
      std::vector<std::string> all;
      for (int i = 0; i < tables; ++i) {
        const std::string text =
            "<entry name=\"text\" id=\"2\" type=\"string\" size=\"" + std::to_string(1000 - version) + "\"/>";
        all.push_back(Table({.name = "table_" + std::to_string(i), .fields = text}));
      }
      files.push_back("v" + std::to_string(version) + ".xml");
      Write(files.back(), Library(version, all));
    }
    return files;
  }
  Outcome History(const std::vector<std::string>& files, const std::vector<std::string>& more) const {
    return Korvelcheck(Joined(Joined({"history"}, files), more));
  }
};

TEST_F(HistoryLimitTest, CoversAllSteps) {
  const Outcome outcome = History(WriteVersions(4, 2), {"--max-findings", "3", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  const auto history = nlohmann::json::parse(outcome.out)["files"][0];
  ASSERT_EQ(history["steps"].size(), 3u);
  std::vector<std::size_t> listed;
  std::size_t left_out = 0;
  for (const auto& step : history["steps"]) {
    EXPECT_EQ(step["verdict"], "refused");
    EXPECT_EQ(step["tables"].size(), 2u);
    listed.push_back(step["findings"].size());
    EXPECT_EQ(step["causes"].size(), step["findings"].size());
    for (const auto& table : step["tables"]) {
      EXPECT_EQ(table["status"], "refused");
      left_out += table["changes"].value("left_out", std::size_t{0});
    }
  }
  EXPECT_EQ(listed, (std::vector<std::size_t>{2, 1, 0}));
  EXPECT_EQ(left_out, 3u);
  const auto& newest = history["against_newest"];
  EXPECT_EQ(newest[0]["refused"].size(), 2u);
  EXPECT_EQ(newest[1]["refused"].size(), 1u);
  EXPECT_EQ(newest[1]["left_out"], 1);
  EXPECT_EQ(newest[1]["verdict"], "refused");
}

TEST_F(HistoryLimitTest, ReportsWhatIsLeftOut) {
  const std::vector<std::string> files = WriteVersions(4, 2);
  const std::string text = History(files, {"--max-findings", "3"}).out;
  EXPECT_THAT(text, HasSubstr("    1 finding is not listed: the report has as many as --max-findings allows\n"));
  EXPECT_THAT(text, HasSubstr("  1 refused table is not listed: the report has as many as --max-findings allows\n"));
  EXPECT_THAT(text, HasSubstr("3 of 3 steps refused; the newest version is refused from 3 of 3 older versions\n"));
  EXPECT_THAT(History(files, {"--max-findings", "3", "--format", "html"}).out, HasSubstr("1 refused table not listed"));
  EXPECT_THAT(History(files, {"--max-findings", "3", "--format", "markdown"}).out, HasSubstr("6 findings"));
  const auto sarif = nlohmann::json::parse(History(files, {"--max-findings", "3", "--format", "sarif"}).out);
  EXPECT_EQ(sarif["runs"][0]["results"].size(), 6u);  // three findings, and a table that is not listed for each of the others
  EXPECT_THAT(History(files, {}).out, Not(HasSubstr("not listed")));
}

// The step of a refusal is found although its finding is not listed.
TEST_F(HistoryLimitTest, NamesStepsThatAreNotListed) {
  const auto json =
      nlohmann::json::parse(History(WriteVersions(4, 1), {"--max-findings", "1", "--format", "json"}).out)["files"][0];
  const auto& refused = json["against_newest"][0]["refused"][0];
  EXPECT_EQ(refused["step"], 3);
  EXPECT_EQ(refused["step_has_cause"], true);
}

TEST_F(HistoryLimitTest, ForgetsFindingsThatAreNotListed) {
  if (KORVEL_SANITIZED) GTEST_SKIP() << "sanitizers keep released memory";
  constexpr int kTables = 100;
  constexpr int kFew = 8;
  constexpr int kMany = 28;
  constexpr long kBytes = 2500;  // of a table in a step; with its changes and findings, 5.5 KB
  const auto peak_of = [&](int versions) { return History(WriteVersions(versions, kTables), {"--max-findings", "1"}).peak_kb; };
  const long few = peak_of(kFew);
  EXPECT_LE((peak_of(kMany) - few) * 1024 / (static_cast<long>(kTables) * (kMany - kFew)), kBytes);
}

}  // namespace
}  // namespace tool_test
