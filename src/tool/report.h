// What a command found out: the model between commands and renderers.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "qmx/qmx_source_map.h"
#include "tool/input.h"
#include "tool/settings.h"

namespace korvel::tool {

enum class Status { kAllowed, kRefused, kNew };

// A meta of an input of the report.
struct MetaOf {
  const Input* input = nullptr;
  std::string meta;
};

// The answer for one table.
struct TableResult {
  std::string table;
  Status status = Status::kNew;
  MetaOf declared;    // the table's meta in the second file, or in the first if the second has none
  bool gone = false;  // the second file has no such table; kRefused only
  int code = 0;       // the checker's; 0 unless kRefused
  std::string rule;   // id in the catalogue; empty if the text has no row there
  std::string text;   // the checker's, verbatim; empty unless kRefused, and for a refusal without a text
  Settings settings;  // those that the checker was told
};

struct ReportInput {
  std::string role;  // "old", "new", "source", "destination", "file"
  Input input;
};

struct Report {
  std::string command;
  std::vector<ReportInput> inputs;
  std::vector<TableResult> tables;
};

// Where a file declares something.
struct Place {
  std::string file;
  std::optional<qmx::LineColumn> position;  // none in an image
};

// The places of the tables of a report, in their order. One pass over each file, and none over one that no table is declared in.
std::vector<Place> FindPlaces(const Report& report);

// Numbers of tables. compared = allowed + refused; those gone are among the refused.
struct Summary {
  std::size_t compared = 0;
  std::size_t allowed = 0;
  std::size_t refused = 0;
  std::size_t added = 0;
  std::size_t gone = 0;
};

Summary Summarize(const Report& report);

}  // namespace korvel::tool
