// The edits between two sources as `diff` shows them: those of the library and of shared structures once, whatever embeds them.
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
  std::size_t path_count = 0;      // of all
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
  Location declared;                    // in the new source; in the old one if it is gone
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

// Lists the edits of tables that the old source has, those that the new one lacks as gone, and names those that only the new one
// has. REQUIRES: `old_tables` differ, and the sources outlive the listing.
Listing ListChanges(const Source& old_source, const Source& new_source, const std::vector<std::string>& old_tables,
                    const std::vector<std::string>& added_tables);

}  // namespace korvel
