// Schemas as the commands see them: read from schema files or images, whichever the file holds.
#pragma once

#include <optional>
#include <string>

#include "schema/file_bytes.h"
#include "schema/source.h"

namespace korvel {

struct Input : Source {
  std::optional<FileState> mapped;  // of the file in which the library lies; none if it lies in memory
};

// Throws InputError if a mapped file has been written to: what was concluded from it may be wrong.
void RequireUnchanged(const Input& input);

// The schema in bytes that were read. Throws InputError as LoadFile.
Input LoadBytes(const std::string& name, Bytes bytes);

// The schema in the file at a path; "-" is standard input. An image in a regular file is mapped. Throws InputError with every
// fault of the file: one that cannot be read or is larger than qmx::kMaxFileBytes has one line, and so has an image that is
// refused, "file: error: what"; an error of a schema file is "file:line:column: error: what".
Input LoadFile(const std::string& path);

}  // namespace korvel
