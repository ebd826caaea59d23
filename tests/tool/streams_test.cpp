// Every command and format if standard output cannot be written.
#include <gmock/gmock.h>

#include "tool_test.h"

namespace tool_test {
namespace {

struct ToolMessage {
  std::vector<std::string> arguments;
  std::vector<std::string> formats = {"text"};
};

const std::vector<std::string> kReportFormats = {"text",   "json",     "sarif", "junit",         "github",
                                                 "gitlab", "markdown", "html",  "github-review", "gitlab-review"};

const ToolMessage kSaid[] = {
    {{"check", "old.xml", "wide.xml"}, kReportFormats},
    {{"lint", "old.xml"}, kReportFormats},
    {{"compat", "old.xml", "wide.xml"}, kReportFormats},
    {{"values", "old.xml", "wide.xml"}, {"text", "json"}},
    {{"same", "old.xml", "same.xml"}, {"text", "json"}},
    {{"sortlist", "old.xml", "same.xml"}, {"text", "json"}},
    {{"history", "old.xml", "same.xml", "wide.xml"}, {"text", "json", "sarif", "junit", "github", "gitlab", "markdown", "html"}},
    {{"diff", "old.xml", "wide.xml"}, {"text", "json"}},
    {{"layout", "old.xml", "wide.xml"}, {"text", "json"}},
    {{"rules"}, {"text", "json", "markdown"}},
    {{"explain", "primary-key.size"}, {"text", "json", "markdown"}},
    {{"waivers", "old.xml", "wide.xml"}, {"text", "json"}},
    {{"suggest", "old.xml", "wide.xml"}, {}},
    {{"suggest", "old.xml", "wide.xml", "--file"}, {}},
    {{"compile", "old.xml", "-o", "-"}, {}},
    {{"dump", "old.xml"}, {}},
    {{"completion", "bash"}, {}},
    {{"man"}, {}},
    {{"help"}, {}},
    {{"check", "--help"}, {}},
    {{"--help"}, {}},
    {{"--version"}, {}},
};

class StreamsTest : public ToolTest {
 protected:
  StreamsTest() { Write("korvelcheck.toml", ""); }

  // Calls `expect` for every call that prints something, with its usual outcome.
  template <class Expect>
  void ForEachCall(Expect expect) const {
    for (const ToolMessage& said : kSaid) {
      std::vector<std::vector<std::string>> calls;
      for (const std::string& format : said.formats) {
        calls.push_back(said.arguments);
        calls.back().insert(calls.back().end(), {"--format", format});
      }
      if (calls.empty()) calls.push_back(said.arguments);
      for (const auto& arguments : calls) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Outcome usual = Korvelcheck(arguments);
        ASSERT_THAT(usual.exit_code, testing::AnyOf(0, 1)) << usual.err;
        ASSERT_NE(usual.out, "");
        expect(arguments, usual);
      }
    }
  }
};

// The exit code stays the same, and SIGPIPE has no effect.
TEST_F(StreamsTest, ClosedReaderKeepsTheExitCode) {
  ForEachCall([this](const std::vector<std::string>& arguments, const Outcome& usual) {
    ExpectOutcome(Korvelcheck(Call{.arguments = arguments, .output = Stream::kReaderGone}), usual.exit_code, "", "");
  });
}

TEST_F(StreamsTest, WriteFailureIsAnInternalError) {
  ForEachCall([this](const std::vector<std::string>& arguments, const Outcome& /*usual*/) {
    ExpectOutcome(Korvelcheck(Call{.arguments = arguments, .output = Stream::kFull}), 3, "",
                  "korvelcheck: cannot write standard output: No space left on device\n");
    ExpectOutcome(Korvelcheck(Call{.arguments = arguments, .output = Stream::kClosed}), 3, "",
                  "korvelcheck: cannot write standard output: Bad file descriptor\n");
  });
}

TEST_F(StreamsTest, CoversEveryCommand) {
  std::vector<std::string> tried;
  for (const ToolMessage& said : kSaid) tried.push_back(said.arguments.front());
  tried.insert(tried.end(), {"waive", "lsp"});  // print nothing; tests/lsp
  for (const std::string& name : CommandNames()) EXPECT_THAT(tried, testing::Contains(name));
}

// Runs the program with streams as a shell redirects them.
Call Redirected(const std::vector<std::string>& arguments, const std::string& redirections) {
  return {.arguments = arguments, .launcher = {"/bin/sh", "-c", "exec \"$0\" \"$@\" " + redirections}};
}

// A file opened next would get the number of the closed stream, and error messages would go there.
TEST_F(StreamsTest, ClosedStreamsHarmNoFile) {
  ExpectOutcome(Korvelcheck(Redirected({"check", "old.xml", "wide.xml", "--no-project", "-o", "report"}, "<&- >&- 2>&-")), 1, "",
                "");
  EXPECT_EQ(Verdicts(Read("report")), kWideFinding);
  const std::string before = Read("old.xml");
  ExpectOutcome(Korvelcheck(Redirected({"check", "old.xml", "none.xml", "--log", "log"}, "<&- >&- 2>&-")), 2, "", "");
  EXPECT_EQ(Read("old.xml"), before);
  EXPECT_EQ(Read("log"), "");
}

TEST_F(StreamsTest, FullStandardErrorKeepsTheExitCode) {
  for (const char* const errors : {"2>&-", "2>/dev/full"}) {
    ExpectOutcome(Korvelcheck(Redirected({"check", "old.xml", "none.xml"}, errors)), 2, "", "");
    ExpectOutcome(Korvelcheck(Redirected({"check", "old.xml", "same.xml"}, std::string("> /dev/full ") + errors)), 3, "", "");
  }
}

}  // namespace
}  // namespace tool_test
