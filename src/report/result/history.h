// The result of checking several versions of a schema, one after the other.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "report/result/report.h"

namespace korvel {

// The check of a version against a later one, not necessarily the next.
struct VersionStep {
  std::size_t from = 0;  // positions in History::versions
  std::size_t to = 0;
  std::vector<TableResult> tables;  // those of the older version, then those that only the newer one has

  bool Refused() const;
};

// Borrows the sources.
struct History {
  std::vector<const Source*> versions;  // oldest first, at least two
  std::vector<VersionStep> steps;       // each version to the next one
  // Each version except the last two against the newest. The last step compares the last two already.
  std::vector<VersionStep> against_newest;

  bool Refused() const;
};

// The first step at or after version `from` in which the table is refused. Null if each of these steps is allowed alone.
const VersionStep* FirstRefusedStep(const History& history, std::size_t from, const std::string& table);

// What caused the refusal of a table, on one line: its first refused edit, else the checker's text.
std::string CauseOf(const TableResult& result);

}  // namespace korvel
