// Suggests the word that was probably meant.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace korvel {

// " (did you mean 'entry'?)" for the candidate nearest to `word`, the first of equally near ones; empty when none is near. Near
// is one edit for words of up to 5 bytes, two for longer ones, none for a single byte. An edit adds a byte, leaves one out,
// replaces one or swaps it with the next. Upper and lower case are the same.
//
// Only the first 1,000 candidates are looked at, and no words over 64 bytes, so that a file full of mistakes stays cheap.
std::string DidYouMean(std::string_view word, std::span<const std::string_view> candidates);

}  // namespace korvel
