// The lookups of fields that rules of the plain model share, because the checker's rules log through them.
#pragma once

#include "model/rules.h"

namespace model {

// The entry of that name and its position; null, and the position left alone, when there is none.
const PlainEntry* CheckWhetherExistEntry(Checker& checker, const Name& name, const PlainMeta* meta, int& offset);

}  // namespace model
