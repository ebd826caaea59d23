// Which rows of the catalogue of refusals some answers came to.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "model/scenario.h"

namespace fuzz {

// Adds the ids of the rows whose texts stand in the answers' buffers and logs.
void CollectRules(const std::vector<model::Answer>& answers, std::set<std::string>& ids);

// Counts them for the whole process, which prints them as it ends: "rules reached: 70 of 77; not reached: ...".
void CountRules(const std::vector<model::Answer>& answers);

}  // namespace fuzz
