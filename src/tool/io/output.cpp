// Writes results. Tested by tests/tool/output_test.cpp.
#include "tool/io/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/file_descriptor.h"
#include "base/text.h"
#include "tool/io/blocked_signals.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

[[noreturn]] void Fail(const std::string& path, const std::string& reason) {
  throw std::runtime_error("cannot write " + OneLine(path) + ": " + reason);
}

// A file next to its destination; removed unless it is moved there.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& destination) : destination_(destination), path_(destination + ".XXXXXX") {
    file_.Reset(::mkostemp(path_.data(), O_CLOEXEC));
    if (!file_.IsOpen() && errno == ENAMETOOLONG) {
      path_ = std::filesystem::path(destination).replace_filename(".korvelcheck.XXXXXX");
      file_.Reset(::mkostemp(path_.data(), O_CLOEXEC));
    }
    if (!file_.IsOpen()) Fail(destination_, std::strerror(errno));
    incomplete_.emplace(path_.c_str());
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (!moved_) ::unlink(path_.c_str());
  }

  void Write(std::string_view text) const {
    if (const int error = WriteAll(file_.get(), text); error != 0) Fail(destination_, std::strerror(error));
  }

  // Closes the file.
  void Complete(mode_t mode) {
    if (::fchmod(file_.get(), mode) != 0 || ::fsync(file_.get()) != 0) Fail(destination_, std::strerror(errno));
    file_.Reset(-1);
  }

  void Move() {
    if (::rename(path_.c_str(), destination_.c_str()) != 0) Fail(destination_, std::strerror(errno));
    moved_ = true;
  }

 private:
  std::string destination_;
  std::string path_;
  FileDescriptor file_;
  std::optional<IncompleteFile> incomplete_;
  bool moved_ = false;
};

// Collects small pieces, and passes them on when they are enough for a call of the system, or at the end.
class Buffer {
 public:
  explicit Buffer(TextSink write) : write_(std::move(write)) {}

  void Produce(const Producer& produce) {
    produce([this](std::string_view text) { Add(text); });
    Flush();
  }

 private:
  static constexpr std::size_t kSize = std::size_t{1} << 20;

  void Add(std::string_view text) {
    if (text_.size() + text.size() > kSize) Flush();
    text.size() > kSize ? write_(text) : static_cast<void>(text_ += text);
  }

  void Flush() {
    write_(text_);
    text_.clear();
  }

  TextSink write_;
  std::string text_;
};

// The target of a link, so that the link stays; the path itself if there is no file yet.
std::string ResolveLinks(const std::string& path) {
  char* const resolved = ::realpath(path.c_str(), nullptr);
  if (resolved == nullptr) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0) Fail(path, "is a symbolic link to a missing file");
    return path;
  }
  std::string target = resolved;
  ::free(resolved);
  return target;
}

// The permission bits of the file that is replaced, or those of any new file.
mode_t ModeFor(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0) {
    // A device or pipe would be replaced by a file.
    if (!S_ISREG(status.st_mode)) Fail(path, "is not a regular file");
    // The directory decides whether a file can be replaced, but a write-protected file must stay.
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) Fail(path, std::strerror(errno));
    return status.st_mode & 0777;
  }
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

}  // namespace

bool CanColor() {
  const char* const refused = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  if (refused != nullptr && *refused != '\0') return false;
  return ::isatty(STDOUT_FILENO) == 1 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

void WriteStandardOutput(const Producer& produce) {
  bool is_closed = false;  // there is no reader any more
  Buffer([&](std::string_view text) {
    const int error = is_closed ? 0 : WriteAll(STDOUT_FILENO, text);
    is_closed = is_closed || error == EPIPE;
    if (error != 0 && error != EPIPE) Fail("standard output", std::strerror(error));
  }).Produce(produce);
}

void WriteFile(const std::string& path, const Producer& produce) {
  const std::string destination = ResolveLinks(path);
  const mode_t mode = ModeFor(destination);
  const BlockedSignals signals;  // the temporary file would be left behind
  TemporaryFile file(destination);
  Buffer([&](std::string_view text) { file.Write(text); }).Produce(produce);
  file.Complete(mode);
  file.Move();
}

void RequireWritable(const std::string& path) {
  const std::string destination = ResolveLinks(path);
  ModeFor(destination);
  const std::string directory = std::filesystem::path(destination).parent_path();
  const char* const name = directory.empty() ? "." : directory.c_str();
  if (::faccessat(AT_FDCWD, name, W_OK | X_OK, AT_EACCESS) != 0) Fail(path, std::strerror(errno));
}

void WriteFiles(const std::vector<FileToWrite>& files, const BlockedSignals& signals, const std::function<void()>& confirm,
                const std::function<void(std::size_t position)>& on_written) {
  const auto stop_if_pending = [&signals] {
    if (signals.IsPending()) throw std::runtime_error("ended by a signal; nothing was written");
  };
  std::deque<TemporaryFile> written;
  for (const auto& [path, text] : files) {
    const std::string destination = ResolveLinks(path);
    const mode_t mode = ModeFor(destination);
    TemporaryFile& file = written.emplace_back(destination);
    file.Write(text);
    file.Complete(mode);
    stop_if_pending();
  }
  confirm();
  stop_if_pending();
  for (std::size_t i = 0; i < files.size(); ++i) {
    written[i].Move();
    on_written(i);
  }
}

void DiscardFile(const std::string& path) {
  struct stat status {};
  const bool is_there = ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
  if (!is_there || ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) return;
  const bool is_link = ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
  std::error_code ignored;
  if (is_link || ::unlink(path.c_str()) != 0) std::filesystem::resize_file(path, 0, ignored);
}

}  // namespace korvel::tool
