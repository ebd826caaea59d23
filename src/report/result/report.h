// What a command found out: the model between commands and renderers.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "qmx/qmx_source_map.h"
#include "report/finding/finding.h"
#include "report/source/settings.h"

namespace korvel::report {

enum class Status { kAllowed, kRefused, kNew };

// The answer for one table.
struct TableResult {
  std::string table;
  Status status = Status::kNew;
  const Source* first = nullptr;   // old; the same as `second` for a schema against itself. Null for a new table
  const Source* second = nullptr;  // new
  Location declared;               // the table's meta in the second file, or in the first if the second has none
  bool gone = false;               // the second file has no such table; kRefused only
  int code = 0;                    // the checker's; 0 unless kRefused
  std::string rule;                // id in the catalogue; empty if the text has no row there
  std::string text;                // the checker's, verbatim; empty unless kRefused, and for a refusal without a text
  Settings settings;               // those that the checker was told
  std::optional<Changes> changes;  // by commands that take the change apart
};

struct ReportInput {
  std::string role;  // "old", "new", "source", "destination", "file"
  const Source* source;
};

// A schema file of a project that has no other to be compared with, or whose other stands elsewhere.
struct FileNote {
  enum class Kind { kAdded, kDeleted, kMoved } kind;
  std::string old_file;  // empty if added
  std::string new_file;  // empty if deleted
};

// What is wrong with a project file beyond its form: a waiver that is expired, unused or malformed.
struct ProjectFinding {
  std::string rule;  // "waiver.expired"
  std::string file;
  qmx::LineColumn position;
  std::string text;
  std::string way_out;
};

// Does not own what it is about: sources outlive it.
struct Report {
  std::string command;
  std::vector<ReportInput> inputs;
  std::vector<TableResult> tables;  // those of one pair of sources stand together
  std::vector<FileNote> files;
  std::vector<ProjectFinding> project;
};

struct Summary {
  // Numbers of tables. compared = allowed + refused; those gone are among the refused.
  std::size_t compared = 0;
  std::size_t allowed = 0;
  std::size_t refused = 0;
  std::size_t added = 0;
  std::size_t gone = 0;
  std::size_t failing = 0;  // refused tables with a finding that nothing lets pass, and findings about the project file
  // Numbers of findings; one that several tables have counts once.
  std::size_t findings = 0;
  std::size_t waived = 0;  // of them
  // Numbers of schema files.
  std::size_t files_added = 0;
  std::size_t files_deleted = 0;
  std::size_t files_moved = 0;
};

Summary Summarize(const Report& report);

}  // namespace korvel::report
