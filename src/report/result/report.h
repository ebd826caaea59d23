// The result of a command, before it has a format. Commands fill in a Report; renderers turn it into text.
//
// A Report borrows everything it points at: the sources (schema files) must outlive it. Nothing in it changes after it was
// filled in, so several threads may render one report.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/check_table_change.h"
#include "base/input_error.h"
#include "qmx/qmx_source_map.h"

namespace korvel {

// A schema file that the command was called with.
struct ReportInput {
  std::string role;  // "old", "new", "source", "destination", "file"
  const Source* source;
};

// What reports call the inputs of a command.
struct InputRoles {
  const char* first;
  const char* second;
};
inline constexpr InputRoles kOldAndNew{"old", "new"};
inline constexpr InputRoles kSourceAndDestination{"source", "destination"};
inline constexpr InputRoles kFiles{"file", "file"};

// A schema file of a project that was added, deleted or moved. An added or deleted file has no counterpart to compare with.
struct FileNote {
  enum class Kind { kAdded, kDeleted, kMoved, kOlder } kind;
  std::string old_file;  // empty if added. If older, the faulty file of the baseline
  std::string new_file;  // empty if deleted. If older, the earlier version that was compared instead
};

// An earlier state that the command compared with.
struct ReportBaseline {
  std::string name;      // "git:main..."
  std::string origin;    // what the name stands for, for people; may be empty
  bool is_same = false;  // the commit that is checked out, and no selected file differs from it
};

// A project file that judged some of the schema files.
struct ReportProject {
  std::string file;
  std::size_t files = 0;  // how many it judged
};

// A problem of the project file that is not a syntax error: a waiver that is expired, unused or malformed, or a change that hides
// changes of schema files.
struct ProjectFinding {
  enum class Level { kError, kWarning };  // an error fails the call, unless it is waived

  std::string rule;  // "waiver.expired"
  std::string file;
  qmx::LineColumn position;
  std::string text;
  std::string suggestion;  // empty for none; may have several lines, to paste into the project file
  Level level = Level::kError;

  // Only of rules that can be waived (ProjectRule). Paths are from the project file whose waivers apply.
  std::vector<std::string> files = {};  // that it is about, at least one, in order
  std::size_t project = 0;              // the position of that project file in the set of the call
  std::string fingerprint = {};
  std::optional<Waiver> waiver = {};
};

// Whether a report shows more of the sources of a table than their names and where it is declared.
inline bool ShowsSources(const TableResult& table) {
  return table.status == Status::kRefused || !table.advice.findings.empty() || (table.changes && !table.changes->edits.empty());
}

// How much a text report lists.
enum class Detail : std::uint8_t {
  kQuiet,   // the verdict, and what fails the call
  kNormal,  // also everything else there is something to say about
  kVerbose  // also allowed tables and single files
};

struct Report {
  std::string command;                    // "check"
  std::vector<ReportInput> inputs;        // in the order of the command line; of a project, old and new of each pair
  std::vector<ReportBaseline> baselines;  // empty unless the command compared whole states
  std::vector<TableResult> tables;        // tables of one pair of sources are adjacent
  std::vector<FileNote> files;            // empty unless the command compared a whole project
  std::vector<ProjectFinding> project;
  std::vector<InputFault> faults;           // why files, or the whole call, could not be checked. They cannot be waived
  std::optional<std::string> path_prefix;   // see ServicePaths
  std::string fix_command;                  // the call that fixes what is refused; may be empty
  std::size_t max_findings = kMaxFindings;  // findings that are listed; see FoldedReport
  bool fails_on_warnings = false;           // whether a warning that is not waived fails its table
  Detail detail = Detail::kNormal;          // of text
  std::vector<ReportProject> projects;      // that took part; the one of the call is first
};

}  // namespace korvel
