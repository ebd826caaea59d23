// The catalog of refusals as a list of rows. The rows themselves are in refusals.h, which only rules need.
#pragma once

#include <span>
#include <string_view>

namespace korvel {

struct RefusalRow {
  const char* id;       // "primary-key.count"
  int code;             // what the refusing operation returns; 0 = the code of the rule it reports
  const char* text;     // a format
  const char* summary;  // one line: what is refused
};

// All rows, ordered by family.
std::span<const RefusalRow* const> AllRefusals();

// The row of that id; null if there is none. Linear in the number of rows.
const RefusalRow* FindRefusal(std::string_view id);

// The row whose text, filled in, reads `text`: the most specific one that fits; null if none does.
const RefusalRow* Identify(std::string_view text);

}  // namespace korvel
