// The warnings of the product about a change. Exceptions, which say why records do not read back, do not use them.
#pragma once

#include <set>
#include <string>

#include "codec/promise.h"

namespace codec {

// The ids of the rules, without notes: "advice.key-members".
std::set<std::string> WarningsAbout(const Change& change);

}  // namespace codec
