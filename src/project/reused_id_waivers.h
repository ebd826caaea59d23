// Waivers of ids that a history reports as reused. `check` has no such findings.
#pragma once

#include <vector>

#include "project/project.h"
#include "report/result/history.h"

namespace korvel {

// Sets ReusedId::waiver where a valid waiver of the project file covers the reuse: an exact one names its rule, file, change, and
// any of its tables and paths; a wide one the rule, and any of its tables and entries. Throws InputError as Today.
void WaiveReusedIds(const Project& project, std::vector<ReusedId>& reused_ids);

}  // namespace korvel
