// Finds tables and structures that have probably been renamed.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>

#include "schema/model.h"

namespace korvel {

// Old names to new ones.
using RenamedMetas = std::map<std::string, std::string>;

// The tables of the old source that the new one probably has under another name: one that the old source does not have, of a
// table with the same or nearly the same content. Each new table has at most one old name. n log n in the tables that only one
// source has.
RenamedMetas FindRenamedTables(const Source& old_source, const Source& new_source);

// The same for the structures that a table reaches in both sources, if an entry has the old one and then the new one. REQUIRES:
// the models are those of the table.
RenamedMetas FindRenamedStructures(const Source& old_source, const Model& old_model, const Source& new_source,
                                   const Model& new_model);

// Gives the metas the old names, also as types of entries. Linear. REQUIRES: the model has no meta with an old name.
void UseOldNames(const RenamedMetas& renamed, Model& model);

// How much two metas differ that may be the same one under another name; nullopt if they may not. The smaller, the more likely: 0
// for the same content and a misspelled name. Kind and primary key are equal, and so are at least half of the fields if the names
// are similar (SpellingDistance), else three quarters, and two. Names that differ only by numbers are names of different things.
// The name of a structure in an entry is not compared.
// n log n.
std::optional<std::size_t> RenameDifference(const MetaModel& old_meta, const MetaModel& new_meta);

}  // namespace korvel
