// Makes reports of schema files like `check`.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cases/case_files.h"
#include "report/result/report.h"

namespace report_test {

// A report and its sources.
struct CheckedReport {
  std::vector<std::unique_ptr<korvel::Source>> sources;
  korvel::Report report;
};

// Checks the cases, each with its table and settings, and returns one report: like `check` for several pairs of files.
CheckedReport CheckCases(const std::vector<std::string>& names);

// A step or proposal of the shipped examples.
struct Example {
  std::string name;      // "shop-v7-wider-key"
  std::string old_file;  // relative to the top of the project
  std::string new_file;
};

// All schema files of the examples except the first of each project, which has no predecessor. Sorted.
std::vector<Example> Examples();

// Checks all tables. If the verdict depends on the age of the servers, uses a version that refuses the change.
CheckedReport CheckExample(const Example& example);

}  // namespace report_test
