// Schemas as the commands see them: read from schema files or images, whichever the file holds.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/source/source.h"
#include "tool/file_bytes.h"
#include "tool/reports.h"

namespace korvel::tool {

struct Input : Source {
  std::optional<FileState> mapped;  // of the file in which the library lies; none if it lies in memory
};

// Throws CannotAsk if a mapped file has been written to: what was concluded from it may be wrong.
void RequireUnchanged(const Input& input);

// The schema in bytes that were read. Throws CannotAsk as LoadInputs.
Input LoadBytes(const std::string& name, Bytes bytes);

// Reads the files; "-" is standard input, "git:REV:PATH" a file of a commit. Large ones are read at the same time. Throws
// CannotAsk with every fault of every file, in the order of the paths: one that cannot be read or is larger than
// qmx::kMaxFileBytes has one line, and so has an image that is refused, "file: error: what"; an error of a schema file is
// "file:line:column: error: what".
std::vector<Input> LoadInputs(const std::vector<std::string>& paths);

}  // namespace korvel::tool
