// A handmade report that contains everything that a report can contain.
#pragma once

#include <memory>
#include <string>

#include "report/result/report.h"

namespace report_test {

// A report and its sources. Every name in it ends in `suffix`, so that a test can add characters that must not break out of a
// format.
struct Sample {
  std::unique_ptr<korvel::Source> old_source;
  std::unique_ptr<korvel::Source> new_source;
  korvel::Report report;
};

// Tables: orders (of its seven changes two are refused alone, two only in combination, one is blocked, one was not checked),
// carts (refused because of a structure shared with orders), users (all findings waived), zones (removed), logs (allowed), notes
// (new), old_style (pre-existing refusal). One file is added, one deleted, one moved; one waiver has expired.
Sample EverythingReport(const std::string& suffix = "");

// One allowed table, and a fault of each kind: with a location, without one, in a baseline, of the whole call.
Sample FaultReport(const std::string& suffix = "");

// Two tables, both allowed, nothing else.
Sample AllowedReport();

}  // namespace report_test
