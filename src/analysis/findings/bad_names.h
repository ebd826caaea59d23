// Which names the checker takes for no field names.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "analysis/findings/finding.h"

namespace korvel {

struct BadName {
  std::size_t position;  // in the list asked about
  Verdict verdict;       // about a table of that name that has such a field
};

// The checker ends at the first bad name of a table and its text does not tell which it is, so each bad one is found by itself,
// by halving. In the order of the names, at most `most` of them.
std::vector<BadName> FindBadNames(const std::string& table, const std::vector<std::string>& names, std::size_t most);

}  // namespace korvel
