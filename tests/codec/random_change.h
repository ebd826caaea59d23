// Random changes of one table, mostly small: libraries of up to three structures and a table, where the new library is the old
// one after up to three edits.
#pragma once

#include <random>

#include "codec/promise.h"

namespace codec {

Change RandomChange(std::mt19937_64& random);

}  // namespace codec
