// The result of checking the versions of schema files: the steps from one version to the next, each version against the newest,
// and ids that were used again. Nothing here needs the versions: they are not in memory all at once.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "report/result/released_source.h"
#include "report/result/report.h"
#include "report/result/version_texts.h"
#include "report/result/words.h"

namespace korvel {

// A path from a table to a field or a structure, as in Finding::path.
struct FieldPath {
  std::string table;
  std::string path;  // "orders.items[].price"
};

// An id of TLV fields that a version uses with another type than an earlier version, or with a smaller size or count, after it
// was not used in between.
struct ReusedId {
  struct Use {
    std::size_t version = 0;  // position in History::versions
    std::string field;
    std::string type;      // "string(16), count 4"
    std::string location;  // "v1.xml:3:5"
    qmx::LineColumn position = {};
  };
  std::string meta;  // the structure with the later field
  int id = 0;
  Use before;  // in the last version before the id was not used
  Use after;
  std::vector<FieldPath> paths = {};  // to the later field; at least 1, at most kMaxPaths
  std::string file = {};              // of the later version, as Source::path_in_project
  std::string change = {};            // "id 2 of box: note, string(16) -> memo, uint32"
  std::string suggestion = {};
  std::string fingerprint = {};  // of file, library, rule and change
  std::optional<Waiver> waiver = {};
  std::vector<std::string> waiver_entry = {};  // the lines of the project file that waive it; reason and last day are empty

  const FieldPath& Path() const { return paths.front(); }
};

// The change that brought about the refusal of a table: that of the finding whose text is the text of the table. If no finding
// has this text, because several changes add to it, or because another rule refuses each of them alone, all of these changes,
// with the rule, the path and the locations of the first. Changes that are waived count only if all are.
struct RefusalCause {
  std::string change;        // on one line; the checker's text for a refusal without a change
  std::string path;          // "orders.items[].price"
  std::string old_location;  // "v1.xml:3:5"; empty for none
  std::string new_location;
  std::string fingerprint;  // of the finding; empty for none
  std::string rule;         // likewise; without a finding, that of the table
};

// Of these tables; empty for one that is not refused or whose findings were dropped. REQUIRES: the sources of the results are in
// memory.
std::vector<RefusalCause> CausesOf(const std::vector<TableResult>& tables);

struct TableCause {
  std::size_t table = 0;  // position in the report of the step
  RefusalCause cause = {};
};

// The check of a version against the next one.
struct VersionStep {
  std::size_t from = 0;  // positions in History::versions
  std::size_t to = 0;
  // The tables of the older version, then those that only the newer one has. Their sources have no library.
  Report report = {};
  std::vector<TableCause> causes = {};  // of the refused tables whose findings were not dropped
  std::vector<std::shared_ptr<const ReleasedSource>> sources = {};

  bool Refused() const;
};

// A table that is refused from an older version to the newest.
struct NewestRefusal {
  TableResult result;  // without changes and advice
  std::string summary;
  RefusalCause cause;
  bool is_waived = false;  // all its findings are
  // The step that it comes from, by its position in History::steps: for a removed table, the last one at or after the older
  // version that removed it; else the last one with the finding of the cause; else the last one in which the same rule refuses
  // the same path of the table; else the first one that refuses the table. No value if each of them allows it.
  std::optional<std::size_t> step = {};
  bool has_cause = false;  // whether the step has the refusal; otherwise it has another one of the same table
};

// The check of an older version against the newest.
struct NewestCheck {
  std::size_t from = 0;
  std::vector<NewestRefusal> refused = {};
  std::size_t left_out = 0;  // refused tables that are not listed, because the limit was reached; some step refuses each of them
  bool left_out_fails = false;  // whether one of them is not waived
  // The tables with warnings that no step from the version on has. Refused ones are in `refused`, too; here, they have changes
  // only if they are waived. Without notes, which are about the change of one step.
  Report warned = {};
  std::vector<std::shared_ptr<const ReleasedSource>> sources = {};

  bool Refused() const { return !refused.empty() || left_out > 0; }
};

struct VersionInfo {
  std::string name;                // as messages show it
  std::vector<InputFault> faults;  // why it could not be read; then no step has it
  bool is_removed = false;         // the file was removed: the version has no tables
};

// The versions of one file.
struct History {
  std::string file;  // as given; empty if the versions are single files
  // Where the history begins or was cut, and gaps in it; one line each.
  std::vector<std::string> notes;
  std::vector<VersionInfo> versions;  // oldest first
  std::vector<VersionStep> steps;     // each readable version to the next one
  // Each readable version but the last two against the newest. The last step compares these two.
  std::vector<NewestCheck> against_newest;
  std::vector<ReusedId> reused_ids;
  VersionTexts texts;  // only for formats that show them

  bool Refused() const;
  // Whether each version could be read.
  bool IsComplete() const;
  // Whether the file was removed in the end.
  bool IsRemoved() const { return !versions.empty() && versions.back().is_removed; }
};

// The histories of a call.
struct Histories {
  std::vector<History> files;
  std::vector<InputFault> faults = {};  // why the whole call failed; then there are no files
  std::vector<ProjectFinding> project;  // what is wrong with waivers
  std::vector<ReportProject> projects;  // the project file of the call, if it has one
  std::size_t max_findings = kMaxFindings;
  bool fails_on_warnings = false;
  Detail detail = Detail::kNormal;  // of text

  bool Refused() const;
  // Whether anything is refused and not waived, or is a warning that fails the call, or the project file has an error.
  bool Fails() const;
  // The same for one of the histories, without the project file.
  bool Fails(const History& history) const;
  // The faults of the call and of all versions, in the order of the histories.
  std::vector<InputFault> Faults() const;
};

// "a field got the id of a removed field with another type: id 2 of box: memo, uint32, in v3.xml; was: ..."
std::string DescriptionOf(const History& history, const ReusedId& reused);

// Whether a part of a history has a refusal that is not waived, or a warning that fails the call.
bool Fails(const VersionStep& step);
bool Fails(const NewestCheck& check);

// "refused" or "allowed", of a step
const char* VerdictText(bool refused);

// The verdict of all steps together. If a version cannot be read, it is incomplete, whatever the others are.
OverallVerdict VerdictOf(const History& history);
OverallVerdict VerdictOf(const Histories& histories);

// What the verdict alone does not say: " (1 version cannot be read)", " (the check failed)", " (all waived)", why the call fails;
// or "".
std::string RemarkOn(const Histories& histories);

// The number of a step, from 1.
std::size_t NumberOf(const History& history, const VersionStep& step);

// The warnings or notes of all steps and comparisons with the newest version, each once for each of them; and, as warnings, the
// reused ids.
std::size_t CountAdvice(const History& history, Level level);

// All steps as one report, for formats that list findings: the tables name the version that they are compared with. A table that
// only the comparison with the newest version refuses, or warns about, follows the steps; also one whose refusals are waived in
// the step, but not all of them against the newest version. Borrows the histories.
Report ReportOf(const Histories& histories);

}  // namespace korvel
