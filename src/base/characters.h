// Text as the characters that people see, and columns of text. Text is UTF-8; bytes that are not UTF-8 count as one character
// each.
//
// All functions are linear in the text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// Length in bytes of the character at the start of `text`: 1 to 4. REQUIRES: the text is not empty.
std::size_t CharacterLength(std::string_view text);

// Number of characters of a text, not of terminal cells.
std::size_t CharacterCount(std::string_view text);

// The text with every byte that is not UTF-8 replaced by U+FFFD.
std::string ValidUtf8(std::string_view text);

// A character as a line of a terminal can show it: the character itself, or an escape if it would break the line (OneLine) or is
// not UTF-8 ("\xff").
std::string VisibleCharacter(std::string_view character);

// Terminal cells of a character that VisibleCharacter does not escape: 2 for wide characters of East Asia and pictures, 0 for
// marks that combine with the character before, else 1.
std::size_t CellsOf(std::string_view character);

enum class Align { kLeft, kRight };

// The rows as lines: each cell is padded with blanks to the width of its column, columns are two blanks apart, and no line ends
// in blanks. Widths are character counts. REQUIRES: every row has a cell for each column; cells contain no line breaks.
std::string InColumns(const std::vector<Align>& columns, const std::vector<std::vector<std::string>>& rows);

}  // namespace korvel
