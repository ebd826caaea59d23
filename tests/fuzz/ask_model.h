// Holds the checker to its plain model on whatever libraries a fuzzer came up with.
#pragma once

#include <vector>

#include "model/scenario.h"

namespace fuzz {

// Requires that the checker answers twice the same, and as the model does. The model walks structures in structures every way:
// where these are too many, it is not asked. The libraries of the scenario itself are only printed.
void RequireModel(const model::Scenario& scenario, LPQMXMETALIB old_library, LPQMXMETALIB new_library,
                  const std::vector<model::Answer>& answers);

// Every operation, about the first table of the old library.
std::vector<model::Question> EveryQuestion(LPQMXMETALIB old_library);

}  // namespace fuzz
