// Tested by tests/tool/history_test.cpp and history_git_test.cpp.
#include "project/check_history.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>

#include "base/input_error.h"
#include "base/parallel.h"
#include "base/text.h"
#include "project/git.h"
#include "project/id_history.h"
#include "project/load_inputs.h"
#include "project/reused_id_waivers.h"
#include "project/waivers.h"
#include "report/result/released_tables.h"
#include "report/result/summary.h"
#include "report/result/words.h"
#include "schema/input.h"

namespace korvel {
namespace {

// Two checks each: enough for the cores of most machines.
constexpr std::size_t kStepsAtOnce = 8;

Input LoadVersion(const FileVersion& version, Git& git) {
  if (version.in_git) return LoadBytes(version.name, git.ReadFile(*version.in_git, version.name));
  return LoadInput(version.path_on_disk, git);
}

// The warnings of a table or a step that are not hidden: what changed, whatever the files and libraries are called.
using WarningKeys = std::vector<std::string>;

// REQUIRES: the sources of the result are in memory.
WarningKeys WarningKeysOf(const TableResult& table) {
  WarningKeys keys;
  for (const Finding& finding : table.advice.findings) {
    if (table.IsHidden(finding)) continue;
    keys.push_back(table.table + '\0' + FingerprintOf("", "", finding, table.advice.edits));
  }
  return keys;
}

// Removes warnings with these keys, and tables that have no others. `keys` are those of each table.
void DropKnownWarnings(const std::set<std::string>& known, const std::vector<WarningKeys>& keys,
                       std::vector<TableResult>& tables) {
  for (std::size_t i = 0; i < tables.size(); ++i) {
    std::vector<Finding> others;
    for (std::size_t k = 0; k < keys[i].size(); ++k) {
      if (!known.contains(keys[i][k])) others.push_back(std::move(tables[i].advice.findings[k]));
    }
    tables[i].advice.findings = std::move(others);
  }
  std::erase_if(tables, [](const TableResult& table) { return table.advice.findings.empty(); });
}

// A readable version.
struct LoadedVersion {
  std::size_t position;  // in History::versions
  Input input;
};

// In memory are the newest version and a window of consecutive ones.
class HistoryChecker {
 public:
  HistoryChecker(const FileVersions& file, const HistoryCheck& check, std::vector<std::string>& unknown_tables, Git& git)
      : file_(file), check_(check), options_(check.options), unknown_tables_(unknown_tables), git_(git), ids_(options_.tables) {
    history_.file = file.file;
    history_.notes = file.notes;
    for (const FileVersion& version : file.versions) history_.versions.push_back({version.name, {}});
  }

  History Run() {
    std::size_t end = file_.versions.size();
    while (!newest_ && end > 0) newest_ = Load(--end);
    std::vector<LoadedVersion> window;
    if (end == 0) CheckWindow(window, true);
    for (std::size_t begin = 0; begin < end; begin += kStepsAtOnce) {
      const std::size_t stop = std::min(begin + kStepsAtOnce, end);
      Append(begin, stop, window);
      // The newest version ends the last window.
      CheckWindow(window, stop == end);
      if (!window.empty()) window.erase(window.begin(), window.end() - 1);
    }
    if (newest_) RequireUnchanged(newest_->input);
    DropRepeatedWarnings();
    history_.reused_ids = ids_.Take();
    if (options_.project != nullptr) WaiveReusedIds(*options_.project, history_.reused_ids);
    return std::move(history_);
  }

 private:
  // nullopt if the version cannot be read; then it has faults.
  std::optional<LoadedVersion> Load(std::size_t position) {
    const FileVersion& version = file_.versions[position];
    try {
      Input input = LoadVersion(version, git_);
      input.path_in_project = version.path_in_project;
      history_.versions[position].name = input.name;  // of standard input, "<stdin>"
      if (check_.keeps_texts) AddDump(input);
      return LoadedVersion{position, std::move(input)};
    } catch (const InputError& faults) {
      history_.versions[position].faults = faults.lines;
      return std::nullopt;
    }
  }

  void Append(std::size_t begin, std::size_t end, std::vector<LoadedVersion>& window) {
    std::vector<std::optional<LoadedVersion>> loaded(end - begin);
    ForEach(loaded.size(), std::thread::hardware_concurrency(), [&](std::size_t i) { loaded[i] = Load(begin + i); });
    for (std::optional<LoadedVersion>& version : loaded) {
      if (version) window.push_back(std::move(*version));
    }
  }

