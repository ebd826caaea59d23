// Texts taken apart into the characters that people see.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvel {

// Length in bytes of the UTF-8 character at the start of a text that is not empty; 1 for a byte that starts none.
std::size_t CharacterLength(std::string_view text);

// Number of characters of a text; a byte that is no part of one counts as one.
std::size_t CharacterCount(std::string_view text);

// The text with every byte that is no UTF-8 replaced by U+FFFD.
std::string ValidUtf8(std::string_view text);

// A character as a line of a terminal can show it: itself; escaped if it would break the line (OneLine) or is no UTF-8.
std::string VisibleCharacter(std::string_view character);

// Cells of a terminal that a character which VisibleCharacter leaves alone takes: 2 for the wide ones of East Asia and for
// pictures, 0 for marks that stand on the character before.
std::size_t CellsOf(std::string_view character);

}  // namespace korvel
