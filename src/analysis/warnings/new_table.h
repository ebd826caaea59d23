// The warning about a new table that the checker refuses.
#pragma once

#include "analysis/findings/finding.h"
#include "schema/table_context.h"

namespace korvel {

// Checks a new table against itself. If that is refused, every later change of the table is refused as well; then there is one
// warning with the rule and the text of the refusal. One run of the checker, which logs nothing. REQUIRES: both sources of the
// context are the same and have the table.
Advice FindNewTableWarning(const TableContext& context);

}  // namespace korvel
