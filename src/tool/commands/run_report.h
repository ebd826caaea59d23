// Runs the commands that end with a report.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "project/check_project.h"
#include "project/load_inputs.h"
#include "project/nearest_projects.h"
#include "report/result/report.h"
#include "schema/input.h"
#include "schema/selection.h"
#include "tool/cli/option_groups.h"

namespace korvel::tool {

// What a command found out. The report is about the sources, which the result owns; it may be moved.
struct CommandResult {
  std::vector<Input> inputs = {};
  std::vector<std::string> paths = {};  // of the inputs, as given
  Report report = {};
  std::vector<std::shared_ptr<const Source>> project_sources = {};  // of a project check; may hold null
  std::vector<ComparedFile> compared = {};                          // of a project check
  std::shared_ptr<const ProjectSet> projects = nullptr;             // of a check and lint; TableResult::project is a position
};

// Loads the inputs of a report without tables yet. Throws InputError.
CommandResult LoadForReport(const char* command, const InputRoles& roles, const std::vector<std::string>& paths, Texts texts);

// The same, but files that cannot be read are faults of the report.
CommandResult LoadReadable(const char* command, const InputRoles& roles, const std::vector<std::string>& paths, Texts texts,
                           const ReadFound& read_found = nullptr);

// Opens the log, runs `check`, and writes its report. `log` is never null. Returns the exit code. Prints the
// faults of the report on standard error, unless the report shows them
// on a terminal. Throws UsageError and InputError about `inputs`, and
// what `check` throws.
int RunReport(const ReportOptions& options, const std::vector<std::string>& inputs,
              const std::function<CommandResult(LPVESKCATEGORYINST log)>& check);

// What a command takes that checks tables of two files one by one.
struct PairArguments {
  InputFiles inputs;
  TableSelection selection;
  ReportOptions report;
};

// What such a command does.
struct PairCommand {
  const char* name;
  InputRoles roles;
  // The tables to check.
  std::function<std::vector<std::string>(const Pair& pair, const std::vector<std::string>& requested)> select;
  // Checks one of them. May be called by several threads.
  std::function<TableResult(const Pair& pair, const std::string& table, LPVESKCATEGORYINST log)> check;
  const Project* project = nullptr;  // whose settings it uses
  bool prints_notes = false;         // see PrintPairNotes
};

// Runs it. Returns and throws as RunReport.
int RunPairReport(const PairArguments& arguments, const PairCommand& command);

}  // namespace korvel::tool
