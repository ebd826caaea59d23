// history: every step of several versions of a schema, and each version against the newest. Held by tests/tool/history_test.cpp.
#include "report/render/render_history.h"

#include <unistd.h>

#include <algorithm>
#include <thread>

#include "report/finding/parallel.h"
#include "report/text/one_line.h"
#include "tool/cannot_ask.h"
#include "tool/command.h"
#include "tool/file_descriptor.h"
#include "tool/git.h"
#include "tool/judge.h"
#include "tool/output.h"

namespace korvel::tool {
namespace {

using report::History;
using report::Passage;

// Judges passages between versions.
class Judging {
 public:
  Judging(const std::vector<Input>& versions, const Options& options)
      : versions_(versions), options_(options), log_(vesk::LogCategory::Closed()) {}

  void Run(std::vector<Passage>& passages) const {
    ForEach(passages.size(), std::thread::hardware_concurrency(), [&](std::size_t i) { Judge(passages[i]); });
  }

 private:
  bool IsWanted(const std::string& table) const {
    return options_.tables.empty() || std::ranges::find(options_.tables, table) != options_.tables.end();
  }

  void Judge(Passage& passage) const {
    const Input& older = versions_[passage.from];
    const Input& newer = versions_[passage.to];
    for (const std::string_view name : older.tables) {
      const std::string table(name);
      if (!IsWanted(table)) continue;
      const Settings given = GivenFor(options_, table);
      passage.tables.push_back(JudgeChange({older, newer}, table, given, options_, log_->handle()));
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
  CannotAsk unknown;
  for (const std::string& table : asked) {
    const auto has = [&](const Input& version) { return std::ranges::find(version.tables, table) != version.tables.end(); };
    if (std::ranges::none_of(versions, has)) unknown.lines.push_back(Said("table '" + OneLine(table) + "' is in no version"));
  }
  if (!unknown.lines.empty()) throw unknown;
}

void RequireCompared(const History& history) {
  const auto is_old = [](const TableResult& result) { return result.status != Status::kNew; };
  const auto is_compared = [&](const Passage& step) { return std::ranges::any_of(step.tables, is_old); };
  if (std::ranges::none_of(history.steps, is_compared)) {
    throw CannotAsk{{Said("nothing was compared: no version but the last has such a table")}};
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
    const std::string note = Said("this clone is shallow: versions before its first commit are left out") + "\n";
    static_cast<void>(WriteAll(STDERR_FILENO, note));
  }
  if (paths.size() >= 2) return paths;
  const std::string number = paths.empty() ? "no commit" : "one commit";
  throw CannotAsk{{Said("history: " + OneLine(path) + " is in " + number + "; allowed: a file of at least two")}};
}

// Where a version is given twice it is read twice: a step without a change is allowed.
Told Tell(const Command& command, const Options& options) {
  if (options.git_history && options.inputs.size() != 1) RefuseUsage(command, "--git goes with one path");
  if (!options.git_history && options.inputs.size() < 2) RefuseUsage(command, "at least two versions are required");
  const std::vector<Input> versions = LoadInputs(PathsOf(options));
  RequireAskedTables(versions, options.tables);
  History history;
  const std::size_t newest = versions.size() - 1;
  for (const Input& version : versions) history.versions.push_back(&version);
  for (std::size_t i = 0; i < newest; ++i) history.steps.push_back({i, i + 1, {}});
  for (std::size_t i = 0; i + 1 < newest; ++i) history.to_newest.push_back({i, newest, {}});
  const Judging judging(versions, options);
  judging.Run(history.steps);
  judging.Run(history.to_newest);
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
