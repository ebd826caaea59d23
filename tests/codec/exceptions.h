// Changes that the checker allows although records do not read back: its rules are part of the interface and do not look at
// these.
#pragma once

#include <span>

#include "codec/promise.h"

namespace codec {

struct Exception {
  const char* id;
  bool (*explains)(const Change& change, const Broken& broken);
};

std::span<const Exception> Exceptions();

// The one that explains the broken record of an allowed change; null if none does.
const Exception* ExplanationOf(const Change& change, const Broken& broken);

}  // namespace codec
