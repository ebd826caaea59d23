// Owns a file descriptor; writes text to a file descriptor.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <utility>

namespace korvel {

// Closes the descriptor at the end of its life, unless it is negative.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd = -1) : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&&) = delete;
  ~FileDescriptor() { Reset(); }

  // Closes the descriptor and owns `fd` instead.
  void Reset(int fd = -1) {
    if (fd_ >= 0) ::close(fd_);
    fd_ = fd;
  }
  void Swap(FileDescriptor& other) { std::swap(fd_, other.fd_); }
  bool IsOpen() const { return fd_ >= 0; }
  int get() const { return fd_; }

 private:
  int fd_;
};

// Writes all of `text`, however many calls that takes. 0, or the errno of the call that failed.
inline int WriteAll(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(fd, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return 0;
}

}  // namespace korvel
