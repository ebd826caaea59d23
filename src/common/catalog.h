// The catalog of refusals as a list of rows. The rows themselves are in refusals.h, which only rules need.
#pragma once

#include <span>
#include <string_view>

#include "common/refusal_row.h"

namespace korvel {

// All rows, ordered by family.
std::span<const RefusalRow* const> AllRefusals();

// The row of that id; null if there is none. Linear in the number of rows.
const RefusalRow* FindRefusal(std::string_view id);

// The row whose text, filled in, reads `text`: the most specific one that fits; null if none does.
const RefusalRow* Identify(std::string_view text);

}  // namespace korvel
