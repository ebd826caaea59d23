// What `history` prints.
#pragma once

#include <string>

#include "report/result/history.h"

namespace korvel {

// For people: one block a step, one for each version against the newest, a summary. `colour` marks the status words for a
// terminal.
std::string RenderHistoryText(const History& history, bool colour);

// For programs: one JSON object, its members in a fixed order. Bytes that are no UTF-8 become U+FFFD.
std::string RenderHistoryJson(const History& history);

}  // namespace korvel
