// The result of checking several versions of a schema, one after the other.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "analysis/check_table_change.h"

namespace korvel {

// A warning or note about a step.
struct StepAdvice {
  Level level = Level::kWarning;
  std::string rule;
  std::string summary;
  std::string change;        // the edit, on one line
  std::string path;          // "orders.items[].price"
  std::string old_location;  // "v1.xml:3:5"; empty for none
  std::string new_location;
  std::string suggestion;
  std::string fingerprint;
};

// An id of TLV fields that a version uses with another type than an earlier version, after it was not used in between.
struct ReusedId {
  struct Use {
    std::size_t version = 0;  // position in History::versions
    std::string field;
    std::string type;      // "uint32"
    std::string location;  // "v1.xml:3:5"
  };
  std::string meta;  // the structure with both fields
  int id = 0;
  Use before;  // in the last version before the id was not used
  Use after;
  std::string suggestion;
  std::string fingerprint;
};

// The result of a table in one step. Borrows nothing: the versions need not be in memory all at once.
struct StepTable {
  std::string table;
  Status status = Status::kNew;
  Verdict verdict;
  std::string summary;                  // of the refusal; this and the following members only if kRefused
  std::string cause;                    // on one line: the first refused edit, else the checker's text
  bool removed = false;                 // the newer version has no such table
  std::vector<StepAdvice> advice = {};  // whatever the status
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
  std::vector<ReusedId> reused_ids;

  bool Refused() const;
  // The number of warnings or notes of all steps and, as warnings, of reused ids. What several tables share counts once for each.
  std::size_t Count(Level level) const;
};

// The first step at or after version `from` in which the table is refused. Null if each of these steps is allowed alone.
const VersionStep* FirstRefusedStep(const History& history, std::size_t from, const std::string& table);

}  // namespace korvel
