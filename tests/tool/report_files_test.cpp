// --report: the same report in further formats, each in a file of its own.
#include <gmock/gmock.h>

#include "git_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

using Words = std::vector<std::string>;

constexpr const char* kFormats[] = {"text", "json", "sarif", "junit", "github", "gitlab", "markdown", "html"};

Words With(Words call, const Words& more) {
  call.insert(call.end(), more.begin(), more.end());
  return call;
}

class ReportFilesTest : public GitTest {
 protected:
  // Every file is what a call of its own with --format prints, whatever other formats the call writes.
  void ExpectEveryFormat(const Words& call) const {
    Words all;
    for (const std::string format : kFormats) all.insert(all.end(), {"--report", format + "=out." + format});
    for (const std::string format : kFormats) {
      const Outcome alone = Run(With(call, {"--format", format}));
      const Outcome outcome = Run(With(With(call, {"--format", format}), all));
      EXPECT_EQ(outcome.exit_code, alone.exit_code);
      EXPECT_EQ(outcome.out, alone.out);
      EXPECT_EQ(outcome.err, alone.err);
      if (format != "text") {
        EXPECT_EQ(Read("out." + format), alone.out);
      }
    }
    Run(With(call, {"-o", "alone"}));
    EXPECT_EQ(Read("out.text"), Read("alone"));
  }
};

TEST_F(ReportFilesTest, EveryFileIsTheReportOfItsFormat) {
  ExpectEveryFormat({"check", "old.xml", "wide.xml"});
  ExpectEveryFormat({"check", "old.xml", "same.xml"});
  ExpectEveryFormat({"lint", "old.xml"});
  ExpectEveryFormat({"compat", "old.xml", "wide.xml"});
  ExpectEveryFormat({"history", "old.xml", "same.xml", "wide.xml"});
}

TEST_F(ReportFilesTest, EveryFileHasTheFaults) {
  Write("broken.xml", "<metalib>");
  ExpectEveryFormat({"lint", "old.xml", "broken.xml"});
  ExpectEveryFormat({"lint", "broken.xml"});
  ExpectEveryFormat({"check", "old.xml", "broken.xml"});
  ExpectEveryFormat({"check", "old.xml", "missing.xml"});
  ExpectEveryFormat({"check", "--against", "git:nope"});
  ExpectEveryFormat({"history", "old.xml", "missing.xml"});
}

TEST_F(ReportFilesTest, EveryFileIsTheReportOfAProject) {
  Commit("first");
  Write("same.xml", Read("wide.xml"));
  Write("added.xml", Library(1, {Table({.name = "added"})}));
  ExpectEveryFormat({"check", "--against", "git:HEAD", "."});
  ExpectEveryFormat({"history", "--git", "same.xml"});
}

// The lines that html shows of an image are in no file.
TEST_F(ReportFilesTest, ImagesHaveLinesInHtmlOnly) {
  for (const std::string name : {"old", "wide"}) Korvelcheck({"compile", name + ".xml", "-o", name + ".qmb"});
  ExpectEveryFormat({"check", "old.qmb", "wide.qmb"});
  ExpectEveryFormat({"lint", "old.qmb"});
  Commit("first");
  Write("old.qmb", Read("wide.qmb"));
  ExpectEveryFormat({"check", "--against", "git:HEAD", "old.qmb"});
}

// Several files may have one format, and -o stays the file of --format.
TEST_F(ReportFilesTest, AnyNumberOfFiles) {
  ExpectOutcome(Korvelcheck({"check", "old.xml", "wide.xml", "-o", "o", "--report", "text=a", "--report=text=b=c"}), 1, "", "");
  EXPECT_EQ(Verdicts(Read("o")), kWideFinding);
  EXPECT_EQ(Read("a"), Read("o"));
  EXPECT_EQ(Read("b=c"), Read("o"));
}

TEST_F(ReportFilesTest, WrongValuesAreRefused) {
  const std::string formats = "FORMAT=FILE with text|json|sarif|junit|github|gitlab|markdown|html";
  const std::pair<const char*, std::string> kCommands[] = {{"check", formats + "|github-review|gitlab-review"},
                                                           {"history", formats}};
  for (const auto& [name, allowed] : kCommands) {
    const std::string command = name;
    const std::pair<const char*, std::string> cases[] = {
        {"sraif=x", allowed + " (did you mean 'sarif'?)"},
        {"xml=x", allowed},
        {"=x", allowed},
        {"junit", allowed},
        {"", allowed},
        {"junit=", "a file behind '='; -o and --format are for standard output"},
        {"junit=-", "a file behind '='; -o and --format are for standard output"},
    };
    for (const auto& [value, text] : cases) {
      ExpectInputError(Korvelcheck({command, "old.xml", "same.xml", "--report", value}),
                       "korvelcheck: " + command + ": --report: '" + value + "' is not allowed; allowed: " + text +
                           "\nTry 'korvelcheck " + command + " --help'.\n");
    }
  }
}

