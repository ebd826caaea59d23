// What to say about an edit that may not be made.
#pragma once

#include <string>

#include "analysis/diff/edit.h"
#include "analysis/findings/finding.h"
#include "schema/model.h"

namespace korvel {

// "uint32", "string of 32 bytes", "int8 x 100"
std::string ShapeOf(const EntryModel& entry);

// How the edit is left out: "keep field zone".
std::string LeavingOut(const Edit& edit);

// What to say where nothing can be changed, since the schema is refused as it already was.
std::string PreexistingSuggestion(const Verdict& verdict);

}  // namespace korvel
