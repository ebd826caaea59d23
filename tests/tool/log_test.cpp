// The checker's log: whether it is written, to which file, in which format, from which level.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::SizeIs;

class LogTest : public ToolTest {
 protected:
  Outcome CheckWide(const std::vector<std::string>& options) const {
    std::vector<std::string> arguments = {"check", "old.xml", "wide.xml", "--table", "orders"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Korvelcheck(arguments);
  }
};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

constexpr char kRefusal[] = "The size of primarykey can't be modified! entry:'uid' metaname:'orders'";

TEST_F(LogTest, LogsNothingByDefault) { EXPECT_EQ(CheckWide({}).err, ""); }

TEST_F(LogTest, MinusIsStandardError) {
  const Outcome outcome = CheckWide({"--log", "-"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, testing::StartsWith("verdict: refused\n"));
  const std::vector<std::string> lines = Lines(outcome.err);
  ASSERT_FALSE(lines.empty());
  EXPECT_THAT(lines.front(), HasSubstr("Z INFO src/common/modify_table.cpp:"));
  EXPECT_THAT(lines.front(), HasSubstr(" KorvelModifyTable: "));
  EXPECT_THAT(lines.back(), HasSubstr("Z ERROR src/common/modify_table_record.cpp:"));
  EXPECT_THAT(lines.back(), EndsWith(std::string(" CompareEntryValueField: ") + kRefusal));
}

TEST_F(LogTest, AppendsToFile) {
  Write("log", "first\n");
  const Outcome outcome = CheckWide({"--log", "log", "--log-level", "error"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(outcome.err, "");
  const std::vector<std::string> lines = Lines(Read("log"));
  ASSERT_THAT(lines, SizeIs(2));
  EXPECT_EQ(lines[0], "first");
  EXPECT_THAT(lines[1], EndsWith(kRefusal));
}

TEST_F(LogTest, JsonLines) {
  const std::vector<std::string> lines = Lines(CheckWide({"--log", "-", "--log-format", "json", "--log-level", "error"}).err);
  ASSERT_THAT(lines, SizeIs(1));
  const nlohmann::json record = nlohmann::json::parse(lines[0]);
  EXPECT_EQ(record.at("priority"), 300);
  EXPECT_EQ(record.at("level"), "ERROR");
  EXPECT_EQ(record.at("function"), "CompareEntryValueField");
  EXPECT_EQ(record.at("message"), kRefusal);
}

TEST_F(LogTest, LogsFromTheMinimumLevel) {
  const std::string large = "<entry name=\"history\" id=\"2\" type=\"bytes\" size=\"";
  Write("old.xml", Library(5, {Table({.fields = large + "1000\"/>"})}));
  Write("new.xml", Library(5, {Table({.fields = large + "500000\"/>"})}));
  const auto levels = [&](const std::string& level) {
    const Outcome outcome = Korvelcheck({"check", "old.xml", "new.xml", "--server-version", "3.0", "--whitelist", "history",
                                         "--log", "-", "--log-format", "json", "--log-level", level});
    std::set<std::string> found;
    for (const std::string& line : Lines(outcome.err)) found.insert(nlohmann::json::parse(line).at("level"));
    return found;
  };
  EXPECT_EQ(levels("error"), (std::set<std::string>{}));
  EXPECT_EQ(levels("warn"), (std::set<std::string>{"WARN"}));
  EXPECT_EQ(levels("info"), (std::set<std::string>{"INFO", "WARN"}));
}

TEST_F(LogTest, LogDoesNotChangeTheReport) {
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "wide.xml", "--log", "-"}).out, Korvelcheck({"check", "old.xml", "wide.xml"}).out);
}

TEST_F(LogTest, LogThatCannotBeOpenedIsAnInputError) {
  ExpectInputError(CheckWide({"--log", "no/log"}), "korvelcheck: cannot open the log 'no/log': No such file or directory\n");
}

TEST_F(LogTest, LogThatCannotBeWrittenIsAnInternalError) {
  const Outcome outcome = CheckWide({"--log", "/dev/full"});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.out, testing::StartsWith("verdict: refused\n"));
  EXPECT_EQ(outcome.err, "korvelcheck: cannot write the log: No space left on device\n");
}

// A table with a structure to which 2^levels paths lead.
std::string ManyPaths(int levels) {
  std::vector<std::string> metas = {Table({.fields = "<entry name=\"v\" type=\"s0\"/>"})};
  for (int i = 0; i < levels; ++i) {
    const std::string type = i + 1 < levels ? "s" + std::to_string(i + 1) : "int8";
    metas.push_back("<meta name=\"s" + std::to_string(i) + "\"><entry name=\"a\" type=\"" + type +
                    "\"/><entry name=\"b\" type=\"" + type + "\"/></meta>");
  }
  return Library(5, metas);
}

// Regression: with a log, each path was followed, and the call did not end.
TEST_F(LogTest, StopsAtItsLimit) {
  Write("deep.xml", ManyPaths(60));
  Write("log", "first\n");
  const Outcome outcome = Korvelcheck({"same", "deep.xml", "deep.xml", "--log", "log"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_EQ(outcome.out, Korvelcheck({"same", "deep.xml", "deep.xml"}).out);
  EXPECT_EQ(outcome.err, "korvelcheck: the log stops after 67108864 bytes; the report is complete\n");
  const std::string log = Read("log");
  EXPECT_GT(log.size(), 67'108'864u - 300);
  EXPECT_LT(log.size(), 67'108'864u + 300);
  const std::string last = log.substr(log.rfind('\n', log.size() - 2) + 1);
  EXPECT_THAT(last, HasSubstr(" WARN src/vesk/log_category.cpp:"));
  EXPECT_THAT(last, EndsWith(" the log stops here: at most 67108864 bytes are written\n"));
}

// A log that fails must not cost more than one that is written.
TEST_F(LogTest, LogThatCannotBeWrittenStopsAtItsLimit) {
  Write("deep.xml", ManyPaths(60));
  const Outcome outcome = Korvelcheck({"same", "deep.xml", "deep.xml", "--log", "/dev/full"});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_EQ(outcome.err, "korvelcheck: cannot write the log: No space left on device\n");
}

}  // namespace
}  // namespace tool_test
