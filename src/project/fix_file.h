// Finds the fixed version of a schema file.
#pragma once

#include <vector>

#include "analysis/suggest/suggest.h"
#include "project/check_project.h"
#include "project/check_tables.h"
#include "project/git.h"
#include "project/nearest_projects.h"
#include "report/result/report.h"
#include "schema/input.h"

namespace korvel {

// An earlier state of a schema file, and the results of the tables that it is compared with, with their waivers.
struct EarlierState {
  Input input;
  std::vector<const TableResult*> tables;
};

// The states of the baselines that a file was compared with, read again, without the tables that are refused in an unchanged
// file. Not those of baselines without the file. The results borrow the report. Throws InputError.
std::vector<EarlierState> EarlierStatesOf(const std::vector<const ComparedFile*>& states, const Report& report, Git& git);

// The fixed version of a new file, which the checker allows after each of the states, except for changes that waivers accept:
// they stay. A table without such a version stays as it is, and no table becomes refused after a state that accepts it. Edits the
// text of the file if possible; else writes a new one. `options` and `projects` are those of the check. Throws InputError.
SchemaSuggestion FixFile(const std::vector<EarlierState>& states, const Input& new_input, const CheckOptions& options,
                         const ProjectSet& projects);

}  // namespace korvel
