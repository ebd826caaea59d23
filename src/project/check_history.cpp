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
#include "project/file_pair.h"
#include "project/git.h"
#include "project/history_limit.h"
#include "project/id_history.h"
#include "project/load_inputs.h"
#include "project/reused_id_waivers.h"
#include "project/step_index.h"
#include "project/version_checks.h"
#include "schema/input.h"

namespace korvel {
namespace {

// Two checks each: enough for all cores. The results of so many steps are in memory before the limit on findings applies.
std::size_t StepsAtOnce() { return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, 8); }

Input LoadVersion(const FileVersion& version, Git& git) {
  if (version.in_git) return LoadBytes(version.name, git.ReadFile(*version.in_git, version.name));
  if (version.is_link) RefuseLink(version.name);
  return LoadInput(version.path_on_disk, git);
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

// In memory are the newest version and a window of consecutive ones.
class HistoryChecker {
 public:
  HistoryChecker(const FileVersions& file, const HistoryCheck& check, std::vector<std::string>& unknown_tables,
                 HistoryLimit& limit, Git& git)
      : file_(file),
        check_(check),
        options_(check.options),
        unknown_tables_(unknown_tables),
        limit_(limit),
        git_(git),
        checks_(check),
        ids_(options_.tables) {
    history_.file = file.file;
    history_.notes = file.notes;
    for (const FileVersion& version : file.versions) history_.versions.push_back({version.name, {}, version.is_removed});
  }

  History Run() {
    std::size_t end = file_.versions.size();
    while (!newest_ && end > 0) newest_ = Load(--end);
    std::vector<LoadedVersion> window;
    if (end == 0) CheckWindow(window, true);
    const std::size_t at_once = StepsAtOnce();
    for (std::size_t begin = 0; begin < end; begin += at_once) {
      const std::size_t stop = std::min(begin + at_once, end);
      Append(begin, stop, window);
      // The newest version ends the last window.
      CheckWindow(window, stop == end);
      if (!window.empty()) window.erase(window.begin(), window.end() - 1);
    }
    DropRepeatedWarnings();
    for (NewestCheck& check : history_.against_newest) {
      for (NewestRefusal& refusal : check.refused) step_index_.FindStep(check.from, refusal);
    }
    history_.reused_ids = ids_.Take();
    AddWaiverEntries(history_.reused_ids);
    if (options_.project != nullptr) WaiveReusedIds(*options_.project, history_.reused_ids);
    return std::move(history_);
  }

 private:
  // nullopt if the version cannot be read; then it has faults.
  std::optional<LoadedVersion> Load(std::size_t position) {
    const FileVersion& version = file_.versions[position];
    if (version.is_removed) return LoadRemoved(position);
    try {
      Input input = LoadVersion(version, git_);
      input.path_in_project = version.path_in_project;
      history_.versions[position].name = input.name;  // of standard input, "<stdin>"
      if (check_.keeps_texts) AddDump(input);
      return LoadedVersion{position, std::move(input)};
    } catch (const InputError& faults) {
      history_.versions[position].faults = FaultsOf(faults, version.name);
      return std::nullopt;
    }
  }

  // The last version that can be read and has a table, without its tables, or nullopt.
  std::optional<LoadedVersion> LoadRemoved(std::size_t position) {
    for (std::size_t i = position; i > 0; --i) {
      const std::optional<LoadedVersion> last = Load(i - 1);
      if (last && !last->input.tables.empty()) return {{position, WithoutTables(last->input, file_.versions[position].name)}};
    }
    return std::nullopt;
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
    std::vector<CheckedVersion> against_newest(is_last && steps > 0 ? steps - 1 : steps);
    const bool lists_findings = limit_.ListsFindings();
    const auto for_each_check = [&](auto check_step, auto check_version) {
      ForEach(steps + against_newest.size(), std::thread::hardware_concurrency(), [&](std::size_t i) {
        const std::size_t position = i / 2;
        if (i % 2 == 0) {
          check_step(position);
        } else {
          check_version(position);
        }
      });
    };
    for_each_check([&](std::size_t i) { checked[i] = checks_.CheckStep(*versions[i], *versions[i + 1], lists_findings); },
                   [&](std::size_t i) { against_newest[i] = checks_.CheckAgainstNewest(*versions[i], *newest_); });
    for (CheckedStep& one : checked) {
      step_index_.Add(one.step.from, std::move(one.refusals));
      limit_.Apply(one.step.report);
    }
    for (CheckedVersion& one : against_newest) limit_.Apply(step_index_, one.check);
    for_each_check([&](std::size_t i) { Release(checked[i].step); }, [&](std::size_t i) { Release(against_newest[i].check); });
    for (CheckedStep& one : checked) {
      history_.steps.push_back(std::move(one.step));
      step_warnings_.push_back(std::move(one.warnings));
    }
    for (CheckedVersion& one : against_newest) {
      history_.against_newest.push_back(std::move(one.check));
      newest_warnings_.push_back(std::move(one.warnings));
    }
    for (std::size_t i = 0; i < versions.size(); ++i) Finish(*versions[i], i == 0 ? nullptr : versions[i - 1]);
  }

  void Finish(const LoadedVersion& version, const LoadedVersion* previous) {
    const bool is_known = previous == nullptr && std::exchange(has_ids_, true);
    if (is_known) return;
    ids_.Add(version.position, version.input, previous == nullptr ? nullptr : &previous->input);
    if (check_.keeps_texts && version.input.text) history_.texts.Add(version.position, version.input.text->Bytes());
    const auto has = [&](const std::string& table) {
      return std::ranges::find(version.input.tables, table) != version.input.tables.end();
    };
    std::erase_if(unknown_tables_, has);
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
  HistoryLimit& limit_;
  Git& git_;
  VersionChecks checks_;
  StepIndex step_index_;
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
  if (!histories.Faults().empty()) throw ErrorOf(histories.Faults());
  throw InputError{{ToolMessage("nothing was compared: only the last version has such a table")}};
}

// Moves findings about the project file, each once. That a waiver covers nothing in some check means nothing: it is for another
// one.
void MoveProjectFindings(std::vector<ProjectFinding> findings, std::vector<ProjectFinding>& all) {
  for (ProjectFinding& finding : findings) {
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

void CollectProjectFindings(const HistoryCheck& check, Histories& histories) {
  std::vector<ProjectFinding>& all = histories.project;
  for (History& history : histories.files) {
    for (VersionStep& step : history.steps) MoveProjectFindings(std::exchange(step.report.project, {}), all);
    for (NewestCheck& newest : history.against_newest) MoveProjectFindings(std::exchange(newest.warned.project, {}), all);
    if (check.fails_on_warnings && check.options.project != nullptr) {
      MoveProjectFindings(ExpiredWaivers(*check.options.project, history.reused_ids), all);
    }
  }
  std::ranges::stable_sort(all, {}, [](const ProjectFinding& one) { return one.position.line; });
}

}  // namespace

Histories CheckHistories(const HistoryCheck& check) {
  Histories histories;
  histories.max_findings = check.options.max_findings;
  histories.fails_on_warnings = check.fails_on_warnings;
  if (check.options.project != nullptr) histories.projects.push_back({check.options.project->file, check.files.size()});
  std::vector<std::string> unknown_tables = check.options.tables;
  HistoryLimit limit(check.options.max_findings);
  Git git;
  for (const FileVersions& file : check.files) {
    histories.files.push_back(HistoryChecker(file, check, unknown_tables, limit, git).Run());
  }
  if (!check.allows_faults && !histories.Faults().empty()) throw ErrorOf(histories.Faults());
  RequireKnown(unknown_tables);
  RequireCompared(histories);
  CollectProjectFindings(check, histories);
  return histories;
}

}  // namespace korvel
