// The result of checking one table.
#pragma once

#include <optional>
#include <string>

#include "analysis/findings/finding.h"
#include "schema/settings.h"

namespace korvel {

enum class Status { kAllowed, kRefused, kNew };

struct TableResult {
  std::string table;
  Status status = Status::kNew;
  const Source* first = nullptr;   // old; the same as `second` for a schema against itself. Null for a new table
  const Source* second = nullptr;  // new
  Location declared;               // the table's meta in the second file, or in the first if the second has none
  bool removed = false;            // the second file has no such table; kRefused only
  int code = 0;                    // the checker's; 0 unless kRefused
  std::string rule;                // id in the catalog; empty for a refusal without a text
  std::string text;                // the checker's, verbatim; empty unless kRefused, and for a refusal without a text
  Settings settings;               // those that the checker got
  std::optional<Changes> changes;  // what changed and which of it is refused; see CheckTableChange
};

}  // namespace korvel
