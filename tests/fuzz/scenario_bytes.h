// Encodes scenarios as bytes and decodes them, for fuzzers.
//
// Any bytes are a scenario: missing members are zero, empty or absent. Not stable: the corpus must be regenerated when a member
// is added.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "model/scenario.h"

namespace fuzz {

// REQUIRES: no text in it contains a zero byte.
std::string BytesOf(const model::Scenario& scenario);

model::Scenario ScenarioOf(const std::uint8_t* data, std::size_t size);

}  // namespace fuzz
