// Compares two states of a project: every schema file with itself as it was.
//
// Nothing here prints or keeps state between calls. Sources of the result live in it.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "project/check_tables.h"
#include "project/project_files.h"
#include "project/source_cache.h"
#include "schema/input.h"

namespace korvel {

// Loading all files and checking those with both sides; checking the others, and all with `options.in_order`.
enum class ProjectPhase { kLoad, kCheck };

// Called at the start of each phase with done = 0, and after each file. Several threads may call it at once, except at a start.
using ProgressCallback = std::function<void(ProjectPhase phase, std::size_t done, std::size_t total)>;

struct ProjectCheck {
  ProjectStates states;
  ProjectFiles files;                      // of these states
  CheckOptions options;                    // their project file is that of the call
  bool allow_new = false;                  // succeed even if every table is new
  bool shows_sources = false;              // give images a text, so that a report can show lines (AddDump)
  ProgressCallback on_progress = nullptr;  // may be empty
  SourceCache* old_files = nullptr;        // keeps files of the old state for the next check; may be null
};

// A file that was compared, and its names as reports show them.
struct ComparedFile {
  std::string old_name = {};  // empty if it was added; if the file of the baseline has a fault, that of an earlier version
  std::string new_name = {};  // of a deleted file, where it was
  bool is_deleted = false;
  bool is_unchanged = false;    // the same bytes under the same path
  std::size_t baseline = 0;     // position in Report::baselines
  std::size_t first_table = 0;  // of its tables in Report::tables
  std::size_t table_count = 0;
};

// The results of its tables.
inline std::span<const TableResult> TablesOf(const ComparedFile& file, const Report& report) {
  return std::span(report.tables).subspan(file.first_table, file.table_count);
}

struct ProjectResult {
  Report report;                                       // without a command and project files
  std::vector<ComparedFile> compared;                  // in the order of the report
  std::vector<JudgedFile> judged;                      // by each project file; empty without one
  std::vector<std::shared_ptr<const Source>> sources;  // of the report; may hold null
};

// Adds the result of comparing with another baseline. With `names_baseline`, its tables name their baseline.
void Append(ProjectResult more, bool names_baseline, ProjectResult& result);

// Compares a moved file with the file at its old path, a deleted one with a library without its tables. The tables of added files
// are new. Uses all cores, unless `options.in_order` is set; the report is ordered by path and declaration in any case. Throws
// InputError if nothing was compared; then nothing was logged. A file that cannot be read on one of the sides is not checked, and
// its faults are in the report; all other files are checked.
//
// Keeps a file in memory only while it is compared, if the report shows nothing of it but its name and its tables
// (ReleasedSource), and added and deleted files until all files were read: one of them may have been moved.
ProjectResult CheckProject(const ProjectCheck& check);

}  // namespace korvel
