// What a finding is known by from one call to the next.
#pragma once

#include <string>
#include <vector>

#include "analysis/findings/finding.h"

namespace korvel {

// 16 hexadecimal digits that stand for a text.
std::string FingerprintOf(const std::string& text);

// The digits of a finding, made of the library's name, the rule, and the kind, structure and item of each edit in whatever order;
// of the path for a finding without edits. Not of values, files or tables: the fingerprint stays when a refused type is replaced
// by another refused one, and is the same in every table that embeds a structure.
// Stored in project files: do not change.
std::string FingerprintOf(const std::string& library, const Finding& finding, const std::vector<Edit>& edits);

}  // namespace korvel
