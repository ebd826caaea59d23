// What `diff` prints.
#pragma once

#include <string>

#include "report/result/listing.h"

namespace korvel {

// For people: one block a table, one a structure, a summary.
std::string RenderDiffText(const Listing& listing);

// For programs: one JSON object, its members in a fixed order. Bytes that are no UTF-8 become U+FFFD.
std::string RenderDiffJson(const Listing& listing);

}  // namespace korvel
