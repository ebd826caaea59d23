// Where output is written, and what happens if that fails.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tool_test.h"
#include "unprivileged.h"

namespace tool_test {
namespace {

// Starts a program that cannot write files above half a KiB.
const std::vector<std::string> kSmallFiles = {"/bin/sh", "-c", "ulimit -f 1; exec \"$0\" \"$@\""};

class OutputTest : public ToolTest {
 protected:
  Outcome CheckWide(Stream output) const {
    return Korvelcheck(Call{.arguments = {"check", "old.xml", "wide.xml"}, .output = output});
  }
  Outcome CheckWideInto(const std::string& file, const std::vector<std::string>& launcher = {}) const {
    return Korvelcheck(Call{.arguments = {"check", "old.xml", "wide.xml", "-o", file}, .launcher = launcher});
  }
  unsigned ModeOf(const std::string& file) const {
    struct stat status {};
    EXPECT_EQ(::stat(PathOf(file).c_str(), &status), 0);
    return status.st_mode & 07777;
  }
};

TEST_F(OutputTest, ClosedReaderChangesNothing) {
  ExpectOutcome(CheckWide(Stream::kReaderGone), 1, "", "");
  ExpectOutcome(Korvelcheck(Call{.arguments = {"check", "old.xml", "same.xml"}, .output = Stream::kReaderGone}), 0, "", "");
}

TEST_F(OutputTest, FullDeviceIsAnInternalError) {
  ExpectOutcome(CheckWide(Stream::kFull), 3, "", "korvelcheck: cannot write standard output: No space left on device\n");
}

TEST_F(OutputTest, ClosedStandardOutputIsAnInternalError) {
  ExpectOutcome(CheckWide(Stream::kClosed), 3, "", "korvelcheck: cannot write standard output: Bad file descriptor\n");
}

// The log must not get the number of the closed stream: the report would end up in it.
TEST_F(OutputTest, ClosedStandardOutputDoesNotHarmTheLog) {
  const Outcome outcome =
      Korvelcheck(Call{.arguments = {"check", "old.xml", "wide.xml", "--log", "log"}, .output = Stream::kClosed});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(Read("log"), Not(testing::HasSubstr("verdict:")));
}

TEST_F(OutputTest, WritesTheReportToAFile) {
  for (const char* option : {"-o", "--output"}) {
    ExpectOutcome(Korvelcheck({"check", "old.xml", "wide.xml", option, "report"}), 1, "", "");
    EXPECT_EQ(Verdicts(Read("report")), kWideFinding);
    EXPECT_EQ(Files(), (std::vector<std::string>{"old.xml", "report", "same.xml", "wide.xml"}));
  }
}

// The name of the temporary file must not be longer than a name may be.
TEST_F(OutputTest, WritesTheReportToAFileWithALongName) {
  for (const std::size_t length : {248U, 249U, 255U}) {
    const std::string name(length, 'r');
    ExpectOutcome(Korvelcheck({"check", "old.xml", "wide.xml", "-o", name}), 1, "", "");
    EXPECT_EQ(Verdicts(Read(name)), kWideFinding);
    std::filesystem::remove(PathOf(name));
  }
  EXPECT_EQ(Files(), (std::vector<std::string>{"old.xml", "same.xml", "wide.xml"}));
}

// A report must not replace an input.
TEST_F(OutputTest, DoesNotReplaceInput) {
  std::filesystem::create_symlink("old.xml", PathOf("link"));
  for (const char* name : {"old.xml", "./old.xml", "link", "wide.xml"}) {
    const std::string path = name;
    ExpectInputError(CheckWideInto(path), "korvelcheck: -o " + path + " would replace an input\n");
    ExpectInputError(Korvelcheck({"check", "old.xml", "wide.xml", "--log", path}),
                     "korvelcheck: --log " + path + " would change an input\n");
  }
  const std::vector<std::string> from_old = {"/bin/sh", "-c", "exec \"$0\" \"$@\" < old.xml"};
  ExpectInputError(Korvelcheck(Call{.arguments = {"check", "-", "wide.xml", "-o", "old.xml"}, .launcher = from_old}),
                   "korvelcheck: -o old.xml would replace an input\n");
  for (const char* log : {"out", "./out"}) {
    ExpectInputError(Korvelcheck({"check", "old.xml", "wide.xml", "-o", "out", "--log", log}),
                     "korvelcheck: -o and --log are the same file: out\n");
  }
  EXPECT_EQ(Files(), (std::vector<std::string>{"link", "old.xml", "same.xml", "wide.xml"}));
}

// Regression: the log created the file that a link named, and the report then replaced it.
TEST_F(OutputTest, LogMustNotLeadToTheReport) {
  std::filesystem::create_directory(PathOf("sub"));
  std::filesystem::create_symlink("out", PathOf("link"));
  std::filesystem::create_symlink("../link", PathOf("sub/link"));
  std::filesystem::create_symlink(PathOf("sub") / "link", PathOf("chain"));
  for (const char* log : {"link", "./sub/link", "chain"}) {
    ExpectInputError(Korvelcheck({"check", "old.xml", "wide.xml", "-o", "out", "--log", log}),
                     "korvelcheck: -o and --log are the same file: out\n");
    EXPECT_FALSE(std::filesystem::exists(PathOf("out")));
  }
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "wide.xml", "-o", "report", "--log", "chain"}).exit_code, 1);
  EXPECT_TRUE(std::filesystem::exists(PathOf("out")));
}

