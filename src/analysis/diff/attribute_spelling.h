// How table attributes are spelled, and what was probably meant by one that is spelled differently. For suggestions only: the
// checker decides which attributes are valid.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace korvel {

// A text without the spaces around it. The checker does not remove them.
std::string_view WithoutOuterSpaces(std::string_view text);

// Whether "key=value" has a known key and a value that the key may have.
bool IsKnownAttribute(std::string_view pair);

// The known key that a pair has or was probably meant to have; "" without one.
std::string_view MeantKey(std::string_view pair);

// "ListNum=10" for " listnum = 10": without spaces around key and value, with the nearest known key and word. nullopt if the pair
// is known already, or if no known pair is near.
std::optional<std::string> CorrectedAttribute(std::string_view pair);

// A whole text of attributes, each one corrected if possible, without empty ones. nullopt if the text is the same, or has more
// than kMaxAttributePairs attributes.
std::optional<std::string> CorrectedAttributes(std::string_view text);

// What to do about an attribute that the checker refuses: "write 'ListNum=10', without spaces". One line.
std::string AttributeSuggestion(std::string_view pair);

}  // namespace korvel
