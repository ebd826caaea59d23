// Waivers of a project: which findings they cover, and what is wrong with them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "project/nearest_projects.h"
#include "project/project.h"
#include "report/result/report.h"
#include "report/result/waiver_list.h"

namespace korvel {

// A finding of a report, in one of the tables that have it.
struct TableFinding {
  const TableResult* table;
  Finding* finding;
};

// All findings of a report, table by table.
std::vector<TableFinding> FindingsOf(Report& report);

// What became of a waiver in a check. Borrows the project and the report.
struct WaiverUse {
  const WaiverEntry* waiver;
  WaiverState state = WaiverState::kUnused;
  std::vector<TableFinding> findings = {};  // that it covers, or would cover if it had not expired
  std::vector<std::size_t> project = {};    // the same, as positions in Report::project. Only of kFile
  std::string fault = {};                   // kMalformed: what is wrong
  std::string suggestion = {};              // may have several lines
  std::string instead = {};                 // kUnused: another change of the same rule at its path, if there is one
};

// Finds what each waiver of a project file covers among the findings that this file judges, in its order, and sets
// Finding::waiver there. The verdict does not change. `position` is that of the project file in the set of the call.
//
// An exact waiver names one change of one file, found by its rule, table, path and text. It covers the finding in every table of
// the file: tables that embed a structure share its changes. A fingerprint must be that of the finding; with one, the named
// table need not be among those of the report. For a moved file, the old path is as good as the new one. A waiver of a finding
// about the project file names its file, or a directory that contains all of its files. Throws InputError as Today.
std::vector<WaiverUse> ApplyWaivers(const Project& project, std::size_t position, Report& report);

struct WaiverPolicy {
  bool all_compared = false;  // every schema of the project was: a waiver that covers nothing is not needed
  bool is_strict = false;     // unused and expired waivers are errors, not warnings
};

// Adds to the report what is wrong with waivers. Malformed ones are errors, and so are expired ones whose finding fails its table
// again. Others that expired, and those that are not needed, are warnings; a waiver of a reused id may be for a history.
// REQUIRES: Report::fails_on_warnings is set.
void ReportWaivers(const Project& project, const std::vector<WaiverUse>& uses, WaiverPolicy policy, Report& report);

// Both for all project files of a call. `policy` is for the first; the others compare all schemas only if they are covered, too.
void ApplyAllWaivers(const ProjectSet& projects, WaiverPolicy policy, Report& report);

}  // namespace korvel
