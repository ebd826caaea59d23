// Signals during a call: it ends at once, and its output file is complete or absent.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <map>

#include "tool_test.h"

namespace tool_test {
namespace {

class SignalTest : public ToolTest {};

constexpr int kSignals[] = {SIGHUP, SIGINT, SIGTERM};

TEST_F(SignalTest, EndsCallThatReads) {
  ASSERT_EQ(::mkfifo(PathOf("pipe.xml").c_str(), 0600), 0);
  Write("report", "old");
  for (const int signal : kSignals) {
    int pipe = -1;
    const auto send = [&](pid_t process) {
      pipe = ::open(PathOf("pipe.xml").c_str(), O_WRONLY | O_CLOEXEC);  // returns when the program has opened it
      EXPECT_EQ(::write(pipe, "<metalib", 8), 8);
      ::kill(process, signal);
    };
    const Outcome outcome = Korvelcheck(Call{.arguments = {"check", "old.xml", "pipe.xml", "-o", "report"}, .meanwhile = send});
    ::close(pipe);
    EXPECT_EQ(outcome.signal, signal);
    EXPECT_EQ(outcome.out + outcome.err, "");
    EXPECT_EQ(Read("report"), "old");
  }
}

TEST_F(SignalTest, EndsCallThatWaitsForPipe) {
  ASSERT_EQ(::mkfifo(PathOf("pipe.xml").c_str(), 0600), 0);
  const auto send = [](pid_t process) { ::kill(process, SIGINT); };
  const Outcome outcome = Korvelcheck(Call{.arguments = {"check", "old.xml", "pipe.xml"}, .meanwhile = send});
  EXPECT_EQ(outcome.signal, SIGINT);
}

// Waits until a file is created in a directory.
class Creation {
 public:
  explicit Creation(const std::filesystem::path& directory) : events_(::inotify_init1(IN_CLOEXEC)) {
    if (::inotify_add_watch(events_, directory.c_str(), IN_CREATE) < 0) std::abort();
  }
  Creation(const Creation&) = delete;
  Creation& operator=(const Creation&) = delete;
  ~Creation() { ::close(events_); }

  void Wait() const {
    alignas(inotify_event) std::array<char, 4096> buffer;
    EXPECT_GT(::read(events_, buffer.data(), buffer.size()), 0);
  }

 private:
  int events_;
};

// Regression: the temporary file was left behind.
TEST_F(SignalTest, WaitsForFileThatIsBeingWritten) {
  std::vector<std::string> tables;
  for (int i = 0; i < 300; ++i) tables.push_back(Table({.name = "t" + std::to_string(i), .attributes = std::string(2000, 'x')}));
  Write("many.xml", Library(5, tables));
  ASSERT_EQ(Korvelcheck({"dump", "many.xml", "-o", "whole"}).exit_code, 0);
  std::vector<std::string> files = Files();
  files.emplace_back("report");
  std::ranges::sort(files);
  for (const int signal : kSignals) {
    Write("report", "old");
    const Creation temporary(PathOf(""));
    const auto send = [&](pid_t process) {
      temporary.Wait();
      ::kill(process, signal);
    };
    const Outcome outcome = Korvelcheck(Call{.arguments = {"dump", "many.xml", "-o", "report"}, .meanwhile = send});
    EXPECT_THAT(outcome.signal, testing::AnyOf(signal, 0)) << outcome.err;  // 0: it finished before the signal
    EXPECT_EQ(Files(), files);
    EXPECT_TRUE(Read("report") == Read("whole"));
  }
}

// Schema files of a project, changed against those in a directory.
class SignalProjectTest : public ToolTest {
 protected:
  SignalProjectTest() {
    Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/*.xml']\nagainst = 'old'\n");
    for (const char* directory : {"schemas", "old/schemas", "out/schemas"})
      std::filesystem::create_directories(PathOf(directory));
    for (int i = 0; i < kFiles; ++i) {
      const std::string table = "t" + std::to_string(i);
      Write("old/schemas/" + table + ".xml", Library(5, {Table({.name = table})}));
      Write("schemas/" + table + ".xml", Library(6, {Table({.name = table, .key_type = "uint32"})}));
    }
  }

  // Sends a signal when the call creates its first file in the directory. The call lists what it writes, all or nothing.
  void ExpectAllOrNothing(const std::vector<std::string>& call, const std::string& directory, int signal) const {
    const std::map<std::string, std::string> before = ContentOf(directory);
    const Creation temporary(PathOf(directory));
    const auto send = [&](pid_t process) {
      temporary.Wait();
      ::kill(process, signal);
    };
    const Outcome outcome = Korvelcheck(Call{.arguments = call, .meanwhile = send});
    EXPECT_THAT(outcome.signal, testing::AnyOf(signal, 0)) << outcome.err;  // 0: it finished before the signal
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(std::ranges::count(outcome.out, '\n'), testing::AnyOf(0, kFiles));
    EXPECT_EQ(ContentOf(directory) == before, outcome.out.empty());
  }

 private:
  static constexpr int kFiles = 60;

  std::map<std::string, std::string> ContentOf(const std::string& directory) const {
    std::map<std::string, std::string> content;
    for (const auto& file : std::filesystem::directory_iterator(PathOf(directory))) {
      content.emplace(file.path().filename(), Read(file.path()));
    }
    return content;
  }
};

// Regression: all files were written, but not listed.
TEST_F(SignalProjectTest, WritesAndListsAllFilesOrNone) {
  for (const int signal : kSignals) {
    ExpectAllOrNothing({"compile", "-o", "out"}, "out/schemas", signal);
    ExpectAllOrNothing({"suggest", "--write"}, "schemas", signal);
  }
}

// As below nohup.
TEST_F(SignalProjectTest, IgnoredSignalsStopNothing) {
  const Creation temporary(PathOf("out/schemas"));
  const auto send = [&](pid_t process) {
    temporary.Wait();
    ::kill(process, SIGHUP);
  };
  const std::vector<std::string> ignoring = {"/bin/sh", "-c", "trap '' HUP; exec \"$0\" \"$@\""};
  const Outcome outcome = Korvelcheck(Call{.arguments = {"compile", "-o", "out"}, .launcher = ignoring, .meanwhile = send});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, testing::HasSubstr("schemas/t9.xml -> out/schemas/t9.qmb\n"));
}

}  // namespace
}  // namespace tool_test
