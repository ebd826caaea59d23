// The structs of the C interface for a report: made once, so that filling them in takes constant time and cannot fail.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "korvelcheck/korvelcheck.h"
#include "report/result/fold.h"
#include "report/result/text_ranges.h"

namespace korvel::capi {

struct FindingRecord {
  kc_finding finding;
  std::vector<kc_affected> affected;
  std::vector<kc_fix> fixes;
};

// Borrows the report.
class Records {
 public:
  explicit Records(const Report& report);
  Records(const Records&) = delete;
  Records& operator=(const Records&) = delete;

  const kc_report_info& info() const { return info_; }
  const std::vector<kc_table>& tables() const { return tables_; }
  const std::vector<FindingRecord>& findings() const { return findings_; }

 private:
  kc_report_info InfoOf(const FoldedReport& folded);
  kc_table TableOf(const TableResult& table);
  FindingRecord FindingOf(const FoldedFinding& one, const FoldedReport& folded);
  std::vector<kc_affected> AffectedOf(const FoldedFinding& one, const FoldedReport& folded);
  kc_location ToLocation(const Location& location);
  std::uint64_t PositionOf(const TableResult* table) const;
  const char* Keep(std::string text) { return texts_.emplace_back(std::move(text)).c_str(); }

  const Report& report_;
  std::deque<std::string> texts_;  // those that the report does not contain
  TextRanges ranges_;
  kc_report_info info_ = {};
  std::vector<kc_table> tables_;
  std::vector<FindingRecord> findings_;
};

}  // namespace korvel::capi
