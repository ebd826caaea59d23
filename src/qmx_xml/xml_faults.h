// Errors of files that are not well-formed XML, or cannot be XML at all, and their texts.
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

// Checks the bytes only: size, byte order marks, and whether the file begins like XML.
std::optional<FileFault> FindFileFault(std::string_view text);

// The meaning of an error code of the parser at a position of the file. `open_element` describes the innermost open element, or
// is empty.
FileFault DescribeSyntaxError(int code, std::string_view text, std::size_t offset, std::string_view open_element);

// Whether files may declare this encoding.
bool IsAllowedEncoding(std::string_view name);

}  // namespace qmx
