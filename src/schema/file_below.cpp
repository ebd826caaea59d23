// Tested by tests/tool/link_test.cpp.
#include "schema/file_below.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace korvel {
namespace {

namespace fs = std::filesystem;

bool IsLink(int directory, const std::string& entry) {
  struct stat status {};
  return ::fstatat(directory, entry.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

FileDescriptor Open(int directory, const std::string& entry, int flags) {
  return FileDescriptor(::openat(directory, entry.c_str(), O_CLOEXEC | flags));
}

// Opens each directory of the path relative to the one before.
FileDescriptor OpenParent(const std::string& directory, const fs::path& parent, const std::string& name) {
  constexpr int kFlags = O_PATH | O_DIRECTORY;
  FileDescriptor at = Open(AT_FDCWD, directory.empty() ? "." : directory, kFlags);
  if (!at.IsOpen()) RefuseFile(name, std::strerror(errno));
  for (const fs::path& part : parent) {
    FileDescriptor next = Open(at.get(), part.string(), kFlags | O_NOFOLLOW);
    const int error = errno;
    if (!next.IsOpen() && IsLink(at.get(), part.string())) RefuseFile(name, "is below a symbolic link; allowed: a directory");
    if (!next.IsOpen()) RefuseFile(name, std::strerror(error));
    at.Swap(next);
  }
  return at;
}

}  // namespace

OpenFile OpenBelow(const std::string& directory, const std::string& path, const std::string& name, Links links) {
  const std::string whole = (fs::path(directory) / path).string();
  if (links == Links::kFollow) {
    FileDescriptor file = Open(AT_FDCWD, whole, O_RDONLY | O_NONBLOCK);
    if (!file.IsOpen()) RefuseFile(name, std::strerror(errno));
    return TakeRegular(std::move(file), name, whole);
  }
  const std::string entry = fs::path(path).filename().string();
  const FileDescriptor parent = OpenParent(directory, fs::path(path).parent_path(), name);
  FileDescriptor file = Open(parent.get(), entry, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
  const int error = errno;
  if (!file.IsOpen() && IsLink(parent.get(), entry)) RefuseLink(name);
  if (!file.IsOpen()) RefuseFile(name, std::strerror(error));
  return TakeRegular(std::move(file), name, whole);
}

bool IsBelowLink(const std::string& directory, const std::string& path) {
  fs::path at = directory;
  const fs::path parent = fs::path(path).parent_path();
  return std::any_of(parent.begin(), parent.end(), [&](const fs::path& part) {
    std::error_code ignored;
    return fs::is_symlink(at /= part, ignored);
  });
}

EntryKind KindBelow(const std::string& directory, const std::string& path, Links links) {
  std::error_code ignored;
  const fs::path whole = fs::path(directory) / path;
  if (links == Links::kRefuse && IsBelowLink(directory, path)) return EntryKind::kNone;
  if (links == Links::kRefuse && fs::is_symlink(whole, ignored)) return EntryKind::kLink;
  return fs::is_regular_file(whole, ignored) ? EntryKind::kFile : EntryKind::kNone;
}

void RefuseLink(const std::string& name) {
  RefuseFile(name, "is a symbolic link; allowed: a file, or any link with --follow-symlinks");
}

}  // namespace korvel
