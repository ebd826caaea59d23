// What a fuzzer does to a scenario from one try to the next.
#pragma once

#include "model/random.h"
#include "model/scenario.h"

namespace fuzz {

// A change of a library (or a few), of the relation of the two libraries, of the questions or of the log; or all anew.
void Mutate(model::Scenario& scenario, model::Random& random);

}  // namespace fuzz
