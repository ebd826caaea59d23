// Decides once for all formats what is listed with which table: a finding that several tables share is listed with the first one,
// and the others refer to it. So a report about T tables with a structure of F refused fields has T + F parts, not T x F.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "report/result/report.h"

namespace korvel {

// A finding, with everything that shares its cause. Borrows from the report.
struct FoldedFinding {
  const TableResult* table;  // the first table with the finding
  const Finding* finding;
  struct Embedding {
    const TableResult* table;
    std::string path;  // "carts.items[].price"; empty for a change of the library
  };
  std::vector<Embedding> also = {};         // the other tables and paths with the finding
  std::optional<std::size_t> also_as = {};  // if set, `also` is empty: the others are those of this earlier finding, a position
                                            // in FoldedReport::findings. Only of findings with more than kMaxAlso others
  std::size_t also_count = 0;               // the number of others
};

// Consecutive items, findings or edits, that a table shares with an earlier one, where they are listed.
struct SharedItems {
  const TableResult* table;  // the earlier table
  std::size_t first = 0;     // findings: position in FoldedReport::findings; edits: in the list of the earlier table
  std::size_t count = 0;
  // In this table the paths of all items begin with `path`, and in the earlier table with `instead_of`.
  std::string path = {};
  std::string instead_of = {};
};

// What is listed with a table.
struct FoldedTable {
  const TableResult* table;
  std::span<const FoldedFinding> findings = {};  // the table is the first that has them
  std::vector<SharedItems> shared = {};          // its findings that are listed with earlier tables
  std::size_t left_out = 0;                      // its findings that are listed nowhere, because the limit was reached
};

// Findings of one level, each once, listed or not.
struct LevelCount {
  std::size_t all = 0;
  std::size_t left_out = 0;  // of them: not listed, because the limit was reached
  std::size_t waived = 0;    // of them
};

// The findings of all tables, in the order of the report. Findings with the same cause are listed once, at the first table: same
// pair of sources, same edits, same rule, same code, same waiver. A finding without edits belongs to one table. A finding that is
// waived for one table only is listed twice, so that the waiver hides nothing. Lists at most Report::max_findings refusals, and
// as many warnings and notes; tables keep their verdict in any case. The warnings and notes of a table follow its refusals.
//
// Borrows the report.
class FoldedReport {
 public:
  explicit FoldedReport(const Report& report);
  FoldedReport(const FoldedReport&) = delete;
  FoldedReport& operator=(const FoldedReport&) = delete;

  const Report& report() const { return report_; }
  const std::vector<FoldedFinding>& findings() const { return findings_; }
  const std::vector<FoldedTable>& tables() const { return tables_; }  // those of the report, in its order
  const LevelCount& Count(Level level) const { return counts_[static_cast<std::size_t>(level)]; }

 private:
  class Folder;

  const Report& report_;
  std::vector<FoldedFinding> findings_;
  std::vector<FoldedTable> tables_;
  std::array<LevelCount, 3> counts_;  // of each level
};

// How two paths to the same item differ: "orders.items[].price" and "carts.basket.price" begin with "orders.items[]" and
// "carts.basket".
struct PathChange {
  std::string path;
  std::string instead_of;

  bool operator==(const PathChange&) const = default;
};

PathChange PathChangeOf(std::string_view path, std::string_view instead_of);

// Adds the item at `position` of the earlier table to the last part of `items`, or begins a new part.
void AddShared(std::vector<SharedItems>& items, const TableResult& earlier, std::size_t position, PathChange change);

}  // namespace korvel
