// Suggests the word that was probably meant in place of an unknown one.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace korvel {

// The candidate nearest to `word`, the first of equally near ones; "" if no candidate is near. Near is 0 edits for words of one
// byte, 1 for words of up to 5 bytes and 2 for longer words. An edit adds, drops or replaces a byte, or swaps two neighbours.
// Case is ignored.
//
// Only the first 1,000 candidates and words of up to 64 bytes are considered, so that a file full of mistakes stays cheap.
std::string_view Nearest(std::string_view word, std::span<const std::string_view> candidates);

// " (did you mean 'entry'?)" with the nearest candidate; "" if no candidate is near.
std::string DidYouMean(std::string_view word, std::span<const std::string_view> candidates);

}  // namespace korvel
