// Reports as golden files contain them.
#pragma once

#include <string>

#include "report/render/render.h"

namespace report_test {

// The report without the version of the program and without parts that have their own tests: style and script of a page, rules
// of a SARIF log (Sarif.EveryRuleIsDescribed).
std::string GoldenText(const korvel::Format& format, const korvel::Report& report);

// A format as a part of the name of a test, which has no '-'.
std::string TestNameOf(std::string format);

}  // namespace report_test
