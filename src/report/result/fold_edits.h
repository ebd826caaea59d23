// Decides for all formats which edits are listed with which table, as fold.h does for findings.
#pragma once

#include <cstddef>
#include <vector>

#include "report/result/fold.h"

namespace korvel {

// The edits that are listed with a table.
struct FoldedEdits {
  // Positions in Changes::edits, ascending: edits that no earlier table lists with the same status, edits of the library, and
  // those of the findings that are listed with the table.
  std::vector<std::size_t> listed = {};
  std::vector<SharedItems> shared = {};  // the others
};

// The edits of each table of the report, in its order. Edits of a structure with the same status and values, in the same pair of
// sources, are listed once.
std::vector<FoldedEdits> FoldEdits(const FoldedReport& folded);

}  // namespace korvel