TEST_F(OutputTest, RefusesDanglingLink) {
  std::filesystem::create_symlink("nowhere", PathOf("dangling"));
  std::filesystem::create_symlink("loop", PathOf("loop"));
  for (const char* name : {"dangling", "loop"}) {
    ExpectOutcome(CheckWideInto(name), 3, "",
                  "korvelcheck: cannot write " + std::string(name) + ": is a symbolic link to a missing file\n");
    EXPECT_TRUE(std::filesystem::is_symlink(PathOf(name)));
  }
}

TEST_F(OutputTest, MinusIsStandardOutput) { ExpectVerdicts(CheckWideInto("-"), 1, kWideFinding); }

TEST_F(OutputTest, ReplacesFile) {
  Write("report", std::string(5000, 'x'));
  CheckWideInto("report");
  EXPECT_EQ(Verdicts(Read("report")), kWideFinding);
}

TEST_F(OutputTest, PermissionBitsAreKept) {
  Write("report", "");
  ::chmod(PathOf("report").c_str(), 0640);
  CheckWideInto("report");
  EXPECT_EQ(ModeOf("report"), 0640u);
}

TEST_F(OutputTest, NewFileHasUsualPermissionBits) {
  const mode_t mask = ::umask(027);
  CheckWideInto("report");
  ::umask(mask);
  EXPECT_EQ(ModeOf("report"), 0640u);
}

TEST_F(OutputTest, FollowsLinks) {
  std::filesystem::create_directory(PathOf("sub"));
  Write("sub/real", "");
  std::filesystem::create_symlink("sub/real", PathOf("report"));
  CheckWideInto("report");
  EXPECT_TRUE(std::filesystem::is_symlink(PathOf("report")));
  EXPECT_EQ(Verdicts(Read("sub/real")), kWideFinding);
}

TEST_F(OutputTest, ImpossibleFileIsAnInternalErrorAndLeavesNothing) {
  std::filesystem::create_directory(PathOf("sub"));
  ExpectOutcome(CheckWideInto("no/report"), 3, "", "korvelcheck: cannot write no/report: No such file or directory\n");
  const Outcome outcome = CheckWideInto("sub");
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.err, testing::EndsWith("/sub: is not a regular file\n"));
  EXPECT_EQ(Files(), (std::vector<std::string>{"old.xml", "same.xml", "sub", "wide.xml"}));
}

// A rename would replace the device by a file.
TEST_F(OutputTest, DevicesAreNotReplaced) {
  ExpectOutcome(CheckWideInto("/dev/null"), 3, "", "korvelcheck: cannot write /dev/null: is not a regular file\n");
}

