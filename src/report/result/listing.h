// The edits between two sources as `diff` lists them. Edits of the library and of shared structures are listed once, no matter
// how many tables embed them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "analysis/diff/edit.h"

namespace korvel {

// Where a table embeds a structure.
struct Embedding {
  std::string table;
  std::vector<std::string> paths;  // at most kMaxPaths
  std::size_t path_count = 0;      // of all paths
};

// Edits of one meta, in their order.
struct StructureEdits {
  std::string structure;
  std::vector<Edit> edits;
  std::vector<Embedding> embeddings;  // of compared tables, in their order
};

struct TableEdits {
  enum class Status : std::uint8_t { kCompared, kNew, kRemoved };

  std::string table;
  Status status = Status::kCompared;
  Location declared;                    // in the new source; in the old one if the table was removed
  std::vector<Edit> edits;              // of the table itself
  std::vector<std::string> structures;  // those it embeds that have edits, tables among them

  bool HasEdits() const { return !edits.empty() || !structures.empty(); }
};

struct Listing {
  const Source* old_source;
  const Source* new_source;
  std::vector<Edit> library;
  std::vector<TableEdits> tables;
  std::vector<StructureEdits> structures;  // other than compared tables, in the order in which tables embed them
};

// Lists the edits of `old_tables`, tables of the old source. Those that the new source lacks are kRemoved. `added_tables` are
// listed as kNew. REQUIRES: no name occurs twice in `old_tables`, and the sources outlive the listing.
Listing ListChanges(const Source& old_source, const Source& new_source, const std::vector<std::string>& old_tables,
                    const std::vector<std::string>& added_tables);

}  // namespace korvel
