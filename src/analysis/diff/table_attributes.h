// The attributes of a table as pairs, for edits of one key. What keys and values mean is not looked at.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/limits.h"

namespace korvel {

struct AttributePair {
  std::string_view key;
  std::string_view value;
};

// The pairs of "key=value;key=value", of which there are none in no text and in an empty one; nullopt if it does not split into
// pairs whose keys differ, or into more than kMaxAttributePairs.
std::optional<std::vector<AttributePair>> SplitAttributes(const std::optional<std::string>& text);

// A key whose value differs; the empty key stands for the text as a whole.
struct AttributeChange {
  std::string key;
  std::string before;  // "" where there is none
  std::string after;
};

// The changed keys: those of the old text in its order, then those only the new one has. All of it as one change where a text
// does not split, or where the pairs are the same and the texts are not.
std::vector<AttributeChange> CompareAttributes(const std::optional<std::string>& old_text,
                                               const std::optional<std::string>& new_text);

// The old text with some of the changes made; with all of them, the new one.
std::optional<std::string> ChangeAttributes(const std::optional<std::string>& old_text,
                                            const std::optional<std::string>& new_text,
                                            const std::vector<std::string_view>& chosen_keys);

}  // namespace korvel
