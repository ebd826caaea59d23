// Compares the checker with its plain model on the libraries of a fuzzer.
#pragma once

#include <vector>

#include "model/scenario.h"

namespace fuzz {

// Requires that the checker gives the same results twice, and those of the model. The model follows every path through nested
// structures: if there are too many, it is not run. The libraries of the scenario itself are only printed.
void RequireModel(const model::Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library,
                  const std::vector<model::CallResult>& results);

// Every operation, for the first table of the old library.
std::vector<model::Call> EveryCall(LPQMXMETALIB old_library);

}  // namespace fuzz
