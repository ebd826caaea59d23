// What can be wrong with a file before or instead of being XML, and the texts for it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qmx {

struct FileFault {
  std::size_t offset = 0;
  std::string text;
};

// Looks at the bytes alone: size, encoding marks, and whether it begins as XML does.
std::optional<FileFault> FindFileFault(std::string_view text);

// What an error code of the parser at a place of the file means. `open_element` describes the innermost open element, or is
// empty.
FileFault DescribeSyntaxError(int code, std::string_view text, std::size_t offset, std::string_view open_element);

// Whether files may declare this encoding.
bool IsAllowedEncoding(std::string_view name);

}  // namespace qmx
