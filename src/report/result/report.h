// What a command found out: the model between commands and renderers.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "analysis/table_result.h"
#include "qmx/qmx_source_map.h"

namespace korvel {

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
  std::string suggestion;
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
  std::size_t removed = 0;
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

}  // namespace korvel
