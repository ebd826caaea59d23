// Reports of schema files as `check` makes them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "cases/case_files.h"
#include "report/result/report.h"

namespace report_test {

// A report and the sources that it is about.
struct Judged {
  std::vector<std::unique_ptr<korvel::Source>> sources;
  korvel::Report report;
};

// The settings of a case as the report library has them; all are set.
korvel::Settings AskedIn(const cases::Settings& given);

// The cases, each about its table with its settings, in one report: what `check` says of several pairs of files.
Judged JudgeCases(const std::vector<std::string>& names);

// A step or proposal of the shipped examples.
struct Example {
  std::string name;      // "shop-v7-wider-key"
  std::string old_file;  // from the top of the project
  std::string new_file;
};

// Every schema file of the examples but the first of each project, which comes after nothing. Sorted.
std::vector<Example> Examples();

// All tables, and where it depends on the age of the servers, with one that refuses it.
Judged JudgeExample(const Example& example);

}  // namespace report_test
