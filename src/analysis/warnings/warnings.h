// Warnings and notes about a table: allowed changes after which records might not read back, and probable mistakes.
#pragma once

#include "analysis/findings/finding.h"
#include "schema/table_context.h"

namespace korvel {

// The advice about the change of a table. With `changes`, those of the same table, sets Finding::refusals. Cheap if there is no
// advice; else a model of the old table is built. REQUIRES: both sources have the table.
Advice FindWarnings(const TableContext& context, const Changes* changes);

}  // namespace korvel
