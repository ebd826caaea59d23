// Which structures contain others, according to the types of their entries.
#pragma once

#include <vector>

#include "lsp/outline.h"

namespace korvel::lsp {

// The structure itself and all that contain it, directly or through others: none of them can be the type of one of its entries.
// Nearly linear.
std::vector<ElementIndex> StructuresAround(const Outline& outline, ElementIndex structure);

}  // namespace korvel::lsp
