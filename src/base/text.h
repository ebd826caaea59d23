// Puts texts together and makes text from schemas and files safe to show: on a terminal, inside a message, in Markdown.
//
// Functions throw std::bad_alloc only.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace korvel {

// --- Lists and locations ---

// Appends `part` to a list that is built step by step, behind `separator` unless the list is still empty.
inline void AppendPart(std::string& list, std::string_view separator, std::string_view part) {
  if (!list.empty()) list.append(separator);
  list.append(part);
}

// The items in order with `separator` between them; "" for no items. `text_of(item)` is the text of an item, by default the
// item itself: a member pointer or a function that returns anything convertible to std::string_view.
template <class Items, class TextOf = std::identity>
std::string Join(const Items& items, std::string_view separator, TextOf text_of = {}) {
  std::string list;
  bool is_first = true;
  for (const auto& item : items) {
    if (!is_first) list.append(separator);
    is_first = false;
    list.append(std::string_view(std::invoke(text_of, item)));
  }
  return list;
}

// "FILE:LINE:COLUMN", the form in which compilers and editors name a location. `location` has the members `line` and `column`.
template <class LineColumn>
std::string FileLineColumn(std::string_view file, const LineColumn& location) {
  return std::string(file) + ":" + std::to_string(location.line) + ":" + std::to_string(location.column);
}

// --- Text from schemas and files, made safe to show ---

// The text on one line: hidden characters (IsHidden), bytes that are not UTF-8, and what a service could take for a command in a
// log are escaped as by AppendShown; every other character is unchanged. A text that begins with "::", after blanks if any,
// begins with "\x3a:". Names of schemas and files may contain all of this. Not cut: see Quote. Linear.
std::string OneLine(std::string_view text);

// A path as text output shows it, by OneLine. One that begins with "::", "##" (after blanks if any) or "-" has "./" in front, so
// that it is neither a command in a log nor an option of a copied command.
std::string PathText(std::string_view path);

// A word of a command that people copy to a POSIX shell, which passes exactly this text: the text itself, in single quotes, or,
// if it has hidden characters or bytes that are not UTF-8, as the output of printf. Shown on one line. An empty text is ''.
std::string ShellWord(std::string_view text);

// Longest piece of a text that a message shows, in bytes of the original text.
inline constexpr std::size_t kMaxQuoted = 60;

// The text in single quotes, its characters as AppendShown shows them. A text longer than kMaxQuoted is cut between characters
// and ends in "...". For texts that the reader has already, such as a wrong value in a file.
std::string Quote(std::string_view text);

// The same, but never cut: for names that the reader may copy.
std::string QuoteWhole(std::string_view text);

// Length in bytes of the UTF-8 character at the start of `text`: 1 to 4. 0 for an empty text, invalid bytes, overlong forms and
// surrogates.
std::size_t Utf8Length(std::string_view text);

// A JSON document with hidden characters as \uXXXX, and "##[" and "##word[" with the first '#' as \u0023. Its line ends and its
// values stay as they are. REQUIRES: valid UTF-8.
std::string EscapeInJson(std::string json);

// The text with `escape` in front of each of these characters.
std::string EscapeWith(std::string_view text, std::string_view characters, std::string_view escape);

// --- Markdown; bytes that are not UTF-8 become U+FFFD ---

// The text as plain text: nothing in it becomes markup, a tag, a link, a mention, or the end of a table cell or line. Words that
// a service could turn into a link or a picture are inline code: GH-1, #1, @all, commit ids, addresses. One line.
std::string MarkdownText(std::string_view text);

// A name or a piece of a schema as inline code, also inside a table cell. One line.
std::string MarkdownCode(std::string_view text);

// Lines as a code block of a language; no line can end the block. REQUIRES: `lines` is empty or ends in a line end.
std::string MarkdownBlock(std::string_view language, std::string_view lines);

// Breaks lines at blanks so that none is longer than `width` bytes, the indent included; a longer word has a line of its own.
// Every line ends with a line end.
std::string Wrapped(std::string_view text, std::size_t width, std::string_view indent = "");

}  // namespace korvel
