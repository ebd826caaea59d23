// Makes processes that change files of one directory wait for each other.
#pragma once

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "base/file_descriptor.h"

namespace korvel::tool {

// Locks the directory of a file until the end of its life. A lock on the file itself would not last: a changed file is replaced
// by a new one.
class DirectoryLock {
 public:
  // Waits for other processes.
  explicit DirectoryLock(const std::string& path)
      : directory_(std::filesystem::weakly_canonical(std::filesystem::absolute(path)).parent_path()),
        file_(::open(directory_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)),
        error_(file_.IsOpen() ? 0 : errno) {
    while (error_ == 0 && ::flock(file_.get(), LOCK_EX) != 0) error_ = errno == EINTR ? 0 : errno;
  }

  const std::filesystem::path& directory() const { return directory_; }
  // 0, or the errno of the call that failed; then nothing is locked.
  int error() const { return error_; }

 private:
  std::filesystem::path directory_;
  FileDescriptor file_;
  int error_;
};

}  // namespace korvel::tool
