// Tested by tests/tool/history_test.cpp.
#include "project/check_history.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <thread>

#include "base/input_error.h"
#include "base/parallel.h"
#include "base/text.h"
#include "project/git.h"

namespace korvel {
namespace {

void CheckSteps(const std::vector<Input>& versions, const CheckOptions& options, std::vector<VersionStep>& steps) {
  ForEach(steps.size(), std::thread::hardware_concurrency(), [&](std::size_t i) {
    VersionStep& step = steps[i];
    step.tables = CheckTables({versions[step.from], versions[step.to]}, options);
  });
}

void RequireRequested(const std::vector<Input>& versions, const std::vector<std::string>& requested) {
  InputError unknown;
  for (const std::string& table : requested) {
    const auto has = [&](const Input& version) { return std::ranges::find(version.tables, table) != version.tables.end(); };
    if (std::ranges::any_of(versions, has)) continue;
    unknown.lines.push_back(ToolMessage("table " + Quote(table) + " is in no version"));
  }
  if (!unknown.lines.empty()) throw unknown;
}

void RequireCompared(const History& history) {
  const auto is_old = [](const TableResult& result) { return result.status != Status::kNew; };
  const auto is_compared = [&](const VersionStep& step) { return std::ranges::any_of(step.tables, is_old); };
  if (std::ranges::none_of(history.steps, is_compared)) {
    throw InputError{{ToolMessage("nothing was compared: only the last version has such a table")}};
  }
}

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
History CheckHistory(const std::vector<Input>& versions, const CheckOptions& options) {
  RequireRequested(versions, options.tables);
  History history;
  const std::size_t newest = versions.size() - 1;
  for (const Input& version : versions) history.versions.push_back(&version);
  for (std::size_t i = 0; i < newest; ++i) history.steps.push_back({i, i + 1, {}});
  for (std::size_t i = 0; i + 1 < newest; ++i) history.against_newest.push_back({i, newest, {}});
  CheckSteps(versions, options, history.steps);
  CheckSteps(versions, options, history.against_newest);
  RequireCompared(history);
  return history;
}

}  // namespace korvel
