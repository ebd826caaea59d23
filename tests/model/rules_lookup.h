// Lookups of fields that several rules of the plain model share, because the checker's rules log through them.
#pragma once

#include "model/rules.h"

namespace model {

// The entry with that name and its position; null, with the position unchanged, if there is none.
const PlainEntry* CheckWhetherExistEntry(Checker& checker, const Name& name, const PlainMeta* meta, int& offset);

}  // namespace model