// Its directory allowed the replacement.
TEST_F(OutputTest, KeepsWriteProtectedFile) {
  const auto launcher = Unprivileged();
  if (!launcher) GTEST_SKIP() << "root may write everywhere";
  Write("report", "old");
  ::chmod(PathOf("report").c_str(), 0400);
  const Outcome outcome = CheckWideInto("report", *launcher);
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.err, testing::EndsWith("report: Permission denied\n"));
  EXPECT_EQ(Read("report"), "old");
}

// The old report cannot be removed, so it is emptied.
TEST_F(OutputTest, UnwritableDirectoryLeavesNoOldReport) {
  const auto launcher = Unprivileged();
  if (!launcher) GTEST_SKIP() << "root may write everywhere";
  std::filesystem::create_directory(PathOf("sub"));
  Write("sub/report", "old");
  ::chmod(PathOf("sub").c_str(), 0500);
  const Outcome outcome = CheckWideInto("sub/report", *launcher);
  ::chmod(PathOf("sub").c_str(), 0700);
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_EQ(Read("sub/report"), "");
}

// A limit on the size of files fails the write itself, for every user. Nothing but a report is discarded.
TEST_F(OutputTest, FailedWriteKeepsTheOldFileAndLeavesNothing) {
  Write("result", "QMXIMAGE old");
  Write("many.xml", Library(5, {Table({.name = std::string(5000, 'n')})}));
  const std::vector<std::string> before = Files();
  const Outcome outcome = Korvelcheck(Call{.arguments = {"compile", "many.xml", "-o", "result"}, .launcher = kSmallFiles});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.err, testing::EndsWith("/result: File too large\n"));
  EXPECT_EQ(Read("result"), "QMXIMAGE old");
  EXPECT_EQ(Files(), before);
}

// The report of an earlier call stayed and passed for the result of this one.
TEST_F(OutputTest, FailedWriteDiscardsTheOldReport) {
  Write("report", "old");
  Write("many.xml", Library(5, {Table({.name = std::string(5000, 'n')})}));
  const Outcome outcome = Korvelcheck(Call{.arguments = {"lint", "-v", "many.xml", "-o", "report"}, .launcher = kSmallFiles});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.err, testing::EndsWith("/report: File too large\n"));
  EXPECT_EQ(Files(), (std::vector<std::string>{"many.xml", "old.xml", "same.xml", "wide.xml"}));
}

// Reports above 1 MiB are written while they are produced.
class LargeOutputTest : public OutputTest {
 protected:
  LargeOutputTest() {
    for (const int version : {1, 2}) {
      std::vector<std::string> tables;
      for (int i = 0; i < 1200; ++i) tables.push_back(Table({.name = "t" + std::to_string(i)}));
      Write("v" + std::to_string(version) + ".xml", Library(version, tables));
    }
  }

  Outcome Check(Stream output) const { return Korvelcheck(Call{.arguments = kCheck, .output = output}); }

  const std::vector<std::string> kCheck = {"check", "v1.xml", "v2.xml", "--format", "json"};
};

TEST_F(LargeOutputTest, IsTheSameInAFile) {
  const std::string out = Korvelcheck(kCheck).out;
  EXPECT_GT(out.size(), std::size_t{1} << 20);
  std::vector<std::string> into = kCheck;
  into.insert(into.end(), {"-o", "report"});
  ExpectOutcome(Korvelcheck(into), 0, "", "");
  EXPECT_EQ(Read("report"), out);
}

TEST_F(LargeOutputTest, ReportsFailuresLikeSmallOnes) {
  ExpectOutcome(Check(Stream::kReaderGone), 0, "", "");
  ExpectOutcome(Check(Stream::kFull), 3, "", "korvelcheck: cannot write standard output: No space left on device\n");
}

TEST_F(LargeOutputTest, FailedWriteDiscardsTheOldReport) {
  const std::vector<std::string> before = Files();
  Write("report", "old");
  std::vector<std::string> into = kCheck;
  into.insert(into.end(), {"-o", "report"});
  const Outcome outcome = Korvelcheck(Call{.arguments = into, .launcher = kSmallFiles});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.err, testing::EndsWith("/report: File too large\n"));
  EXPECT_EQ(Files(), before);
}

}  // namespace
}  // namespace tool_test
