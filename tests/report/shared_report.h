// Reports about tables that embed one structure, as large as a test wants them.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "report/result/report.h"
#include "schema/source.h"

namespace report_test {

// A report and its sources.
struct SharedReport {
  std::unique_ptr<korvel::Source> old_source;
  std::unique_ptr<korvel::Source> new_source;
  korvel::Report report;
};

// Tables t0, t1, ... embed the structure "item", whose fields f0, f1, ... have new types, all refused. The text of each finding
// is TextOfField, the text of each table "the whole change of t0 is refused".
SharedReport MakeSharedReport(std::size_t tables, std::size_t fields);

// "field f0 is refused"
std::string TextOfField(std::size_t field);

}  // namespace report_test
