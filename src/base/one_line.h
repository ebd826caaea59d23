// Keeps a text on its line of a terminal.
#pragma once

#include <string>
#include <string_view>

namespace korvel {

// The text with its control characters and line separators escaped (\n, \r, \t, \x1b), every other byte as it is. Names of a
// schema and of files may hold any of them.
std::string OneLine(std::string_view text);

}  // namespace korvel
