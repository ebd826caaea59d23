// Opens and reads files. Examines only the first bytes of their content. Tested by tests/tool/input_test.cpp.
#include "schema/file_bytes.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "base/input_error.h"
#include "qmx/qmx_image.h"
#include "qmx/qmx_xml.h"

namespace korvel {
namespace {

constexpr char kStandardInput[] = "-";
constexpr std::size_t kFirstPiece = std::size_t{64} << 10;  // bytes; for pipes, whose size is unknown

std::string DisplayName(const std::string& path) { return path == kStandardInput ? "<stdin>" : path.empty() ? "''" : path; }

// Without O_NONBLOCK among the flags, opening a pipe waits for its writer.
FileDescriptor Open(const std::string& path, int flags) {
  const int fd =
      path == kStandardInput ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0) : ::open(path.c_str(), O_RDONLY | O_CLOEXEC | flags);
  if (fd < 0) RefuseFile(DisplayName(path), std::strerror(errno));
  return FileDescriptor(fd);
}

bool StatusOf(const std::string& path, struct stat& status) {
  return (path == kStandardInput ? ::fstat(STDIN_FILENO, &status) : ::stat(path.c_str(), &status)) == 0;
}

// Standard input may be a file of which a part has been read already.
bool IsWholeImage(int fd) {
  char first[qmx::kImageMagic.size()];
  const ssize_t got = ::pread(fd, first, sizeof(first), 0);
  return got == static_cast<ssize_t>(sizeof(first)) && qmx::IsImage({first, sizeof(first)}) && ::lseek(fd, 0, SEEK_CUR) == 0;
}

// Enlarges the memory to `capacity` bytes and keeps the bytes read so far.
void Grow(Bytes& bytes, std::size_t capacity) {
  auto larger = std::make_unique_for_overwrite<char[]>(capacity);
  if (bytes.size > 0) std::memcpy(larger.get(), bytes.data.get(), bytes.size);
  bytes.data = std::move(larger);
}

}  // namespace

void RefuseFile(const std::string& name, const std::string& reason) {
  throw ErrorOf({FaultAbout(FaultKind::kUnreadable, name, reason)});
}

void RefuseTooLarge(const std::string& name) {
  RefuseFile(name, "is too large; allowed: at most " + std::to_string(qmx::kMaxFileBytes) + " bytes");
}

std::size_t SizeOf(const std::string& path) {
  struct stat status {};
  return StatusOf(path, status) && S_ISREG(status.st_mode) ? static_cast<std::size_t>(status.st_size) : 0;
}

namespace {

OpenFile Take(FileDescriptor descriptor, std::string name, const std::string& path, const std::string& allowed) {
  OpenFile file{std::move(name), std::move(descriptor)};
  struct stat status {};
  if (::fstat(file.descriptor.get(), &status) != 0) RefuseFile(file.name, std::strerror(errno));
  if (S_ISDIR(status.st_mode)) RefuseFile(file.name, "is a directory; allowed: " + allowed);
  if (!S_ISREG(status.st_mode)) return file;
  if (static_cast<std::uintmax_t>(status.st_size) > qmx::kMaxFileBytes) RefuseTooLarge(file.name);
  file.size = static_cast<std::size_t>(status.st_size);
  file.state = {path, status.st_uid, status.st_dev, status.st_ino, file.size, status.st_mtim, status.st_ctim};
  file.is_whole_image = IsWholeImage(file.descriptor.get());
  return file;
}

}  // namespace

OpenFile OpenInput(const std::string& path) {
  return Take(Open(path, 0), DisplayName(path), path, "a file, or '-' for standard input");
}

OpenFile OpenRegular(const std::string& path) { return TakeRegular(Open(path, O_NONBLOCK), DisplayName(path), path); }

OpenFile TakeRegular(FileDescriptor descriptor, std::string name, const std::string& path) {
  OpenFile file = Take(std::move(descriptor), std::move(name), path, "a file");
  if (file.state.path.empty()) RefuseFile(file.name, "is not a regular file; allowed: a file");
  return file;
}

namespace {

bool IsSame(const timespec& a, const timespec& b) { return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec; }

}  // namespace

void RequireUnchanged(const std::string& name, const FileState& state) {
  struct stat now {};
  if (!StatusOf(state.path, now) || now.st_dev != state.device || now.st_ino != state.number) return;
  const bool is_same = static_cast<std::size_t>(now.st_size) == state.size && IsSame(now.st_mtim, state.written) &&
                       IsSame(now.st_ctim, state.changed);
  if (!is_same) RefuseModified(name);
}

void RefuseModified(const std::string& name) { RefuseFile(name, "was modified while it was read; try again"); }

bool CanBeReadAgain(const OpenFile& file) { return file.size > 0 && file.state.path != kStandardInput; }

void Rewind(const OpenFile& file) {
  if (::lseek(file.descriptor.get(), 0, SEEK_SET) != 0) RefuseFile(file.name, std::strerror(errno));
}

std::size_t ReadUpTo(const OpenFile& file, char* to, std::size_t capacity) {
  std::size_t size = 0;
  while (size < capacity) {
    const ssize_t got = ::read(file.descriptor.get(), to + size, capacity - size);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) RefuseFile(file.name, std::string("cannot be read: ") + std::strerror(errno));
    if (got == 0) break;
    size += static_cast<std::size_t>(got);
  }
  return size;
}

Bytes ReadAll(const OpenFile& file, bool (*is_enough)(std::string_view bytes)) {
  Bytes bytes;
  for (std::size_t capacity = kFirstPiece;; capacity = std::min(capacity * 2, qmx::kMaxFileBytes + 1)) {
    Grow(bytes, capacity);
    bytes.size += ReadUpTo(file, bytes.data.get() + bytes.size, capacity - bytes.size);
    if (bytes.size > qmx::kMaxFileBytes) RefuseTooLarge(file.name);
    if (bytes.size < capacity || (is_enough != nullptr && is_enough(bytes.View()))) return bytes;
  }
}

}  // namespace korvel
