// The result of checking several versions of a schema, one after the other.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "analysis/check_table_change.h"

namespace korvel {

// The result of a table in one step. Borrows nothing: the versions need not be in memory all at once.
struct StepTable {
  std::string table;
  Status status = Status::kNew;
  Verdict verdict;
  std::string summary;   // of the refusal; this and the following members only if kRefused
  std::string cause;     // on one line: the first refused edit, else the checker's text
  bool removed = false;  // the newer version has no such table
};

// What a history keeps of a result.
StepTable StepTableOf(const TableResult& result);

// The check of a version against a later one, not necessarily the next.
struct VersionStep {
  std::size_t from = 0;  // positions in History::versions
  std::size_t to = 0;
  std::vector<StepTable> tables;  // those of the older version, then those that only the newer one has

  bool Refused() const;
};

struct History {
  std::vector<std::string> versions;  // names, oldest first, at least two
  std::vector<VersionStep> steps;     // each version to the next one
  // Each version except the last two against the newest. The last step compares the last two already.
  std::vector<VersionStep> against_newest;

  bool Refused() const;
};

// The first step at or after version `from` in which the table is refused. Null if each of these steps is allowed alone.
const VersionStep* FirstRefusedStep(const History& history, std::size_t from, const std::string& table);

}  // namespace korvel
