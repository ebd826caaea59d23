// Runs the whole check for the commands that need its findings: check, waive and waivers.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "project/check_tables.h"
#include "tool/commands/run_report.h"

namespace korvel::tool {

// --against, --default-against, --also-against
struct BaselineOption {
  std::vector<std::string> against;
  std::optional<std::string> default_against;  // unless the project file names a baseline
  std::vector<std::string> also_against;       // in addition to all others

  void AddTo(ArgumentList& arguments);
  bool IsGiven() const { return !against.empty() || default_against || !also_against.empty(); }
  // What a call with these paths compares with: the baselines of the options, or those of the project file; none if it compares
  // two files. `project` may be null.
  std::vector<std::string> For(const std::vector<std::string>& paths, const Project* project) const;
};

// --against of commands that take several, as it is
void AddBaselines(ArgumentList& arguments, std::vector<std::string>& against, std::string description);

struct CheckRequest {
  const char* command;
  std::vector<std::string> paths;      // OLD and NEW; with a baseline, files and directories, or none
  std::vector<std::string> baselines;  // see BaselineOption::For
  bool allow_new = false;
  Texts texts = Texts::kWhenNeeded;
  CheckOptions options = {};
  bool searches_projects = false;  // nested project files judge the schema files below them
  Links links = Links::kRefuse;    // to files of the project
  std::function<void(const std::vector<std::string>& files)> on_files = nullptr;  // called with the files that are read
  bool prints_pair_notes = false;                                                 // see PrintPairNotes
  std::string fix_command = {};                                                   // see Report::fix_command
  bool reports_faults = false;  // faults of files of a project are in the report; otherwise they are an InputError

  // Two files are compared without a baseline.
  bool HasBaseline() const { return !baselines.empty(); }
};

// Throws UsageError if there are more than two paths without a baseline, or if standard input is among them twice. A project file
// may name the baseline of fewer paths.
void RequireFiles(const std::vector<std::string>& paths, bool has_baseline);

// Throws UsageError if there is nothing to compare with: neither a baseline nor two paths.
void RequireBaseline(const CheckRequest& request);

// Throws InputError. REQUIRES: a log.
CommandResult RunCheck(const CheckRequest& request);

}  // namespace korvel::tool
