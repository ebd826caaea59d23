// Addresses of files of a baseline, which editors open like other files.
#pragma once

#include <string>

namespace korvel::lsp {

// The address of a file of a baseline. `name` is as in reports: a path from `root` gives that of the file on the disk, and
// "git:REV:PATH" gives "korvelcheck:/ROOT/PATH?git%3AREV%3APATH", which BaselineText reads. The file name is at the end of the
// path because editors show it there and derive the language from it.
std::string BaselineAddress(const std::string& root, const std::string& name);

// The text behind such an address, if it begins with "korvelcheck:". Changes the working directory. Throws RequestError,
// InputError.
std::string BaselineText(const std::string& uri);

}  // namespace korvel::lsp
