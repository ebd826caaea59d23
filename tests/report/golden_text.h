// What goldens hold of a report.
#pragma once

#include <string>

#include "report/render/render.h"

namespace report_test {

// The report without what changes with the program's version, and what has tests of its own: of a page its style and script, of a
// SARIF log its rules (Sarif.EveryRuleIsDescribed).
std::string GoldenText(const korvel::Format& format, const korvel::Report& report);

}  // namespace report_test
