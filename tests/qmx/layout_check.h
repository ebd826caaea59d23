// Holds a block against everything that qmx_types.h says of the records.
#pragma once

#include <string>
#include <vector>

#include "qmx/qmx_builder.h"

namespace layout {

// What is wrong with the layout, a line each; empty if nothing is: offsets out of the block, lists that are not aligned, parts
// that overlap or leave their order, strings without an end, references to what is no record of its kind.
std::vector<std::string> Faults(const qmx::Metalib& metalib);

}  // namespace layout
