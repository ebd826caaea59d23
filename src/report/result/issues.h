// The listed findings of a report as formats need them that annotate files: one record for each problem, with its location.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/result/words.h"

namespace korvel {

struct Issue {
  std::string rule;     // RuleIdOf; for others such as "waiver.expired"
  std::string summary;  // what is wrong, in plain words, and the path: "a field's size was reduced: orders.zone". On one line
  // Of a fault and of an error of the project file, kRefused.
  Level level = Level::kRefused;
  bool waived = false;
  std::string fingerprint;  // unique in the report
  // In the new file. Of something that was removed, the nearest enclosing element there; if there is none, in the old file.
  TextRange location;
  std::optional<TextRange> old_location;  // if it differs from `location`
  std::string suggestion;                 // "" for none; may have several lines
  std::vector<std::string> also;          // AlsoOf
  const InputFault* fault = nullptr;      // null unless the issue is a fault
  // Both null for a fault and for a finding about the project file. `folded` is also null for a table whose changes were not
  // checked one by one, and for a table with findings that are not listed.
  const TableResult* table = nullptr;
  const FoldedFinding* folded = nullptr;
  const ProjectFinding* project = nullptr;  // null unless the issue is about the project file
};

// Where services show a fault of the whole call: they require a file for each finding.
inline constexpr char kFileOfCall[] = "korvelcheck.toml";

// The rule of the issue of a table that has findings which a limit left out: it fails like these findings.
inline constexpr char kLimitRule[] = "report.limit";

// The issues of a report, in its order: faults, tables, the project file. A finding that several tables share is one issue.
// REQUIRES: the report outlives them.
class Issues {
 public:
  explicit Issues(const FoldedReport& folded);
  Issues(const Issues&) = delete;
  Issues& operator=(const Issues&) = delete;

  // For the files of the issues and of the report.
  const ServicePaths& paths() const { return paths_; }
  const std::vector<Issue>& all() const& { return issues_; }
  void all() && = delete;  // the list would dangle

 private:
  void AddFault(const InputFault& fault);
  void AddTable(const TableResult& table);
  void AddLimit(const FoldedTable& table);
  void AddFinding(const FoldedFinding& folded);
  void AddProjectFinding(const ProjectFinding& finding);
  void MakeFingerprintsUnique();

  const FoldedReport& folded_;
  ServicePaths paths_;
  TextRanges ranges_;
  std::vector<Issue> issues_;
};

// All details of an issue besides its summary, as lines of text: the checker's text, table and result code, change, paths,
// waiver, old location, suggestion.
std::vector<std::string> DetailsOf(const Issue& issue, const ServicePaths& paths);

// The rule of a refusal; "refused" for one without a rule in the catalog.
std::string RuleIdOf(const Verdict& verdict);

}  // namespace korvel
