// The result of a command, before it has a format. Commands fill in a Report; renderers turn it into text.
//
// A Report borrows everything it points at: the sources (schema files) must outlive it. Nothing in it changes after it was
// filled in, so several threads may render one report.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "analysis/check_table_change.h"
#include "qmx/qmx_source_map.h"

namespace korvel {

// A schema file that the command was called with.
struct ReportInput {
  std::string role;  // "old", "new", "source", "destination", "file"
  const Source* source;
};

// A schema file of a project that was added, deleted or moved. An added or deleted file has no counterpart to compare with.
struct FileNote {
  enum class Kind { kAdded, kDeleted, kMoved } kind;
  std::string old_file;  // empty if added
  std::string new_file;  // empty if deleted
};

// A problem of the project file that is not a syntax error: a waiver that is expired, unused or malformed. Always an error: it
// cannot be waived.
struct ProjectFinding {
  std::string rule;  // "waiver.expired"
  std::string file;
  qmx::LineColumn position;
  std::string text;
  std::string suggestion;  // empty for none
};

struct Report {
  std::string command;              // "check"
  std::vector<ReportInput> inputs;  // in the order of the command line; of a project, old and new of each pair
  std::vector<TableResult> tables;  // tables of one pair of sources are adjacent
  std::vector<FileNote> files;      // empty unless the command compared a whole project
  std::vector<ProjectFinding> project;
};

struct Summary {
  // Numbers of tables. compared = allowed + refused; removed tables are among the refused.
  std::size_t compared = 0;
  std::size_t allowed = 0;
  std::size_t refused = 0;
  std::size_t added = 0;
  std::size_t removed = 0;
  // Refused tables with at least one finding that is not waived, plus findings about the project file. 0 means exit code 0.
  std::size_t failing = 0;
  // Numbers of findings. A finding that several tables share counts once.
  std::size_t findings = 0;
  std::size_t waived = 0;  // of them
  // Numbers of schema files.
  std::size_t files_added = 0;
  std::size_t files_deleted = 0;
  std::size_t files_moved = 0;
};

// A refused table whose search for findings stopped at the limit counts as failing even if all its findings are waived: the next
// finding may not be.
Summary Summarize(const Report& report);

// A finding, with everything that shares its cause. Borrows from the report.
struct FoldedFinding {
  const TableResult* table;  // the first table with the finding
  const Finding* finding;
  struct Embedding {
    const TableResult* table;
    std::string path;  // "carts.items[].price"; empty for a change of the library
  };
  std::vector<Embedding> also;  // the other tables and paths with the finding
};

// The findings of all tables, in the order of the report. Findings with the same cause are listed once, at the first table: same
// pair of sources, same edits, same rule, same code. A finding without edits belongs to one table.
std::vector<FoldedFinding> Fold(const Report& report);

}  // namespace korvel
