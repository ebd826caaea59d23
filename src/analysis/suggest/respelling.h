// Corrects the spelling of table attributes that an edit adds or changes.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "analysis/diff/edit.h"

namespace korvel {

struct Respelling {
  std::vector<std::pair<std::string, std::string>> pairs;  // as they are given, and as they are spelled correctly
  std::string text;                                        // for people, one line: "write 'ListNum=10', without spaces"
};

// Of an edit of table attributes, which are `attributes` in the new schema. All attributes are corrected if the edit adds one or
// changes the whole text: the checker refuses new ones for each other's faults. nullopt if nothing is near.
std::optional<Respelling> FindRespelling(const Edit& edit, const std::optional<std::string>& attributes);

// Replaces the pairs in a text of attributes, as far as it has them.
void Apply(const Respelling& respelling, std::string& attributes);

}  // namespace korvel
