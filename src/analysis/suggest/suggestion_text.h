// Words for suggestions. Which suggestion is right is decided elsewhere: see suggestions.h.
#pragma once

#include <string>

#include "analysis/diff/edit.h"
#include "analysis/findings/finding.h"
#include "schema/model.h"

namespace korvel {

// "uint32", "string of 32 bytes", "int8 x 100"
std::string ShapeOf(const EntryModel& entry);

// How to leave out an edit: "keep field zone". One line.
std::string LeavingOut(const Edit& edit);

// What to say about a pre-existing refusal, which no change of the new schema can remove. One line.
std::string PreexistingSuggestion(const Verdict& verdict);

}  // namespace korvel
