// Finds the part of a table that a refusal is about if no change causes it.
#pragma once

#include <string>

#include "analysis/findings/finding.h"
#include "schema/source.h"

namespace korvel {

// The attribute, index or field that a refusal of the table as it is names, or could only mean; else the table's meta. Some
// refusals run the checker (FindAttributeFault). REQUIRES: the source has the table.
Location LocateRefusal(const Source& source, const std::string& table, const Verdict& verdict);

// What to do about such a refusal. One line. REQUIRES: as LocateRefusal.
std::string LintSuggestion(const Source& source, const std::string& table, const Verdict& verdict);

}  // namespace korvel
