// What a report finds fault with, as formats that annotate files need it: one record for each fault, with its place.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/result/words.h"

namespace korvel {

struct Issue {
  std::string rule;  // id; "refused" for a refusal that has none in the catalogue
  std::string text;  // on one line
  bool waived = false;
  std::string fingerprint;  // no two issues of a report have the same
  // In the new file; of what was removed the nearest place that encloses it there; in the old file for want of any.
  TextRange place;
  std::optional<TextRange> old_location;  // where that is another
  std::string suggestion;                 // "" for none
  // What it is about; null for a finding about the project file, and the second as well for a table that was not taken apart.
  const TableResult* table = nullptr;
  const FoldedFinding* folded = nullptr;
};

// What becomes of a finding that several tables have.
enum class Repeats {
  kFolded,  // one issue, at the first table
  kEach,    // one for each table
};

// The issues of a report, in its order. The report outlives them.
class Issues {
 public:
  explicit Issues(const Report& report, Repeats repeats = Repeats::kFolded);
  Issues(const Issues&) = delete;
  Issues& operator=(const Issues&) = delete;

  const std::vector<Issue>& all() const& { return issues_; }
  void all() && = delete;  // the list would not outlive the statement

 private:
  void AddTable(const TableResult& table);
  void AddFinding(const FoldedFinding& folded);
  void AddProjectFinding(const ProjectFinding& finding);
  void MakeFingerprintsUnique();

  TextRanges marks_;
  std::vector<FoldedFinding> folded_;
  std::vector<Issue> issues_;
};

// Everything there is to say about an issue, in lines: the change, the old place, the ways to it, the waiver, the way out.
std::vector<std::string> DetailsOf(const Issue& issue);

// A file as services that show reports name it: relative to the working directory where it lies below it, with '/'; the path
// alone of "git:REV:PATH"; "" for standard input.
std::string ServicePath(const std::string& file);

}  // namespace korvel
