// Addresses of files of a baseline, which editors open like other files.
#pragma once

#include <string>

namespace korvel::lsp {

// The address of a file of an earlier state, as a report names it: that of the file on the disk, or one that BaselineText reads,
// "korvelcheck:/ROOT/PATH?git%3AREV%3APATH". Editors show its last part and use it to find out the language.
std::string BaselineAddress(const std::string& root, const std::string& name);

// The text behind such an address, if it begins with "korvelcheck:". Changes the working directory. Throws RequestError,
// InputError.
std::string BaselineText(const std::string& uri);

}  // namespace korvel::lsp
