// Path patterns.
#pragma once

#include <string_view>

namespace korvel {

// Whether a path matches a pattern. Both are relative, of names joined by '/'. In a pattern
//   ?    is one character of a name (a UTF-8 one, else a byte),
//   *    any number of characters of a name,
//   **   as a whole name: any number of directories, none among them; at the end: whatever is below.
// Every other byte matches itself. Linear in the product of both lengths.
bool MatchesGlob(std::string_view pattern, std::string_view path);

// The directories in front that the pattern names without a wildcard: "schemas" of "schemas/*.xml", "" of "*.xml".
std::string_view FixedDirectory(std::string_view pattern);

}  // namespace korvel
