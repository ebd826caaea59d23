// Mutates a scenario for a fuzzer.
#pragma once

#include "model/random.h"
#include "model/scenario.h"

namespace fuzz {

// One change (or a few) of a library, of the relation of the two libraries, of the calls or of the log; or a new scenario.
void Mutate(model::Scenario& scenario, model::Random& random);

}  // namespace fuzz
