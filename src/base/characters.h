// Text as the characters that people see, and columns of text. Text is UTF-8; bytes that are not UTF-8 count as one character
// each.
//
// All functions are linear in the text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

struct Character {
  std::size_t length = 0;  // in bytes; 0: the text does not begin with a character
  std::uint32_t code_point = 0;
};

// The first UTF-8 character of a text. None in an empty text and in front of invalid bytes, overlong forms and surrogates.
Character FirstCharacter(std::string_view text);

// Whether a character is never printed as it is, in any format: control characters (also line ends and tabs: only where they are
// part of the format may a program print them), characters that nobody can see, and those that change the direction of writing.
// Not hidden are blanks, combining marks and the variation selectors U+FE00 to U+FE0F, which readable text contains.
bool IsHidden(std::uint32_t code_point);

// Appends the first character of a text, which is not empty, as a line shows it, and returns its length in the text. Escaped are
// hidden characters (\n, \r, \t, \x1b, \u202e, \U000e0041), bytes that are not UTF-8 (\xff), and the first '#' of "##[" and
// "##word[": services take a line with it for a command to them.
std::size_t AppendShown(std::string& out, std::string_view text);

// Whether the text begins with "##[" or "##word[".
bool BeginsLogCommand(std::string_view text);

// Appends the escape of a character in JSON: "\u202e", two for a character above U+FFFF.
void AppendJsonEscape(std::string& out, std::uint32_t code_point);

// Length in bytes of the character at the start of `text`: 1 to 4. REQUIRES: the text is not empty.
std::size_t CharacterLength(std::string_view text);

// Number of characters of a text, not of terminal cells.
std::size_t CharacterCount(std::string_view text);

// The text with every byte that is not UTF-8 replaced by U+FFFD.
std::string ValidUtf8(std::string_view text);

// The first character of a text as AppendShown shows it. REQUIRES: the text is not empty.
std::string VisibleCharacter(std::string_view text);

// Terminal cells of a character that AppendShown does not escape: 2 for wide characters of East Asia and pictures, 0 for
// marks that combine with the character before, else 1.
std::size_t CellsOf(std::string_view character);

enum class Align { kLeft, kRight };

// The rows as lines: each cell is padded with blanks to the width of its column, columns are two blanks apart, and no line ends
// in blanks. Widths are character counts. REQUIRES: every row has a cell for each column; cells contain no line breaks.
std::string InColumns(const std::vector<Align>& columns, const std::vector<std::vector<std::string>>& rows);

}  // namespace korvel
