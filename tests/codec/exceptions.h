// Changes that the checker allows although their records do not read back. The rules, which are part of the interface, do not
// cover them.
#pragma once

#include <span>

#include "codec/promise.h"

namespace codec {

struct Exception {
  const char* id;
  bool (*explains)(const Change& change, const Broken& broken);
};

std::span<const Exception> Exceptions();

// The exception that explains the broken record of an allowed change; null if none does.
const Exception* ExplanationOf(const Change& change, const Broken& broken);

}  // namespace codec