  // The steps from the versions of the window, and these versions against the newest. The last one has its step in the next
  // window.
  void CheckWindow(const std::vector<LoadedVersion>& window, bool is_last) {
    std::vector<const LoadedVersion*> versions;
    versions.reserve(window.size() + 1);
    for (const LoadedVersion& version : window) versions.push_back(&version);
    if (is_last && newest_) versions.push_back(&*newest_);
    const std::size_t steps = versions.empty() ? 0 : versions.size() - 1;
    std::vector<CheckedStep> checked(steps);
    std::vector<CheckedVersion> against_newest(steps);
    ForEach(2 * steps, std::thread::hardware_concurrency(), [&](std::size_t i) {
      const LoadedVersion& from = *versions[i / 2];
      const LoadedVersion& to = *versions[i / 2 + 1];
      if (i % 2 == 0) {
        checked[i / 2] = CheckStep(from, to);
      } else if (&to != &*newest_) {
        against_newest[i / 2] = CheckAgainstNewest(from);
      }
    });
    for (std::size_t i = 0; i < steps; ++i) {
      history_.steps.push_back(std::move(checked[i].step));
      step_warnings_.push_back(std::move(checked[i].warnings));
      if (versions[i + 1] == &*newest_) continue;
      history_.against_newest.push_back(std::move(against_newest[i].check));
      newest_warnings_.push_back(std::move(against_newest[i].warnings));
    }
    for (std::size_t i = 0; i < versions.size(); ++i) Finish(*versions[i], i == 0 ? nullptr : versions[i - 1]);
  }

  void Finish(const LoadedVersion& version, const LoadedVersion* previous) {
    const bool is_known = previous == nullptr && std::exchange(has_ids_, true);
    if (is_known) return;
    ids_.Add(version.position, version.input, previous == nullptr ? nullptr : &previous->input);
    if (check_.keeps_texts && version.input.text) history_.texts.Add(version.position, version.input.text->Bytes());
    RequireUnchanged(version.input);
    const auto has = [&](const std::string& table) {
      return std::ranges::find(version.input.tables, table) != version.input.tables.end();
    };
    std::erase_if(unknown_tables_, has);
  }

  Report ReportFor(const LoadedVersion& from, const LoadedVersion& to) const {
    Report report;
    report.command = "history";
    report.max_findings = options_.max_findings;
    report.fails_on_warnings = check_.fails_on_warnings;
    report.tables = CheckTables({from.input, to.input}, options_);
    if (options_.project == nullptr) return report;
    const std::vector<WaiverUse> uses = ApplyWaivers(*options_.project, 0, report);
    ReportWaivers(*options_.project, uses, {.all_compared = false, .is_strict = check_.strict_waivers}, report);
    return report;
  }

  struct CheckedStep {
    VersionStep step;
    WarningKeys warnings;
  };

  struct CheckedVersion {
    NewestCheck check;
    std::vector<WarningKeys> warnings;  // of each table of NewestCheck::warned
  };

  CheckedStep CheckStep(const LoadedVersion& from, const LoadedVersion& to) const {
    VersionStep step{from.position, to.position, ReportFor(from, to)};
    AddSuggestions(step.report, false);
    WarningKeys warnings;
    for (const TableResult& table : step.report.tables) {
      step.causes.push_back(table.status == Status::kRefused ? CauseOf(table) : RefusalCause());
      std::ranges::move(WarningKeysOf(table), std::back_inserter(warnings));
    }
    step.sources = ReleaseSources(step.report.tables);
    return {std::move(step), std::move(warnings)};
  }

  CheckedVersion CheckAgainstNewest(const LoadedVersion& from) const {
    CheckedVersion checked{{from.position}, {}};
    NewestCheck& check = checked.check;
    check.warned = ReportFor(from, *newest_);
    std::vector<TableResult> results;  // the refused tables, then those with warnings
    std::vector<TableResult> warned;
    for (TableResult& table : std::exchange(check.warned.tables, {})) {
      const auto is_left_out = [&](const Finding& one) { return one.level != Level::kWarning || table.IsHidden(one); };
      std::erase_if(table.advice.findings, is_left_out);
      for (Finding& finding : table.advice.findings) finding.refusals.clear();  // all are waived
      const bool is_waived = IsWaived(table);
      if (table.status == Status::kRefused) check.refused.push_back({{}, SummaryOf(table), CauseOf(table), is_waived});
      if (!is_waived) table.changes.reset();
      if (!table.advice.findings.empty()) {
        warned.push_back(table);
        checked.warnings.push_back(WarningKeysOf(table));
      }
      if (table.status != Status::kRefused) continue;
      table.changes.reset();
      table.advice = {};
      table.baseline = from.input.name;
      results.push_back(std::move(table));
    }
    std::ranges::move(warned, std::back_inserter(results));
    check.sources = ReleaseSources(results);
    for (std::size_t i = 0; i < results.size(); ++i) {
      if (i < check.refused.size()) {
        check.refused[i].result = std::move(results[i]);
      } else {
        check.warned.tables.push_back(std::move(results[i]));
      }
    }
    return checked;
  }

