// Shows untrusted text inside a message.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvel {

// Longest piece of a text that a message shows, in bytes of the text.
inline constexpr std::size_t kMaxQuoted = 60;

// The text between single quotes, on one line: control characters, invisible and direction-changing ones and bytes that are not
// UTF-8 are escaped; what is longer than kMaxQuoted ends in "...", never in the middle of a character.
std::string Quote(std::string_view text);

// Length in bytes of the UTF-8 character at the start of `text`; 0 if there is none (overlong forms and surrogates are none).
std::size_t Utf8Length(std::string_view text);

}  // namespace korvel
