// Quotes untrusted text inside messages; decodes UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvel {

// Longest piece of a text that a message shows, in bytes of the original text.
inline constexpr std::size_t kMaxQuoted = 60;

// The text in single quotes, on one line: control characters, invisible ones, those that change the direction of writing, and
// bytes that are not UTF-8 are escaped. A text longer than kMaxQuoted is cut between characters and ends in "...".
std::string Quote(std::string_view text);

// Length in bytes of the UTF-8 character at the start of `text`: 1 to 4. 0 for an empty text, invalid bytes, overlong forms and
// surrogates.
std::size_t Utf8Length(std::string_view text);

}  // namespace korvel
