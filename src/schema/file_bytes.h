// Opens and reads the files that a call names.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>

#include "base/file_descriptor.h"

namespace korvel {

// Which file a path led to, and when it was written last.
struct FileState {
  std::string path;
  dev_t device = 0;
  ino_t number = 0;
  std::size_t size = 0;  // bytes
  timespec written = {};
};

// A file that is open and can be read.
struct OpenFile {
  std::string name;  // as shown
  FileDescriptor descriptor;
  std::size_t size = 0;            // bytes; 0 where it is not known before the end is read: pipes, devices
  bool is_mappable_image = false;  // a regular file, at its first byte, that begins as an image does
  FileState state = {};            // of a file whose size is known
};

// Size in bytes of the file at a path, "-" being standard input; 0 where it is not known: pipes, devices, what is not there.
std::size_t SizeOf(const std::string& path);

// Opens a path; "-" is standard input. Throws InputError with one line for what cannot be opened, is a directory or too large.
OpenFile OpenInput(const std::string& path);

// Throws InputError with one line if the file has been written to since: what was read of it may be of before and after. One that
// was replaced as a whole is still what it was. No file is kept open for this: a call may name more than can be.
void RequireUnchanged(const std::string& name, const FileState& state);

// Bytes of a file, in memory that was not touched before they were read.
struct Bytes {
  std::string_view View() const { return {data.get(), size}; }

  std::unique_ptr<char[]> data;
  std::size_t size = 0;
};

// Reads from where the file stands to its end, but at most `capacity` bytes. Their number. Throws InputError with one line.
std::size_t ReadUpTo(const OpenFile& file, char* to, std::size_t capacity);

// Reads from where the file stands to its end, or until `is_enough` of the bytes so far. Throws InputError with one line.
Bytes ReadAll(const OpenFile& file, bool (*is_enough)(std::string_view bytes) = nullptr);

}  // namespace korvel
