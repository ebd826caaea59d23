// Keeps a text on one line of a terminal.
#pragma once

#include <string>
#include <string_view>

namespace korvel {

// The text with control characters, line separators and marks that change the direction of writing escaped (\n, \r, \t, \x1b),
// every other byte unchanged. Names of schemas and files may contain any of them. Not cut: see Quote. Linear.
std::string OneLine(std::string_view text);

}  // namespace korvel
