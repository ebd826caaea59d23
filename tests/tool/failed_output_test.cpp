// What a call that fails leaves under -o: never the report of an earlier call, and never less than before otherwise.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tool_test.h"

namespace tool_test {
namespace {

class FailedOutputTest : public ToolTest {};

TEST_F(FailedOutputTest, FailedCallReplacesTheOldReport) {
  Write("report", "[]");
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "missing.xml", "-o", "report", "--format", "gitlab"}).exit_code, 2);
  EXPECT_THAT(Read("report"), testing::HasSubstr("\"check_name\": \"schema.unreadable\""));
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "same.xml", "--table", "t", "-o", "report"}).exit_code, 2);
  EXPECT_THAT(Read("report"), testing::StartsWith("verdict: incomplete (the check failed)\nerror [check.failed] table 't' "));
  EXPECT_EQ(Korvelcheck({"history", "old.xml", "missing.xml", "-o", "report"}).exit_code, 2);
  EXPECT_THAT(Read("report"), testing::HasSubstr("error [schema.unreadable] "));
}

TEST_F(FailedOutputTest, WrongUsageDiscardsTheOldReport) {
  const std::vector<std::string> before = Files();
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{{"--bogus", "-o", "report"},
                                                                                     {"-oreport", "--format", "jsn"},
                                                                                     {"--output", "report", "third.xml"},
                                                                                     {"--max-findings=0", "--output=report"}}) {
    Write("report", "[]");
    std::vector<std::string> call = {"check", "old.xml", "same.xml"};
    call.insert(call.end(), words.begin(), words.end());
    EXPECT_EQ(Korvelcheck(call).exit_code, 2);
    EXPECT_EQ(Files(), before) << words.front();
  }
}

TEST_F(FailedOutputTest, OtherReportsAreDiscardedToo) {
  const std::vector<std::string> before = Files();
  for (const char* command : {"diff", "layout", "waivers"}) {
    Write("report", "{}");
    EXPECT_EQ(Korvelcheck({command, "old.xml", "missing.xml", "-o", "report"}).exit_code, 2);
    EXPECT_EQ(Files(), before) << command;
  }
}

// An image or a fixed schema is no report: nothing is lost.
TEST_F(FailedOutputTest, OtherResultsAreKept) {
  for (const std::vector<std::string>& call : std::vector<std::vector<std::string>>{
           {"compile", "missing.xml"}, {"dump", "missing.xml"}, {"suggest", "old.xml", "missing.xml"}}) {
    Write("result", "old");
    std::vector<std::string> words = call;
    words.insert(words.end(), {"-o", "result"});
    EXPECT_EQ(Korvelcheck(words).exit_code, 2);
    EXPECT_EQ(Read("result"), "old") << call.front();
  }
}

// A call that fails before it knows its inputs must not replace one of them.
TEST_F(FailedOutputTest, FailedCallKeepsInputs) {
  const std::string schema = Read("same.xml");
  Write("broken.xml", "<<<<<<< HEAD\n<metalib");
  Write("garbage.xml", "garbage");
  Write("other.toml", "[schemas\n");
  const auto expect_kept = [&](const std::string& file, const std::vector<std::string>& words) {
    const std::string text = Read(file);
    std::vector<std::string> call = {"check", "-o", file};
    call.insert(call.end(), words.begin(), words.end());
    EXPECT_EQ(Korvelcheck(call).exit_code, 2) << file;
    EXPECT_EQ(Read(file), text);
  };
  expect_kept("same.xml", {"old.xml", "same.xml", "--bogus"});
  expect_kept("same.xml", {"--against", "git:nope"});
  expect_kept("broken.xml", {"--against", "git:nope"});
  expect_kept("garbage.xml", {"old.xml", "garbage.xml", "--bogus"});
  expect_kept("other.toml", {"old.xml", "same.xml", "--project", "other.toml"});
  expect_kept("other.toml", {"old.xml", "same.xml", "--project=other.toml"});
  Write("korvelcheck.toml", "[schemas\n");
  expect_kept("korvelcheck.toml", {"old.xml", "same.xml"});
}

TEST_F(FailedOutputTest, FailedCallLeavesWhatIsNoRegularFile) {
  std::filesystem::create_directory(PathOf("sub"));
  Write("sub/real", "[]");
  std::filesystem::create_symlink("sub/real", PathOf("link"));
  ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
  for (const char* file : {"link", "pipe", "sub", "/dev/null"}) {
    EXPECT_EQ(Korvelcheck({"check", "old.xml", "--bogus", "-o", file}).exit_code, 2);
    EXPECT_EQ(Korvelcheck({"check", "old.xml", "missing.xml", "-o", file}).exit_code, 2);
  }
  EXPECT_TRUE(std::filesystem::is_symlink(PathOf("link")));
  EXPECT_THAT(Read("sub/real"), testing::HasSubstr("error [schema.unreadable]"));
  EXPECT_TRUE(std::filesystem::is_fifo(PathOf("pipe")));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

}  // namespace
}  // namespace tool_test
