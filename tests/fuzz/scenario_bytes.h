// Scenarios as bytes and back, for fuzzers, which know bytes only.
//
// Any bytes are a scenario: what is missing is zero, empty or absent. Not stable: a corpus is made anew when a member is added.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "model/scenario.h"

namespace fuzz {

// REQUIRES: no text in it holds a zero byte.
std::string BytesOf(const model::Scenario& scenario);

model::Scenario ScenarioOf(const std::uint8_t* data, std::size_t size);

}  // namespace fuzz
