#include "process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace tool_test {
namespace {

// An unnamed file, removed with its last descriptor. Not a pipe: it need not be read while the process runs.
class ScratchFile {
 public:
  ScratchFile() : file_(std::tmpfile()) {
    if (file_ == nullptr) std::abort();
  }
  explicit ScratchFile(const std::string& text) : ScratchFile() {
    std::fwrite(text.data(), 1, text.size(), file_);
    std::rewind(file_);
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() { std::fclose(file_); }

  int fd() const { return ::fileno(file_); }

  std::string Text() const {
    std::string text;
    std::rewind(file_);
    for (int c = std::fgetc(file_); c != EOF; c = std::fgetc(file_)) text += static_cast<char>(c);
    return text;
  }

 private:
  std::FILE* file_;
};

class Actions {
 public:
  Actions() { ::posix_spawn_file_actions_init(&actions_); }
  Actions(const Actions&) = delete;
  Actions& operator=(const Actions&) = delete;
  ~Actions() { ::posix_spawn_file_actions_destroy(&actions_); }

  void Use(int fd, int as) { ::posix_spawn_file_actions_adddup2(&actions_, fd, as); }
  void Close(int fd) { ::posix_spawn_file_actions_addclose(&actions_, fd); }
  void Enter(const std::string& directory) { ::posix_spawn_file_actions_addchdir_np(&actions_, directory.c_str()); }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_;
};

// Lets signals end the process even if they are ignored here, as they are below nohup.
class DefaultSignals {
 public:
  DefaultSignals() {
    ::posix_spawnattr_init(&attributes_);
    sigset_t all;
    ::sigfillset(&all);
    ::posix_spawnattr_setsigdefault(&attributes_, &all);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
  }
  DefaultSignals(const DefaultSignals&) = delete;
  DefaultSignals& operator=(const DefaultSignals&) = delete;
  ~DefaultSignals() { ::posix_spawnattr_destroy(&attributes_); }

  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
};

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// The output on a terminal. Reading it fails when the process, its last writer, has ended.
std::string ReadTerminal(int fd) {
  std::string text;
  char piece[4096];
  for (ssize_t got = ::read(fd, piece, sizeof(piece)); got > 0; got = ::read(fd, piece, sizeof(piece))) {
    text.append(piece, static_cast<std::size_t>(got));
  }
  return text;
}

int OpenReaderGone() {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) std::abort();
  ::close(ends[0]);
  return ends[1];
}

// A descriptor for the process's standard output, in addition to `captured`; -1 for none. `terminal` gets the other end of a
// terminal.
int OpenOutput(Stream stream, int captured, int& terminal) {
  int process_end = -1;
  switch (stream) {
    case Stream::kCaptured:
      return ::dup(captured);
    case Stream::kFull:
      return ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    case Stream::kReaderGone:
      return OpenReaderGone();
    case Stream::kTerminal:
      if (::openpty(&terminal, &process_end, nullptr, nullptr, nullptr) != 0) std::abort();
      return process_end;
    case Stream::kClosed:
      break;
  }
  return -1;
}

void WaitFor(pid_t process, Outcome& outcome) {
  int status = 0;
  struct rusage usage {};
  while (::wait4(process, &status, 0, &usage) < 0 && errno == EINTR) {
  }
  outcome.peak_kb = usage.ru_maxrss;
  if (WIFEXITED(status)) outcome.exit_code = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
}

pid_t Spawn(const Call& call, const Actions& actions) {
  std::vector<std::string> arguments = call.launcher;
  arguments.emplace_back(KORVELCHECK_PATH);
  arguments.insert(arguments.end(), call.arguments.begin(), call.arguments.end());
  // A sanitizer's finding must not look like a verdict.
  std::vector<std::string> environment = {"ASAN_OPTIONS=exitcode=99", "UBSAN_OPTIONS=exitcode=99", "LSAN_OPTIONS=exitcode=99"};
  environment.insert(environment.end(), call.environment.begin(), call.environment.end());
  pid_t process = 0;
  const int error = ::posix_spawn(&process, arguments.front().c_str(), actions.get(), DefaultSignals().get(),
                                  Pointers(arguments).data(), Pointers(environment).data());
  EXPECT_EQ(error, 0) << "cannot start " << arguments.front();
  return error == 0 ? process : -1;
}

}  // namespace

std::vector<std::string> Joined(std::vector<std::string> first, const std::vector<std::string>& more) {
  first.insert(first.end(), more.begin(), more.end());
  return first;
}

Outcome RunProgram(const Call& call) {
  const ScratchFile in(call.input);
  const ScratchFile out;
  const ScratchFile err;
  int terminal = -1;
  const int output = OpenOutput(call.output, out.fd(), terminal);
  Actions actions;
  if (!call.directory.empty()) actions.Enter(call.directory);
  call.input_closed ? actions.Close(STDIN_FILENO) : actions.Use(in.fd(), STDIN_FILENO);
  output < 0 ? actions.Close(STDOUT_FILENO) : actions.Use(output, STDOUT_FILENO);
  actions.Use(err.fd(), STDERR_FILENO);
  const pid_t process = Spawn(call, actions);
  if (output >= 0) ::close(output);
  Outcome outcome;
  if (process < 0) return outcome;
  if (call.meanwhile) call.meanwhile(process);
  if (terminal >= 0) outcome.out = ReadTerminal(terminal);
  WaitFor(process, outcome);
  if (terminal >= 0) ::close(terminal);
  if (call.output == Stream::kCaptured) outcome.out = out.Text();
  outcome.err = err.Text();
  return outcome;
}

}  // namespace tool_test
