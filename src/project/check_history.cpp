// Tested by tests/tool/history_test.cpp.
#include "project/check_history.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <thread>
#include <utility>

#include "base/input_error.h"
#include "base/parallel.h"
#include "base/text.h"
#include "project/git.h"
#include "project/id_history.h"
#include "project/load_inputs.h"
#include "project/project_path.h"

namespace korvel {
namespace {

void RequireKnown(const std::vector<std::string>& unknown_tables) {
  InputError unknown;
  for (const std::string& table : unknown_tables)
    unknown.lines.push_back(ToolMessage("table " + Quote(table) + " is in no version"));
  if (!unknown.lines.empty()) throw unknown;
}

void RequireCompared(const History& history) {
  const auto is_old = [](const StepTable& table) { return table.status != Status::kNew; };
  const auto is_compared = [&](const VersionStep& step) { return std::ranges::any_of(step.tables, is_old); };
  if (std::ranges::none_of(history.steps, is_compared)) {
    throw InputError{{ToolMessage("nothing was compared: only the last version has such a table")}};
  }
}

// Two checks each: enough for the cores of most machines.
constexpr std::size_t kStepsAtOnce = 8;

// In memory are the newest version and a window of consecutive ones.
class HistoryChecker {
 public:
  HistoryChecker(const std::vector<std::string>& paths, const CheckOptions& options)
      : paths_(paths), options_(options), newest_(paths.size() - 1), unknown_tables_(options.tables), ids_(options.tables) {
    for (std::size_t i = 0; i < newest_; ++i) history_.steps.push_back({i, i + 1, {}});
    for (std::size_t i = 0; i + 1 < newest_; ++i) history_.against_newest.push_back({i, newest_, {}});
    history_.versions.resize(paths.size());
  }

  History Run() {
    const std::vector<Input> newest = Load(newest_, newest_ + 1);
    const InputError newest_faults = std::exchange(faults_, {});
    std::vector<Input> window = Load(0, 1);
    for (std::size_t begin = 0; begin < newest_; begin += kStepsAtOnce) {
      const std::size_t end = std::min(begin + kStepsAtOnce, newest_);
      std::ranges::move(Load(begin + 1, std::min(end + 1, newest_)), std::back_inserter(window));
      // After a fault, the other versions are loaded only to report theirs.
      if (newest_faults.lines.empty() && faults_.lines.empty()) CheckSteps(begin, end, window, newest.front());
      if (!window.empty()) window.erase(window.begin(), window.end() - 1);
    }
    std::ranges::copy(newest_faults.lines, std::back_inserter(faults_.lines));
    if (!faults_.lines.empty()) throw InputError(faults_);
    RequireUnchanged(newest.front());
    RequireKnown(unknown_tables_);
    RequireCompared(history_);
    history_.reused_ids = ids_.Take();
    return std::move(history_);
  }

 private:
  // None of the versions if one of them cannot be loaded.
  std::vector<Input> Load(std::size_t begin, std::size_t end) {
    const auto at = [&](std::size_t i) { return paths_.begin() + static_cast<std::ptrdiff_t>(i); };
    std::vector<Input> inputs;
    try {
      inputs = LoadInputs({at(begin), at(end)});
    } catch (const InputError& faults) {
      std::ranges::copy(faults.lines, std::back_inserter(faults_.lines));
    }
    for (std::size_t i = 0; i < inputs.size(); ++i) {
      history_.versions[begin + i] = inputs[i].name;
      inputs[i].path_in_project = PathInProject(options_.project, paths_[begin + i]);
      const auto has = [&](const std::string& table) {
        return std::ranges::find(inputs[i].tables, table) != inputs[i].tables.end();
      };
      std::erase_if(unknown_tables_, has);
    }
    return inputs;
  }

  // The steps from the versions `begin` to `end` - 1, with which the window begins.
  void CheckSteps(std::size_t begin, std::size_t end, const std::vector<Input>& window, const Input& newest) {
    ForEach(2 * (end - begin), std::thread::hardware_concurrency(), [&](std::size_t i) {
      const std::size_t from = begin + i / 2;
      const Input& version = window[i / 2];
      const bool is_last = from + 1 == newest_;
      if (i % 2 == 0) {
        Check({version, is_last ? newest : window[i / 2 + 1]}, history_.steps[from]);
      } else if (!is_last) {
        Check({version, newest}, history_.against_newest[from]);
      }
    });
    AddIds(begin, end, window, newest);
    for (const Input& version : window) RequireUnchanged(version);
  }

  void AddIds(std::size_t begin, std::size_t end, const std::vector<Input>& window, const Input& newest) {
    if (begin == 0) ids_.Add(0, window.front(), nullptr);
    for (std::size_t i = begin + 1; i <= end; ++i) {
      ids_.Add(i, i == newest_ ? newest : window[i - begin], &window[i - begin - 1]);
    }
  }

  void Check(const Pair& pair, VersionStep& step) const {
    std::ranges::transform(CheckTables(pair, options_), std::back_inserter(step.tables), StepTableOf);
  }

  const std::vector<std::string>& paths_;
  const CheckOptions& options_;
  const std::size_t newest_;  // position of the newest version
  History history_;
  InputError faults_;
  std::vector<std::string> unknown_tables_;  // requested, and in no version so far
  IdHistory ids_;
};

}  // namespace

GitVersions VersionsInGit(const std::string& path) {
  GitVersions versions;
  Git git;
  for (const std::string& commit : git.CommitsOf(path, path)) versions.paths.push_back("git:" + commit + ":" + path);
  versions.is_shallow = Git::IsShallow(path);
  if (versions.paths.size() >= 2) return versions;
  const std::string number = versions.paths.empty() ? "no commit" : "only one commit";
  const std::string clone = versions.is_shallow ? " of this shallow clone" : "";
  throw InputError{{ToolMessage(OneLine(path) + ": is in " + number + clone + "; allowed: a file with at least two versions")}};
}

// A version that is given twice is read twice: a step without a change is allowed.
History CheckHistory(const std::vector<std::string>& paths, const CheckOptions& options) {
  return HistoryChecker(paths, options).Run();
}

}  // namespace korvel
