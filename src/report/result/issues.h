// The findings of a report as formats need them that annotate files: one record for each problem, with its location.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/result/words.h"

namespace korvel {

struct Issue {
  std::string rule;     // id; "refused" for a refusal without a rule in the catalog
  std::string summary;  // what is wrong, in plain words, and the path: "a field's size was reduced: orders.zone". On one line
  bool waived = false;
  std::string fingerprint;  // unique in the report
  // In the new file. Of something that was removed, the nearest enclosing element there; if there is none, in the old file.
  TextRange location;
  std::optional<TextRange> old_location;  // if it differs from `location`
  std::string suggestion;                 // "" for none
  // Both null for a finding about the project file. `folded` is also null for a table whose changes were not checked one by one.
  const TableResult* table = nullptr;
  const FoldedFinding* folded = nullptr;
};

// How often a finding is listed that several tables share.
enum class Repeats {
  kFolded,  // once, at the first table
  kEach,    // once for each table
};

// The issues of a report, in its order. REQUIRES: the report outlives them.
class Issues {
 public:
  explicit Issues(const Report& report, Repeats repeats = Repeats::kFolded);
  Issues(const Issues&) = delete;
  Issues& operator=(const Issues&) = delete;

  const std::vector<Issue>& all() const& { return issues_; }
  void all() && = delete;  // the list would dangle

 private:
  void AddTable(const TableResult& table);
  void AddFinding(const FoldedFinding& folded);
  void AddProjectFinding(const ProjectFinding& finding);
  void MakeFingerprintsUnique();

  TextRanges ranges_;
  std::vector<FoldedFinding> folded_;
  std::vector<Issue> issues_;
};

// All details of an issue besides its summary, as lines of text: the checker's text, table and result code, change, paths,
// waiver, old location, suggestion.
std::vector<std::string> DetailsOf(const Issue& issue);

// The path of a file for services that show reports: relative to the working directory if the file is below it, with '/'; PATH
// of "git:REV:PATH"; "" for standard input.
std::string ServicePath(const std::string& file);

}  // namespace korvel
