// Several versions of a schema, one after the other.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "report/result/report.h"

namespace korvel {

// A version that became another one, not necessarily the next.
struct VersionStep {
  std::size_t from = 0;  // positions in History::versions
  std::size_t to = 0;
  std::vector<TableResult> tables;  // of the older version, then those that only the newer one has

  bool Refused() const;
};

// Does not own what it is about.
struct History {
  std::vector<const Source*> versions;  // oldest first, at least two
  std::vector<VersionStep> steps;       // each version to the next one
  std::vector<VersionStep>
      against_newest;  // each version but the last two to the newest; that of the last step is the step itself

  bool Refused() const;
};

// The step that broke the way of a table from a version to the newest: the first one from there that is refused. Null if every
// step is allowed by itself.
const VersionStep* FirstRefusedStep(const History& history, std::size_t from, const std::string& table);

// What broke a table: its first refused edit, else the checker's text. One line.
std::string CauseOf(const TableResult& result);

}  // namespace korvel
