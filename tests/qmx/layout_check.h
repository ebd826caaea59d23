// Compares a block with everything that qmx_types.h says about its layout.
#pragma once

#include <string>
#include <vector>

#include "qmx/qmx_builder.h"

namespace layout {

// The faults of the layout, one line each; empty if there are none: offsets outside the block, unaligned lists, parts that
// overlap or are out of order, unterminated strings, references to something that is not a record of that kind.
std::vector<std::string> Faults(const qmx::Metalib& metalib);

}  // namespace layout
