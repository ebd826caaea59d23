// Undoes renames in a schema file.
#pragma once

#include <optional>

#include "analysis/diff/renamed_metas.h"
#include "schema/source.h"

namespace korvel {

// The file with the old names of these metas, also as types of entries. Every other byte stays. nullopt if XML cannot express a
// name, or if the result is no schema. Linear. REQUIRES: the source has a text, and the metas with the new names, but none with
// the old ones.
std::optional<Source> WithOldNames(const Source& source, const RenamedMetas& renamed);

}  // namespace korvel
