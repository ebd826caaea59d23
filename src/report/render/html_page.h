// The contents of an HTML report: each finding and each change once, numbered, and the lines of source that they mark.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "base/alignment.h"
#include "report/result/fold.h"
#include "report/result/fold_edits.h"
#include "report/result/text_ranges.h"

namespace korvel {

// Limits that keep the page small enough for a browser. The page says what was left out.
struct HtmlLimits {
  std::size_t findings = 2'000;
  std::size_t changes = 5'000;      // those that are not refused
  std::size_t pictures = 50;        // of layouts
  std::size_t whole_lines = 2'000;  // of the two files of a pair together; of longer files only lines near a mark are shown
  std::size_t lines = 20'000;       // rows of source on the page
};

inline constexpr HtmlLimits kHtmlLimits{};

// How a finding or change is shown, the most severe first.
enum class StatusStyle { kRefused, kWarning, kNote, kWaived, kBlocked, kNotChecked, kAllowed };

StatusStyle StyleOf(EditStatus status);
StatusStyle StyleOf(const Finding& finding);

struct StatusText {
  const char* name;  // the CSS class, and the value of the filter
  const char* sign;
  const char* word;
};

const StatusText& TextOf(StatusStyle style);

struct PageFinding {
  const FoldedFinding& folded;
  std::string id;  // "f1"; its label is "F1"

  StatusStyle Style() const { return StyleOf(*folded.finding); }
  const Edit& EditAt(std::size_t i) const { return folded.table->EditsFor(*folded.finding)[folded.finding->edits[i]]; }
};

// An edit that is not refused.
struct PageChange {
  const TableResult* table;  // the first that has it
  const Edit* edit;
  StatusStyle style;
  std::string id;        // "c1"
  std::size_t also = 0;  // other tables with the same change

  bool OfLibrary() const { return edit->meta.empty(); }
};

// Part of a line that belongs to a finding or change.
struct LineMark {
  std::size_t line;  // from 1
  qmx::Span span;    // in bytes of the line: the value of an attribute; empty for an element as a whole
  StatusStyle style;
  std::string id;  // of the finding or change
};

// Two files that are compared, or one file checked alone.
struct PagePair {
  const Source* first;  // null if the tables are only in `second`
  const Source* second;
  std::vector<LineMark> old_marks;  // ascending in the line
  std::vector<LineMark> new_marks;
  std::vector<LineMatch> known;  // old and new line of an edit

  bool IsOne() const { return first == nullptr || first == second; }
};

class Page {
 public:
  explicit Page(const Report& report, const HtmlLimits& limits = kHtmlLimits);

  const Report& report() const { return report_; }
  const FoldedReport& folded() const { return folded_; }
  const HtmlLimits& limits() const { return limits_; }
  // The first ones of folded().findings(), in the same positions.
  const std::vector<PageFinding>& findings() const { return findings_; }
  // Those that are listed with a table.
  std::span<const PageFinding> FindingsOf(const FoldedTable& table) const;
  const std::vector<PageChange>& changes() const { return changes_; }
  const std::vector<PagePair>& pairs() const { return pairs_; }
  std::size_t findings_left_out() const { return findings_left_out_; }
  std::size_t changes_left_out() const { return changes_left_out_; }

  // The position in pairs() of the pair of a table.
  std::size_t PairOf(const TableResult& table) const { return pair_of_.at({table.first, table.second}); }
  const TextRange* Find(const Location& location) const { return ranges_.Find(location); }
  // Whether a change is listed with this table.
  bool ListsChangeOf(const TableResult& table) const { return listing_.contains(&table); }

 private:
  void ListFindings();
  void ListChanges();
  void AddMarks(const TableResult& table, const Edit& edit, StatusStyle style, const std::string& id);
  void AddMark(std::vector<LineMark>& marks, const Location& location, StatusStyle style, const std::string& id) const;

  const Report& report_;
  FoldedReport folded_;
  HtmlLimits limits_;
  TextRanges ranges_;
  std::vector<PageFinding> findings_;
  std::vector<PageChange> changes_;
  std::vector<PagePair> pairs_;
  std::map<std::pair<const Source*, const Source*>, std::size_t> pair_of_;
  std::set<const TableResult*> listing_;
  std::size_t findings_left_out_ = 0;
  std::size_t changes_left_out_ = 0;
};

// "F1" of the id "f1".
std::string LabelOf(const std::string& id);

}  // namespace korvel
