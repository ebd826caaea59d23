// Finds the fixed version of a schema file.
#pragma once

#include <vector>

#include "project/check_tables.h"
#include "project/nearest_projects.h"
#include "tool/commands/suggest_files.h"

namespace korvel::tool {

// An earlier state of a schema file, and the results of the tables that it is compared with, with their waivers.
struct EarlierState {
  Input input;
  std::vector<const TableResult*> tables;
};

// The fixed version of a new file, which the checker allows after each of the states, except for changes that waivers accept:
// they stay. A table without such a version stays as it is, and no table becomes refused after a state that accepts it.
// Adds the reasons why tables stay refused. `options` and `projects` are those of the check. Throws InputError.
FixedFile FixFile(const std::vector<EarlierState>& states, Input new_input, std::string path, const CheckOptions& options,
                  const ProjectSet& projects, NothingAllowed& reasons);

}  // namespace korvel::tool
