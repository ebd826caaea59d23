// Words for suggestions. Which suggestion is right is decided elsewhere: see suggestions.h.
#pragma once

#include <string>
#include <string_view>

#include "analysis/diff/edit.h"
#include "analysis/findings/finding.h"
#include "schema/model.h"

namespace korvel {

// "uint32", "string of 32 bytes", "int8 x 100"
std::string ShapeOf(const EntryModel& entry);

// The words with the values of the edit for "{item}", "{meta}", "{before}" and "{after}"; empty values are "none". One line.
std::string FillIn(std::string_view words, const Edit& edit);

// How to leave out an edit: "keep field zone". One line.
std::string LeavingOut(const Edit& edit);

// How to leave out another name: "keep zone instead of zoen". One line.
std::string KeepingName(const std::string& old_name, const std::string& new_name);

// "renamed? fields are matched by name; keep zone instead of zoen", for "fields" and the last words.
std::string RenamedSuggestion(const std::string& things, const std::string& kept);

// What to say about a pre-existing refusal, which no change of the new schema can remove. One line.
std::string PreexistingSuggestion(const Verdict& verdict);

}  // namespace korvel
