// The attributes of a table as key=value pairs, for edits of single keys. The meaning of keys and values is not examined.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/limits.h"
#include "qmx/qmx_source_map.h"

namespace korvel {

// Borrows from its text.
struct AttributePair {
  std::string_view key;
  std::string_view value;
  qmx::Span span;              // of both in the text
  std::string_view meant_key;  // see MeantKey
};

// The pairs of "key=value;key=value"; none for an absent or empty text. nullopt if the text does not split into pairs with unique
// keys, or has more than kMaxAttributePairs. Keys are equal if they differ only in case and in the spaces around them, or if
// the same known key is meant.
std::optional<std::vector<AttributePair>> SplitAttributes(const std::optional<std::string>& text);

// A key whose value or spelling differs; the empty key means the whole text.
struct AttributeChange {
  std::string key;     // as the old text has it, or else the new one, without the spaces around it
  std::string before;  // as in Edit; "" for an absent value; the whole pair if the key is spelled differently
  std::string after;   // likewise
  qmx::Span old_part;  // of the pair in each text; empty for an absent pair, and for the whole text
  qmx::Span new_part;
};

// The changed keys: those of the old text in its order, then those that only the new text has. One change of the whole text if
// either text does not split, or if the texts differ but their pairs do not.
std::vector<AttributeChange> CompareAttributes(const std::optional<std::string>& old_text,
                                               const std::optional<std::string>& new_text);

// The old text after some of the changes of CompareAttributes; with all of them, the new text.
std::optional<std::string> ChangeAttributes(const std::optional<std::string>& old_text,
                                            const std::optional<std::string>& new_text,
                                            const std::vector<std::string_view>& chosen_keys);

// Replaces the value of one key in "key=value;key=value", if it has one.
void SetAttribute(std::string& attributes, const std::string& key, const std::string& value);

}  // namespace korvel
