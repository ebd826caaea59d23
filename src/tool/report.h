// What a command found out: the model between commands and renderers.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "qmx/qmx_source_map.h"
#include "tool/input.h"
#include "tool/settings.h"

namespace korvel::tool {

enum class Status { kAllowed, kRefused, kNew };

struct Place {
  std::string file;
  qmx::LineColumn position;
};

// Where a file declares a meta. REQUIRES: it does.
Place PlaceOf(const Input& input, const std::string& meta);

// The answer for one table.
struct TableResult {
  std::string table;
  Status status = Status::kNew;
  Place place;        // the table's meta in the second file, or in the first if the second has none
  bool gone = false;  // the second file has no such table; kRefused only
  int code = 0;       // the checker's; 0 unless kRefused
  std::string rule;   // id in the catalogue; empty if the text has no row there
  std::string text;   // the checker's, verbatim; empty unless kRefused, and for a refusal without a text
  Settings settings;  // those that the checker was told
};

struct InputRole {
  std::string role;  // "old", "new", "source", "destination", "file"
  std::string file;
};

struct Report {
  std::string command;
  std::vector<InputRole> inputs;
  std::vector<TableResult> tables;
};

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
