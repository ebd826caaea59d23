// Warnings and notes about a table: allowed changes after which records might not read back, and probable mistakes.
#pragma once

#include "analysis/findings/finding.h"
#include "schema/table_context.h"

namespace korvel {

// What the advice is about: the change of a table; all that a table has which is checked alone (TableCheck::is_alone); or all
// that a table has which only the new source has. In the last two cases both sources of the context are the same.
enum class AdviceSubject { kChange, kTable, kNewTable };

// The advice about a table. With `changes`, those of the same table, sets Finding::refusals. Cheap if there is no advice; else a
// model of the old table is built. REQUIRES: both sources have the table.
Advice FindWarnings(const TableContext& context, const Changes* changes, AdviceSubject subject = AdviceSubject::kChange);

}  // namespace korvel
