// The names and ids of fields that earlier schemas have, beside those of the old schema of a comparison.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace korvel {

struct UsedFields {
  std::set<std::string> names;
  std::set<std::int32_t> ids;
};

// By structure. No field that is added gets one of them: it would read what is stored for another field.
using ReservedFields = std::map<std::string, UsedFields>;

}  // namespace korvel
