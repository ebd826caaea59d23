// Lets findings pass that a project has waived.
#pragma once

#include "project/project.h"
#include "report/result/report.h"

namespace korvel {

// Sets Finding::waiver of every finding that a waiver of the project is for, and reports the waivers that are malformed or
// expired; with `all_compared`, which means that every schema of the project was, also those that are for no finding. Says
// nothing about the verdict, which stays what it is. Throws InputError as Today.
void ApplyWaivers(const Project& project, bool all_compared, Report& report);

}  // namespace korvel
