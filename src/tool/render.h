// The forms of a report.
#pragma once

#include <string>

#include "tool/report.h"

namespace korvel::tool {

// For people: the verdict, one block a table, a summary. `colour` marks the status words for a terminal.
std::string RenderText(const Report& report, bool colour);

// For programs: one JSON object, its members in a fixed order. Bytes that are no UTF-8 become U+FFFD.
std::string RenderJson(const Report& report);

}  // namespace korvel::tool
