// history: every step of several versions of a schema, and each version against the newest. Held by tests/tool/history_test.cpp.
#include <unistd.h>

#include <algorithm>
#include <thread>

#include "base/file_descriptor.h"
#include "base/input_error.h"
#include "base/one_line.h"
#include "base/parallel.h"
#include "project/git.h"
#include "project/load_inputs.h"
#include "report/render/render.h"
#include "tool/cli/command.h"
#include "tool/commands/check_tables.h"
#include "tool/io/output.h"

namespace korvel::tool {
namespace {

// Judges passages between versions.
class StepChecker {
 public:
  StepChecker(const std::vector<Input>& versions, const Options& options)
      : versions_(versions), options_(options), log_(vesk::LogCategory::Closed()) {}

  void Run(std::vector<VersionStep>& passages) const {
    ForEach(passages.size(), std::thread::hardware_concurrency(), [&](std::size_t i) { CheckOperation(passages[i]); });
  }

 private:
  bool IsWanted(const std::string& table) const {
    return options_.tables.empty() || std::ranges::find(options_.tables, table) != options_.tables.end();
  }

  void CheckOperation(VersionStep& passage) const {
    const Input& older = versions_[passage.from];
    const Input& newer = versions_[passage.to];
    for (const std::string_view name : older.tables) {
      const std::string table(name);
      if (!IsWanted(table)) continue;
      passage.tables.push_back(CheckTableChange(CheckFor({older, newer}, table, options_, log_->handle())));
    }
    for (const std::string_view name : newer.tables) {
      const std::string table(name);
      if (IsWanted(table) && !older.HasMeta(table)) passage.tables.push_back(NewTable(newer, table));
    }
  }

  const std::vector<Input>& versions_;
  const Options& options_;
  std::unique_ptr<vesk::LogCategory> log_;
};

// A table that no version has is a mistake.
void RequireAskedTables(const std::vector<Input>& versions, const std::vector<std::string>& asked) {
  InputError unknown;
  for (const std::string& table : asked) {
    const auto has = [&](const Input& version) { return std::ranges::find(version.tables, table) != version.tables.end(); };
    if (std::ranges::none_of(versions, has))
      unknown.lines.push_back(ToolMessage("table '" + OneLine(table) + "' is in no version"));
  }
  if (!unknown.lines.empty()) throw unknown;
}

void RequireCompared(const History& history) {
  const auto is_old = [](const TableResult& result) { return result.status != Status::kNew; };
  const auto is_compared = [&](const VersionStep& step) { return std::ranges::any_of(step.tables, is_old); };
  if (std::ranges::none_of(history.steps, is_compared)) {
    throw InputError{{ToolMessage("nothing was compared: no version but the last has such a table")}};
  }
}

// With --git the one path stands for the commits that changed its file, oldest first.
std::vector<std::string> PathsOf(const Options& options) {
  if (!options.git_history) return options.inputs;
  const std::string& path = options.inputs.front();
  Git git;
  std::vector<std::string> paths;
  for (const std::string& commit : git.CommitsOf(path, path)) paths.push_back("git:" + commit + ":" + path);
  if (Git::IsShallow(path)) {
    const std::string note = ToolMessage("this clone is shallow: versions before its first commit are left out") + "\n";
    static_cast<void>(WriteAll(STDERR_FILENO, note));
  }
  if (paths.size() >= 2) return paths;
  const std::string number = paths.empty() ? "no commit" : "one commit";
  throw InputError{{ToolMessage("history: " + OneLine(path) + " is in " + number + "; allowed: a file of at least two")}};
}

// Where a version is given twice it is read twice: a step without a change is allowed.
TextResult Tell(const Command& command, const Options& options) {
  if (options.git_history && options.inputs.size() != 1) RefuseUsage(command, "--git goes with one path");
  if (!options.git_history && options.inputs.size() < 2) RefuseUsage(command, "at least two versions are required");
  const std::vector<Input> versions = LoadInputs(PathsOf(options));
  RequireAskedTables(versions, options.tables);
  History history;
  const std::size_t newest = versions.size() - 1;
  for (const Input& version : versions) history.versions.push_back(&version);
  for (std::size_t i = 0; i < newest; ++i) history.steps.push_back({i, i + 1, {}});
  for (std::size_t i = 0; i + 1 < newest; ++i) history.against_newest.push_back({i, newest, {}});
  const StepChecker judging(versions, options);
  judging.Run(history.steps);
  judging.Run(history.against_newest);
  RequireCompared(history);
  for (const Input& version : versions) RequireUnchanged(version);
  return {options.json ? RenderHistoryJson(history) : RenderHistoryText(history, !options.output && CanColour()),
          history.Refused()};
}

}  // namespace

const Command kHistoryCommand{
    .name = "history",
    .summary = "may each version of a schema become the next one, and the newest?",
    .first = {"VERSION", "version"},
    .second = kNoInput,
    .options = kManyInputs | kTableOption | kCreatedAsOption | kSettingOptions | kFindingsOption | kTextOrJson | kHistoryOption,
    .tell = Tell,
};

}  // namespace korvel::tool
