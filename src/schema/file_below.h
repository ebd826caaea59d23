// Opens files below a directory without following symbolic links. Who adds files to a project, such as the author of a pull
// request, must not make the program read files elsewhere on the machine.
#pragma once

#include <string>

#include "schema/file_bytes.h"

namespace korvel {

// What to do with symbolic links to files of a project. Links to directories are never searched.
enum class Links { kRefuse, kFollow };

// Opens the regular file at `path`, which begins at `directory`. The directory itself may be a link. With kRefuse, the file and
// the directories between must not be links, even if they are replaced meanwhile. Throws InputError with one line that begins
// with `name`.
OpenFile OpenBelow(const std::string& directory, const std::string& path, const std::string& name, Links links);

// Whether a directory between `directory` and the file at `path` is a link.
bool IsBelowLink(const std::string& directory, const std::string& path);

// What a path leads to from a directory: a file that OpenBelow can open, a link that is not followed, or neither.
enum class EntryKind { kNone, kFile, kLink };
EntryKind KindBelow(const std::string& directory, const std::string& path, Links links);

// Throws InputError with one line that says that the file is a link.
[[noreturn]] void RefuseLink(const std::string& name);

}  // namespace korvel
