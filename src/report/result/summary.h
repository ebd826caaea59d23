// The numbers at the end of a report, and its exit code.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "report/result/fold.h"
#include "report/result/report.h"

namespace korvel {

struct Summary {
  // Numbers of tables. compared = allowed + refused; removed tables are among the refused.
  std::size_t compared = 0;
  std::size_t allowed = 0;
  std::optional<std::size_t> unchanged = {};  // of the allowed ones; absent if it is not known of each, or if none is allowed
  std::size_t refused = 0;
  std::size_t added = 0;
  std::size_t removed = 0;
  std::size_t failing = 0;  // CountFailing
  // Numbers of findings, apart from warnings and notes. A finding that several tables share counts once.
  std::size_t findings = 0;
  std::size_t waived = 0;    // of them
  std::size_t left_out = 0;  // of them: not listed, because the limit was reached
  // Likewise, numbers of warnings and notes.
  LevelCount warnings;
  LevelCount notes;
  // Numbers of findings about project files, and about tables that a project has twice.
  LevelCount project_errors;
  LevelCount project_warnings;
  std::size_t failing_for_warnings = 0;  // tables of `failing` that are allowed, or whose refusals are waived
  // Numbers of schema files.
  std::size_t files_added = 0;
  std::size_t files_deleted = 0;
  std::size_t files_moved = 0;
  std::size_t files_not_checked = 0;    // because of a fault
  std::size_t files_dropped = 0;        // that the project file no longer selects
  std::size_t projects_unreadable = 0;  // project files of the baseline
  std::size_t hiding = 0;               // findings about such files that are not waived
  std::size_t settings_changed = 0;     // findings about changed settings that are not waived
  bool is_unchanged = false;            // each baseline is the commit that is checked out, and no selected file differs
  std::size_t faults = 0;               // number of them; may be above 0 without a file: the whole call failed
};

Summary Summarize(const FoldedReport& folded);

// Refused tables that are not waived (IsWaived), plus errors of the project file, plus faults; with Report::fails_on_warnings,
// plus the other tables with a warning that is not waived. 0 means exit code 0.
std::size_t CountFailing(const Report& report);

// Findings about the project file that are errors, not warnings, and are not waived.
std::size_t CountErrors(const std::vector<ProjectFinding>& findings);

// The exit code of the report: 0; 1 if anything fails; 2 if a file was not checked, or is no longer checked without a waiver.
int ExitCodeOf(const Report& report);

// Findings about the project file that fail.
std::size_t CountFailingProject(const Report& report);

// Whether a finding about the project file is an error, or a warning that Report::fails_on_warnings applies to, and is not
// waived.
bool Fails(const Report& report, const ProjectFinding& finding);

// Whether a table is among the failing ones.
bool Fails(const Report& report, const TableResult& table);

// Whether a finding is refused, or a warning with Report::fails_on_warnings, and is not waived.
bool Fails(const Report& report, const Finding& finding);

// Whether every finding of a refused table is waived, also those that are not listed. False if the search for findings stopped at
// the limit: the next finding may not be waived.
bool IsWaived(const TableResult& result);

}  // namespace korvel
