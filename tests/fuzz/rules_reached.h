// Which rows of the catalog of refusals were reached.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "model/scenario.h"

namespace fuzz {

// Adds the ids of the rows whose texts occur in the buffers and logs of the results.
void CollectRules(const std::vector<model::CallResult>& results, std::set<std::string>& ids);

// Counts them for the whole process, which prints them when it ends: "rules reached: 70 of 77; not reached: ...".
void CountRules(const std::vector<model::CallResult>& results);

}  // namespace fuzz
