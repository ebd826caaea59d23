// The program when memory runs out: every command ends with its result or with exit code 3 and one line, never with a signal, and
// its output file is complete or absent.
//
// To save time, only each KORVEL_STEP-th allocation fails. KORVEL_STEP=1 takes half an hour or more.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <new>
#include <ostream>
#include <set>

#include "memory/failing_memory.h"
#include "tool/tool_test.h"

int KorvelcheckMain(int argc, char** argv);  // main.cpp's main

namespace memory {
namespace {

using tool_test::Outcome;

// Memory that is shared with child processes.
template <class T>
class Shared {
 public:
  Shared() : block_(::mmap(nullptr, sizeof(T), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) {
    if (block_ == MAP_FAILED) std::abort();
    new (block_) T{};
  }
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;
  ~Shared() { ::munmap(block_, sizeof(T)); }

  T& operator*() const { return *static_cast<T*>(block_); }

 private:
  void* block_;
};

// An unnamed file that collects output.
class Captured {
 public:
  Captured() : fd_(::memfd_create("captured", MFD_CLOEXEC)) {}
  Captured(const Captured&) = delete;
  Captured& operator=(const Captured&) = delete;
  ~Captured() { ::close(fd_); }

  void Empty() const {
    EXPECT_EQ(::ftruncate(fd_, 0), 0);
    ::lseek(fd_, 0, SEEK_SET);
  }
  int fd() const { return fd_; }

