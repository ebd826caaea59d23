// Shrinks a scenario while a condition holds.
#pragma once

#include <functional>

#include "model/scenario.h"

namespace model {

// The smallest scenario that greedy steps reach and for which `holds` is still true: fewer calls, metas, fields, attributes and
// differences between the libraries. REQUIRES: `holds(scenario)` is true.
Scenario Shrink(Scenario scenario, const std::function<bool(const Scenario&)>& holds);

}  // namespace model
