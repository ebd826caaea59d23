// The forms of a report.
#pragma once

#include <span>
#include <string>

#include "report/report.h"

namespace korvel::report {

// For people: the verdict, one block a table, a summary. `colour` marks the status words for a terminal.
std::string RenderText(const Report& report, bool colour);

// For programs: one JSON object, its members in a fixed order. Bytes that are no UTF-8 become U+FFFD.
std::string RenderJson(const Report& report);

// A value of --format.
struct Format {
  const char* name;
  std::string (*render)(const Report& report, bool colour);  // `colour` is for forms that people read on a terminal
};

// The first is the default.
std::span<const Format> Formats();

}  // namespace korvel::report
