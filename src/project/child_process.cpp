// Starts programs and exchanges bytes with them through pipes. Tested by tests/tool/git_test.cpp.
#include "project/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <iterator>
#include <new>
#include <system_error>

namespace korvel {
namespace {

using Clock = std::chrono::steady_clock;

std::chrono::milliseconds output_timeout{-1};
std::atomic<Clock::time_point> no_start_before = Clock::time_point::min();

std::string Seconds(std::chrono::milliseconds time) {
  return std::to_string(std::chrono::duration_cast<std::chrono::seconds>(time).count()) + " s";
}

void RequireDone(int error, const char* what) {
  if (error == ENOMEM) throw std::bad_alloc();
  if (error != 0) throw std::system_error(error, std::generic_category(), what);
}

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    RequireDone(::pipe2(ends.data(), O_CLOEXEC) == 0 ? 0 : errno, "no pipe");
    reading = ends[0];
    writing = ends[1];
  }
  int reading = -1;
  int writing = -1;
};

class Actions {
 public:
  Actions() { RequireDone(::posix_spawn_file_actions_init(&actions_), "no process"); }
  Actions(const Actions&) = delete;
  Actions& operator=(const Actions&) = delete;
  ~Actions() { ::posix_spawn_file_actions_destroy(&actions_); }

  void Use(const FileDescriptor& file, int as) {
    RequireDone(::posix_spawn_file_actions_adddup2(&actions_, file.get(), as), "no process");
  }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

// The signals that this program ignores have their usual effect in others.
class Attributes {
 public:
  Attributes() {
    RequireDone(::posix_spawnattr_init(&attributes_), "no process");
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : {SIGPIPE, SIGXFSZ}) ::sigaddset(&signals, signal);
    ::posix_spawnattr_setsigdefault(&attributes_, &signals);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF);
  }
  Attributes(const Attributes&) = delete;
  Attributes& operator=(const Attributes&) = delete;
  ~Attributes() { ::posix_spawnattr_destroy(&attributes_); }

  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_{};
};

// Messages are in English, and git reads each object and commit as it was stored: not a replacement, and not with other parents.
// The file of other parents cannot exist; for an empty one, git would give advice.
constexpr std::string_view kSetVariables[] = {"LC_ALL=C", "GIT_NO_REPLACE_OBJECTS=1", "GIT_GRAFT_FILE=/dev/null/none"};

// Variables that contradict options of our calls.
constexpr std::string_view kUnsetVariables[] = {"GIT_GLOB_PATHSPECS=", "GIT_NOGLOB_PATHSPECS=", "GIT_ICASE_PATHSPECS="};

std::vector<std::string> Environment() {
  const auto is_ours = [](std::string_view variable) {
    const auto has_name = [&](std::string_view other) { return variable.starts_with(other.substr(0, other.find('=') + 1)); };
    return std::ranges::any_of(kSetVariables, has_name) || std::ranges::any_of(kUnsetVariables, has_name);
  };
  std::vector<std::string> variables(std::begin(kSetVariables), std::end(kSetVariables));
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
    if (!is_ours(*variable)) variables.emplace_back(*variable);
  }
  return variables;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// An unnamed file, not a pipe: it need not be read while the program runs.
FileDescriptor ErrorFile() {
  FileDescriptor file(::memfd_create("errors", MFD_CLOEXEC));
  RequireDone(file.IsOpen() ? 0 : errno, "no memory file");
  return file;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command) : name_(command.front()), errors_(ErrorFile()) {
  if (Clock::now() < no_start_before.load()) {
    throw OutputTimeoutError(name_ + " was not started, because a program hung a short time ago");
  }
  const Pipe to_program;
  const FileDescriptor its_input(to_program.reading);
  input_.Reset(to_program.writing);
  const Pipe from_program;
  const FileDescriptor its_output(from_program.writing);
  output_.Reset(from_program.reading);
  Actions actions;
  actions.Use(its_input, STDIN_FILENO);
  actions.Use(its_output, STDOUT_FILENO);
  actions.Use(errors_, STDERR_FILENO);
  const Attributes attributes;
  std::vector<std::string> arguments = command;
  std::vector<std::string> environment = Environment();
  RequireDone(::posix_spawnp(&process_, arguments.front().c_str(), actions.get(), attributes.get(), Pointers(arguments).data(),
                             Pointers(environment).data()),
              "no process");
}

ChildProcess::~ChildProcess() {
  if (process_ >= 0) End();
}

void ChildProcess::SetOutputTimeout(std::chrono::milliseconds timeout) {
  output_timeout = timeout;
  no_start_before = Clock::time_point::min();
}

void ChildProcess::End() {
  ::kill(process_, SIGKILL);
  Wait();
}

bool ChildProcess::Write(std::string_view text) { return WriteAll(input_.get(), text) == 0; }

std::size_t ChildProcess::Read(char* to, std::size_t capacity) {
  std::size_t size = 0;
  while (size < capacity && (!ahead_.empty() || ReadAhead())) {
    const std::size_t copied = ahead_.copy(to + size, capacity - size);
    ahead_.remove_prefix(copied);
    size += copied;
  }
  return size;
}

std::string ChildProcess::ReadAll() {
  input_.Reset();
  std::string text;
  while (!ahead_.empty() || ReadAhead()) {
    text += ahead_;
    ahead_ = {};
  }
  return text;
}

void ChildProcess::WaitForOutput() {
  pollfd output{output_.get(), POLLIN, 0};
  int ready = 0;
  do {
    ready = ::poll(&output, 1, static_cast<int>(output_timeout.count()));
  } while (ready < 0 && errno == EINTR);
  if (ready != 0) return;
  no_start_before = Clock::now() + output_timeout;
  End();
  throw OutputTimeoutError(name_ + " hung and was ended: it gave no output for " + Seconds(output_timeout));
}

bool ChildProcess::ReadAhead() {
  WaitForOutput();
  ssize_t got = 0;
  do {
    got = ::read(output_.get(), piece_.data(), piece_.size());
  } while (got < 0 && errno == EINTR);
  ahead_ = {piece_.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0))};
  return got > 0;
}

int ChildProcess::Wait() {
  input_.Reset();
  int status = 0;
  while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
  }
  process_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string ChildProcess::ErrorText() const {
  std::string text;
  std::array<char, 4096> piece;
  for (;;) {
    const ssize_t got = ::pread(errors_.get(), piece.data(), piece.size(), static_cast<off_t>(text.size()));
    if (got <= 0) return text;
    text.append(piece.data(), static_cast<std::size_t>(got));
  }
}

}  // namespace korvel