  std::string Text() const {
    std::string text(static_cast<std::size_t>(::lseek(fd_, 0, SEEK_END)), '\0');
    EXPECT_EQ(::pread(fd_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    return text;
  }

 private:
  int fd_;
};

constexpr long kNoFailure = -1;

struct Command {
  const char* name;
  int exit_code;
  std::vector<std::string> arguments;
};

// Behaves like a program: nothing catches an exception that leaves main.
[[noreturn]] void RunAndExit(std::vector<char*>& argv) noexcept {
  std::_Exit(KorvelcheckMain(static_cast<int>(argv.size()), argv.data()));
}

// Shows a command by its name.
void PrintTo(const Command& command, std::ostream* out) { *out << command.name; }

class ToolOutOfMemory : public tool_test::ToolTest, public testing::WithParamInterface<Command> {
 protected:
  ToolOutOfMemory() {
    std::filesystem::create_directory(PathOf("base"));
    for (const char* file : {"same.xml", "wide.xml"}) std::filesystem::copy_file(PathOf("same.xml"), PathOf("base") / file);
  }

  // Runs the program in a child process, where memory runs out after `count` allocations.
  Outcome Run(long count, Failing failing) {
    std::vector<std::string> words = GetParam().arguments;
    words.insert(words.begin(), "korvelcheck");
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    out_.Empty();
    err_.Empty();
    *failed_ = false;
    const pid_t process = ::fork();
    if (process == 0) {
      if (::chdir(PathOf("").c_str()) != 0) std::abort();
      ::dup2(out_.fd(), STDOUT_FILENO);
      ::dup2(err_.fd(), STDERR_FILENO);
      if (count != kNoFailure) FailAfter(count, failing, *failed_);
      RunAndExit(argv);
    }
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out_.Text(), err_.Text(), WIFSIGNALED(status) ? WTERMSIG(status) : 0};
  }

  // The contents of the files in the directory by name, except the log, which grows line by line.
  std::map<std::string, std::string> Contents() const {
    std::map<std::string, std::string> contents;
    for (const std::string& file : Files()) {
      if (file != "log" && !std::filesystem::is_directory(PathOf(file))) contents[file] = Read(file);
    }
    return contents;
  }

  // Whether a failing call discards an old file.
  static bool IsReport() {
    const std::set<std::string> others = {"suggest", "explain", "rules", "waive", "compile", "dump", "man", "completion"};
    return !others.contains(GetParam().arguments.front());
  }

  // Writes the files that the program expects.
  void Restore() const {
    Write("out", GetParam().arguments.front() == "compile" ? "" : "old");  // `compile` replaces only images and empty files
    Write("korvelcheck.toml", "[schemas]\npaths = ['same.xml', 'wide.xml']\n");
  }

  bool HasFailed() const { return *failed_; }

 private:
  Captured out_;
  Captured err_;
  Shared<std::atomic<bool>> failed_;
};

long Step() {
  const char* const step = std::getenv("KORVEL_STEP");
  return step != nullptr ? std::max(1L, std::strtol(step, nullptr, 10)) : KORVEL_SANITIZED ? 199 : 61;
}

const char* const kOutOfMemoryLines[] = {
    "korvelcheck: out of memory\n", "korvelcheck: cannot write the log: out of memory\n",
    "korvelcheck: out of memory, or an internal error\n",  // an exception in a library function that is declared noexcept
};

TEST_P(ToolOutOfMemory, EndsWithResultOrMessage) {
  Restore();
  const auto before = Contents();
  const Outcome wanted = Run(kNoFailure, Failing::kOne);
  const auto after = Contents();
  auto discarded = before;
  if (IsReport()) discarded.erase("out");
  ASSERT_EQ(wanted.exit_code, GetParam().exit_code) << wanted.err;
  long failures = 0;
  for (const Failing failing : {Failing::kOne, Failing::kRest}) {
    for (long count = 0;; count += Step()) {
      SCOPED_TRACE("allocation " + std::to_string(count) + (failing == Failing::kOne ? "" : " and the rest"));
      Restore();
      const Outcome outcome = Run(count, failing);
      const bool is_normal = outcome.exit_code == wanted.exit_code && outcome.out == wanted.out && outcome.err == wanted.err;
      if (is_normal && wanted.exit_code == 2) {
        ASSERT_THAT(Contents(), testing::AnyOf(after, discarded));  // the report of a failed call cannot be written
      } else if (is_normal) {
        ASSERT_EQ(Contents(), after);
      } else {
        ASSERT_EQ(outcome.exit_code, 3) << outcome.signal << outcome.err;
        ASSERT_THAT(outcome.err, testing::AnyOfArray(kOutOfMemoryLines));
        ASSERT_THAT(outcome.out, testing::AnyOf("", wanted.out));
        ASSERT_THAT(Contents(), testing::AnyOf(before, after, discarded));
      }
      if (!HasFailed()) {
        ASSERT_TRUE(is_normal);
        break;
      }
      ++failures;
    }
  }
  EXPECT_GT(failures, 1);  // of one allocation, and of one with all that follow
  CountFailures(failures);
}

const Command kCommands[] = {
    {"Check", 1, {"check", "old.xml", "wide.xml", "-o", "out", "--log", "log"}},
    {"CheckJson", 1, {"check", "old.xml", "wide.xml", "-o", "out", "--format", "json"}},
    {"CheckSarif", 1, {"check", "old.xml", "wide.xml", "--format", "sarif"}},
    {"CheckGitlab", 1, {"check", "old.xml", "wide.xml", "-o", "out", "--format", "gitlab"}},
    {"CheckReview", 1, {"check", "old.xml", "wide.xml", "-o", "out", "--format", "github-review"}},
    {"CheckJunit", 1, {"check", "old.xml", "wide.xml", "--format", "junit"}},
    {"CheckMarkdown", 1, {"check", "old.xml", "wide.xml", "--format", "markdown"}},
    {"CheckHtml", 1, {"check", "old.xml", "wide.xml", "-o", "out", "--format", "html"}},
    {"CheckProject", 1, {"check", "--against", "base", "-o", "out"}},
    {"CheckCommit", 2, {"check", "git:HEAD:old.xml", "wide.xml", "-o", "out"}},
    {"CheckWrongFiles", 2, {"check", "none.xml", "korvelcheck.toml", "-o", "out"}},
    {"CheckWrongOption", 2, {"check", "old.xml", "wide.xml", "--fromat", "json"}},
    {"Suggest", 0, {"suggest", "old.xml", "wide.xml", "-o", "out"}},
    {"History", 1, {"history", "old.xml", "same.xml", "wide.xml", "-o", "out"}},
    {"Lint", 0, {"lint", "old.xml", "-o", "out"}},
    {"Diff", 0, {"diff", "old.xml", "wide.xml", "-o", "out", "--format", "json"}},
    {"Layout", 0, {"layout", "old.xml", "wide.xml", "-o", "out"}},
    {"Explain", 0, {"explain", "primary-key.size", "-o", "out"}},
    {"Waive", 0, {"waive", "facc5a47ffae3681", "old.xml", "wide.xml", "--reason", "empty", "--until", "2999-01-01"}},
    {"Waivers", 0, {"waivers", "old.xml", "wide.xml", "-o", "out"}},
    {"Compat", 1, {"compat", "old.xml", "wide.xml", "-o", "out"}},
    {"Values", 1, {"values", "old.xml", "wide.xml", "-o", "out"}},
    {"Same", 1, {"same", "old.xml", "wide.xml", "-o", "out"}},
    {"Sortlist", 0, {"sortlist", "old.xml", "wide.xml", "-o", "out"}},
    {"Rules", 0, {"rules", "--format", "json"}},
    {"Compile", 0, {"compile", "old.xml", "-o", "out"}},
    {"Dump", 0, {"dump", "old.xml", "-o", "out"}},
    {"Man", 0, {"man", "-o", "out"}},
    {"Completion", 0, {"completion", "bash", "-o", "out"}},
};

INSTANTIATE_TEST_SUITE_P(Commands, ToolOutOfMemory, testing::ValuesIn(kCommands),
                         [](const auto& command) { return std::string(command.param.name); });

}  // namespace
}  // namespace memory
