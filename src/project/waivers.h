// Waivers of a project: which ones are valid, and which findings they apply to.
#pragma once

#include <string>

#include "project/project.h"
#include "report/result/report.h"

namespace korvel {

// Which keys a waiver has. An empty `entry` is meaningful: it names a finding about the table as a whole.
struct WaiverKeys {
  bool has_table = false;
  bool has_rule = false;
  bool has_entry = false;
};

// What is wrong with a waiver and what is allowed; empty if it is valid. `project` holds the waivers before it.
std::string FaultOf(const WaiverEntry& waiver, const WaiverKeys& keys, const Project& project);

// Sets Finding::waiver of every finding that a waiver of the project names, and reports the waivers that are malformed or
// expired; with `all_compared`, which means that every schema of the project was, also those that match no finding. The verdict
// does not change. Throws InputError as Today.
void ApplyWaivers(const Project& project, bool all_compared, Report& report);

}  // namespace korvel
