// Compares words and names byte by byte, to recognize a misspelled one.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace korvel {

inline constexpr std::size_t kMaxComparedWord = 64;  // bytes

// The number of edits that turn `a` into `b`, or `limit` + 1 if there are more. An edit adds, drops or replaces a byte, or swaps
// two neighbours. Case is ignored. REQUIRES: both have at most kMaxComparedWord bytes.
std::size_t EditDistance(std::string_view a, std::string_view b, std::size_t limit);

// The number of edits between two names of which one probably is another spelling of the other: "field_07" and "feild_07",
// "user_name" and "userName". nullopt if they are names of different things: "min_price" and "max_price", "note_1" and "note_2".
//
// Names are compared word by word: a word of at least 4 letters may differ by one edit, one of at least 8 by two, and all words
// together by two. Numbers must be equal. Case and separators are ignored. Linear.
std::optional<std::size_t> SpellingDistance(std::string_view a, std::string_view b);

// Whether two names have the same letters, case aside, and differ at most by numbers and separators: "orders_2025", "orders_2026"
// and "orders". Linear.
bool HaveSameLetters(std::string_view a, std::string_view b);

}  // namespace korvel
