// A report with everything that a report can have in it, made by hand.
#pragma once

#include <memory>
#include <string>

#include "report/result/report.h"

namespace report_test {

// A report and the sources that it is about. Every name in it ends in `suffix`, so that a test can put into all of them whatever
// may not break out of a format.
struct Sample {
  std::unique_ptr<korvel::Source> old_source;
  std::unique_ptr<korvel::Source> new_source;
  korvel::Report report;
};

// Tables: orders (of its seven changes two are refused alone, two only together, one is blocked, one not checked), carts (refused
// by what it shares with orders), users (all waived), zones (gone), logs (allowed), notes (new), old_style (refused as it already
// was). A file was added, one deleted, one moved; a waiver is expired.
Sample EverythingReport(const std::string& suffix = "");

// Two tables, both allowed, nothing else.
Sample AllowedReport();

}  // namespace report_test