TEST_F(ReportFilesTest, TwoReportsNeedTwoFiles) {
  std::filesystem::create_symlink("out", PathOf("link"));
  const std::vector<std::string> before = Files();
  const auto expect_refused = [&](const Words& words, const std::string& file) {
    for (const Words& call : {Words{"check", "old.xml", "wide.xml"}, Words{"history", "old.xml", "wide.xml"}}) {
      const Outcome outcome = Korvelcheck(With(call, words));
      ExpectInputError(outcome, "korvelcheck: " + call.front() + ": two reports in the same file: --report " + file +
                                    "\nTry 'korvelcheck " + call.front() + " --help'.\n");
      EXPECT_EQ(Files(), before);
    }
  };
  expect_refused({"-o", "out", "--report", "json=./out"}, "./out");
  expect_refused({"--report", "json=out", "-o", "link"}, "out");
  expect_refused({"--report", "json=out", "--report", "sarif=link"}, "link");
}

// An input, or the log, must not become a report; the other reports say that the call failed.
TEST_F(ReportFilesTest, InputsAndLogsAreKept) {
  std::filesystem::create_symlink("old.xml", PathOf("link"));
  const std::string schema = Read("old.xml");
  for (const std::string file : {"old.xml", "link"}) {
    Write("other", "stale");
    ExpectInputError(
        Korvelcheck({"check", "old.xml", "wide.xml", "--report", "json=other", "--report", "sarif=" + file, "-o", "text"}),
        "korvelcheck: --report " + file + " would replace an input\n");
    EXPECT_EQ(Read("old.xml"), schema);
    EXPECT_THAT(Read("other"), HasSubstr("\"verdict\": \"incomplete\""));
    EXPECT_THAT(Read("text"), StartsWith("verdict: incomplete"));
  }
  Write("log", "kept");
  ExpectInputError(Korvelcheck({"check", "old.xml", "wide.xml", "--report", "json=log", "--log", "log"}),
                   "korvelcheck: --report and --log are the same file: log\n");
  EXPECT_EQ(Read("log"), "kept");
}

TEST_F(ReportFilesTest, ProjectFilesAreKept) {
  Commit("first");
  const std::string schema = Read("same.xml");
  ExpectRefused({"check", "--against", "git:HEAD", ".", "--report", "json=same.xml"},
                "korvelcheck: --report same.xml would replace an input\n");
  EXPECT_EQ(Read("same.xml"), schema);
}

TEST_F(ReportFilesTest, WrongUsageDiscardsOldReports) {
  const std::vector<std::string> before = Files();
  for (const Words& words : {Words{"--bogus", "--report", "json=out"}, Words{"--report=jsn=out"}, Words{"--report=json=out", "x"},
                             Words{"--report", "json=out", "--max-findings=0"}}) {
    Write("out", "stale");
    EXPECT_EQ(Korvelcheck(With({"check", "old.xml", "same.xml"}, words)).exit_code, 2);
    EXPECT_EQ(Files(), before) << words.front();
  }
}

// Words behind '--' are files, and a second mention may be an input.
TEST_F(ReportFilesTest, WrongUsageKeepsWhatMayBeAnInput) {
  Write("out", "kept");
  EXPECT_EQ(Korvelcheck({"check", "--bogus", "--", "--report", "json=out"}).exit_code, 2);
  EXPECT_EQ(Korvelcheck({"check", "--bogus", "--report", "json=out", "out"}).exit_code, 2);
  EXPECT_EQ(Read("out"), "kept");
}

TEST_F(ReportFilesTest, FailedWriteDiscardsTheOldReports) {
  Write("second", "stale");
  const Outcome outcome = Korvelcheck(
      {"check", "old.xml", "wide.xml", "--report", "json=first", "--report", "json=no/file", "--report", "json=second"});
  ExpectOutcome(outcome, 3, "", "korvelcheck: cannot write no/file: No such file or directory\n");
  EXPECT_THAT(Read("first"), HasSubstr("\"verdict\": \"refused\""));
  EXPECT_EQ(Files(), (Words{".git", "first", "old.xml", "same.xml", "wide.xml"}));
}

}  // namespace
}  // namespace tool_test
