// Makes a scenario smaller as long as something holds of it.
#pragma once

#include <functional>

#include "model/scenario.h"

namespace model {

// The smallest scenario that greedy steps reach and of which `holds` is still true: fewer questions, metas, fields, attributes
// and differences between the libraries. REQUIRES: it is true of `scenario`.
Scenario Shrink(Scenario scenario, const std::function<bool(const Scenario&)>& holds);

}  // namespace model
