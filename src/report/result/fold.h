// Findings of several tables that have one cause.
#pragma once

#include <string>
#include <vector>

#include "report/result/report.h"

namespace korvel {

struct FoldedFinding {
  const TableResult* table;  // the first in which it was found
  const Finding* finding;
  struct Embedding {
    const TableResult* table;
    std::string path;
  };
  std::vector<Embedding> also;  // the other tables and paths that have it
};

// The findings of a report in the order of its tables. One that has the same cause (pair of sources, edits, rule, code) in
// several tables stands once.
std::vector<FoldedFinding> Fold(const Report& report);

}  // namespace korvel
