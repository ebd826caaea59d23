// Waivers of ids that a history reports as reused. `check` has no such findings, so `waive` cannot add them.
#pragma once

#include <vector>

#include "project/project.h"
#include "report/result/history.h"

namespace korvel {

// Sets ReusedId::waiver where a valid waiver of the project file covers the reuse: an exact one names its rule, file, change, and
// any of its tables and paths; a wide one the rule, and any of its tables and entries. Throws InputError as Today.
void WaiveReusedIds(const Project& project, std::vector<ReusedId>& reused_ids);

// Sets ReusedId::waiver_entry.
void AddWaiverEntries(std::vector<ReusedId>& reused_ids);

// An error for each waiver that expired and would cover a reuse that no other waiver covers: for calls that fail on warnings.
// Throws likewise.
std::vector<ProjectFinding> ExpiredWaivers(const Project& project, const std::vector<ReusedId>& reused_ids);

}  // namespace korvel
