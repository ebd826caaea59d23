// Undoes renames in a schema file.
#pragma once

#include <optional>
#include <vector>

#include "analysis/diff/renamed_metas.h"
#include "analysis/findings/finding.h"
#include "schema/source.h"

namespace korvel {

// The changes of the file that give these metas their old names, also as types of entries, in its order. nullopt if XML cannot
// express a name. Linear. REQUIRES: the source has a text, and the metas with the new names, but none with the old ones.
std::optional<std::vector<Replacement>> RestoreNames(const Source& source, const RenamedMetas& renamed);

// The file after these changes. nullopt also if it is no schema.
std::optional<Source> WithOldNames(const Source& source, const RenamedMetas& renamed);

}  // namespace korvel
