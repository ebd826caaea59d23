// Whether a table changes at all, for a fraction of the cost of a difference.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "analysis/diff/edit.h"

namespace korvel {

// Whether the table and the structures in it are declared alike in both sources, in libraries of the same name and protocol. The
// version of the library does not matter: it changes with any other table. Then a difference has no other edit. Linear in what
// the table reaches. REQUIRES: both sources have the table.
bool IsUnchanged(const Source& old_source, const Source& new_source, const std::string& table);

// Whether all tables are unchanged, because both libraries have the same bytes apart from their versions. False if this is not
// known. Much cheaper than IsUnchanged for each table.
bool AreAllUnchanged(const Source& old_source, const Source& new_source);

// The edits of a table, without that of the version of the library.
std::size_t CountOwnEdits(const std::vector<Edit>& edits);

}  // namespace korvel
