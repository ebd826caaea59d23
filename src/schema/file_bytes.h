// Opens and reads the files that a call names. Does not interpret their content: see input.h.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>

#include "base/file_descriptor.h"

namespace korvel {

// The file that a path led to, and its last change. A program can set the time of the last write as it likes, but not that of the
// last change of the inode.
struct FileState {
  std::string path;
  uid_t owner = 0;
  dev_t device = 0;
  ino_t number = 0;
  std::size_t size = 0;  // bytes
  timespec written = {};
  timespec changed = {};
};

// An open file.
struct OpenFile {
  std::string name;  // as messages show it
  FileDescriptor descriptor;
  std::size_t size = 0;         // bytes; 0 if unknown before the end is read: pipes, devices
  bool is_whole_image = false;  // a regular file, at its first byte, that begins like an image
  FileState state = {};         // of a regular file
};

// Size in bytes of the regular file at a path, "-" for standard input; 0 for everything else.
std::size_t SizeOf(const std::string& path);

// Opens a path, "-" for standard input. Throws InputError with one line if it cannot be opened, is a directory or is too large.
OpenFile OpenInput(const std::string& path);

// The same, but also refuses pipes and devices, without waiting for their writers: of a file that was not named in the call.
OpenFile OpenRegular(const std::string& path);

// The file behind a descriptor that was opened without waiting (O_NONBLOCK). `path` leads to it. Throws as OpenRegular.
OpenFile TakeRegular(FileDescriptor descriptor, std::string name, const std::string& path);

// Throws InputError with one line about a file that cannot be read.
[[noreturn]] void RefuseFile(const std::string& name, const std::string& reason);

// The same about a file of more than qmx::kMaxFileBytes.
[[noreturn]] void RefuseTooLarge(const std::string& name);

// Throws InputError with one line if the file has been written to since `state`: the bytes read may mix old and new content. A
// file that was replaced by another one counts as unchanged. Keeps no file open: a call may name more files than a process may
// open.
void RequireUnchanged(const std::string& name, const FileState& state);

// Throws InputError with one line that says so.
[[noreturn]] void RefuseModified(const std::string& name);

// Whether the file can be read again through its path: a regular file, but not standard input.
bool CanBeReadAgain(const OpenFile& file);

// Moves the current position to the start of the file. REQUIRES: CanBeReadAgain.
void Rewind(const OpenFile& file);

// Bytes of a file. The memory is not initialized before it is read into.
struct Bytes {
  std::string_view View() const { return {data.get(), size}; }

  std::unique_ptr<char[]> data;
  std::size_t size = 0;
};

// Reads from the current position to the end of the file, at most `capacity` bytes. Returns their number. Throws InputError with
// one line if a read fails.
std::size_t ReadUpTo(const OpenFile& file, char* to, std::size_t capacity);

// Reads from the current position to the end of the file, or until `is_enough` returns true for the bytes so far. Throws
// InputError with one line if a read fails or the file is larger than qmx::kMaxFileBytes.
Bytes ReadAll(const OpenFile& file, bool (*is_enough)(std::string_view bytes) = nullptr);

}  // namespace korvel
