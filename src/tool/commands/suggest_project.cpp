// Tested by tests/tool/suggest_project_test.cpp and suggest_baselines_test.cpp.
#include "tool/commands/suggest_project.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/text.h"
#include "project/fix_file.h"
#include "project/git.h"
#include "project/waivers.h"
#include "report/result/summary.h"
#include "tool/commands/project_pairs.h"

namespace korvel::tool {
namespace {

bool IsOpen(const TableResult& table) { return table.status == Status::kRefused && !IsWaived(table); }

// A file of the new state with its counterparts in the states of the baselines.
using FileStates = std::vector<const ComparedFile*>;

// In the order of the check.
std::vector<FileStates> FilesOf(const std::vector<ComparedFile>& compared) {
  std::vector<FileStates> files;
  std::map<std::string_view, std::size_t> positions;
  for (const ComparedFile& file : compared) {
    const auto [found, is_new] = positions.emplace(file.new_name, files.size());
    if (is_new) files.emplace_back();
    files[found->second].push_back(&file);
  }
  return files;
}

// Whether the change of the file since one of the states has a refused table that is not waived.
bool NeedsFix(const FileStates& states, const Report& report) {
  return std::ranges::any_of(states, [&](const ComparedFile* file) {
    return !file->is_unchanged && std::ranges::any_of(TablesOf(*file, report), IsOpen);
  });
}

// The refused tables of files that have not changed: their old schemas or settings break a rule.
void AddReasonsOfUnchanged(const CommandResult& result, NothingAllowed& reasons) {
  for (const ComparedFile& file : result.compared) {
    if (!file.is_unchanged) continue;
    for (const TableResult& table : TablesOf(file, result.report)) {
      if (IsOpen(table)) reasons.lines.push_back(StaysRefused(file.new_name, table.table, table.verdict));
    }
  }
}

FixedFile FixedOf(const std::vector<EarlierState>& states, Input input, std::string path, const CommandResult& result,
                  const CheckRequest& request, NothingAllowed& reasons) {
  FixedFile file{std::move(input), std::move(path), {}};
  file.suggestion = FixFile(states, file.input, request.options, *result.projects);
  AddReasons(file, reasons);
  return file;
}

}  // namespace

FixedFiles FixProject(const CheckRequest& request, NothingAllowed& reasons) {
  CommandResult result = RunCheck(request);
  ApplyAllWaivers(*result.projects, {}, result.report);
  RequireCompleteState("suggest", result.report);
  FixedFiles fixed{.has_waived = std::ranges::any_of(result.report.tables, IsWaived)};
  Git git;
  AddReasonsOfUnchanged(result, reasons);
  for (const FileStates& states : FilesOf(result.compared)) {
    if (!NeedsFix(states, result.report)) continue;
    const ComparedFile& file = *states.front();
    const std::string start = OneLine(PathText(file.new_name)) + ": error: no suggestion: ";
    if (file.is_deleted) {
      reasons.lines.push_back(start + "the file was deleted; allowed: restore it, or move it");
      continue;
    }
    Input input = LoadNew(file, git);
    if (!input.text) {
      reasons.lines.push_back(start + "it is an image, which has no lines to change");
      continue;
    }
    fixed.files.push_back(FixedOf(EarlierStatesOf(states, result.report, git), std::move(input), PathOnDisk(file.new_name),
                                  result, request, reasons));
  }
  return fixed;
}

FixedFiles FixPair(const CheckRequest& request, const std::function<void(const Input& new_input)>& on_loaded,
                   NothingAllowed& reasons) {
  CommandResult result = RunCheck(request);
  on_loaded(result.inputs.back());
  ApplyAllWaivers(*result.projects, {}, result.report);
  EarlierState state{result.inputs.front(), {}};
  for (const TableResult& table : result.report.tables) state.tables.push_back(&table);
  FixedFiles fixed{.has_waived = std::ranges::any_of(result.report.tables, IsWaived)};
  fixed.files.push_back(FixedOf({std::move(state)}, result.inputs.back(), request.paths.back(), result, request, reasons));
  return fixed;
}

}  // namespace korvel::tool