  // A warning of an older version against the newest that a step from the version on has, too, is reported there.
  void DropRepeatedWarnings() {
    std::set<std::string> known;
    std::size_t step = history_.steps.size();
    for (std::size_t i = history_.against_newest.size(); i-- > 0;) {
      NewestCheck& check = history_.against_newest[i];
      for (; step > 0 && history_.steps[step - 1].from >= check.from; --step) {
        known.insert(step_warnings_[step - 1].begin(), step_warnings_[step - 1].end());
      }
      DropKnownWarnings(known, newest_warnings_[i], check.warned.tables);
    }
  }

  const FileVersions& file_;
  const HistoryCheck& check_;
  const CheckOptions& options_;
  std::vector<std::string>& unknown_tables_;  // requested, and in no version so far
  Git& git_;
  IdHistory ids_;
  bool has_ids_ = false;                 // of a version
  std::optional<LoadedVersion> newest_;  // that can be read
  History history_;
  std::vector<WarningKeys> step_warnings_;                 // of each step
  std::vector<std::vector<WarningKeys>> newest_warnings_;  // of each check against the newest version, as CheckedVersion
};

void RequireKnown(const std::vector<std::string>& unknown_tables) {
  InputError unknown;
  for (const std::string& table : unknown_tables)
    unknown.lines.push_back(ToolMessage("table " + Quote(table) + " is in no version"));
  if (!unknown.lines.empty()) throw unknown;
}

void RequireCompared(const Histories& histories) {
  const auto is_old = [](const TableResult& table) { return table.status != Status::kNew; };
  for (const History& history : histories.files) {
    for (const VersionStep& step : history.steps) {
      if (std::ranges::any_of(step.report.tables, is_old)) return;
    }
  }
  if (!histories.Faults().empty()) throw InputError{histories.Faults()};
  throw InputError{{ToolMessage("nothing was compared: only the last version has such a table")}};
}

// Moves findings about the project file, each once. That a waiver covers nothing in some check means nothing: it is for another
// one.
void MoveProjectFindings(Report& report, std::vector<ProjectFinding>& all) {
  for (ProjectFinding& finding : std::exchange(report.project, {})) {
    if (finding.rule == "waiver.unused") continue;
    const auto is_same = [&](const ProjectFinding& one) {
      return one.rule == finding.rule && one.position.line == finding.position.line &&
             one.position.column == finding.position.column;
    };
    const auto known = std::ranges::find_if(all, is_same);
    if (known == all.end()) {
      all.push_back(std::move(finding));
    } else if (finding.level == ProjectFinding::Level::kError && known->level != finding.level) {
      *known = std::move(finding);
    }
  }
}

void CollectProjectFindings(Histories& histories) {
  std::vector<ProjectFinding>& all = histories.project;
  for (History& history : histories.files) {
    for (VersionStep& step : history.steps) MoveProjectFindings(step.report, all);
    for (NewestCheck& check : history.against_newest) MoveProjectFindings(check.warned, all);
  }
  std::ranges::stable_sort(all, {}, [](const ProjectFinding& one) { return one.position.line; });
}

}  // namespace

Histories CheckHistories(const HistoryCheck& check) {
  Histories histories;
  histories.max_findings = check.options.max_findings;
  histories.fails_on_warnings = check.fails_on_warnings;
  std::vector<std::string> unknown_tables = check.options.tables;
  Git git;
  for (const FileVersions& file : check.files) {
    histories.files.push_back(HistoryChecker(file, check, unknown_tables, git).Run());
  }
  if (!check.allows_faults && !histories.Faults().empty()) throw InputError{histories.Faults()};
  RequireKnown(unknown_tables);
  RequireCompared(histories);
  CollectProjectFindings(histories);
  return histories;
}

}  // namespace korvel
