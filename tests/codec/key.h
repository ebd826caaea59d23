// The keys of a record as bytes, as a store would look it up.
#pragma once

#include <string>

#include "codec/record.h"

namespace codec {

// The packed values of the members, in the order of the key.
struct Keys {
  std::string primary;
  std::string splittable;
  bool operator==(const Keys&) const = default;
};

Keys KeysOf(const Value& record, LPQMXMETA meta);

}  // namespace codec
