// The result of checking one table.
#pragma once

#include <optional>
#include <string>

#include "analysis/findings/finding.h"
#include "schema/settings.h"

namespace korvel {

enum class Status { kAllowed, kRefused, kNew };

// Borrows the sources.
struct TableResult {
  std::string table;
  Status status = Status::kNew;
  const Source* first = nullptr;   // old; the same as `second` if a schema is checked alone. Null for a new table
  const Source* second = nullptr;  // new
  Location declared;               // the table's meta in the second file, or in the first if the second has none
  bool removed = false;            // the second file has no such table; kRefused only
  int code = 0;                    // of the checker; 0 unless kRefused
  std::string rule;                // id in the catalog; empty for a refusal without a text
  std::string text;                // of the checker, verbatim; empty unless kRefused, and for a refusal without a text
  Settings settings;               // the arguments of the checker
  std::optional<Changes> changes;  // what changed and which of it is refused; see CheckTableChange
};

}  // namespace korvel
