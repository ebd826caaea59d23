// Tested by tests/tool/suggest_project_test.cpp.
#include "tool/commands/suggest_project.h"

#include <algorithm>
#include <set>
#include <utility>

#include "base/text.h"
#include "project/git.h"
#include "project/load_inputs.h"
#include "project/waivers.h"
#include "report/result/summary.h"
#include "tool/commands/project_pairs.h"

namespace korvel::tool {
namespace {

bool HasRefused(const ChangedPair& pair) {
  return std::ranges::any_of(pair.tables,
                             [](const TableResult* table) { return table->status == Status::kRefused && !IsWaived(*table); });
}

FixedFile Fix(const ChangedPair& pair, Git& git) {
  FixedFile file{LoadNew(pair, git), PathOnDisk(pair.new_name), {}};
  const Input old_input = LoadInput(pair.old_name, git);
  std::vector<TableQuestion> questions;
  for (const TableResult* const table : pair.tables) {
    if (table->status == Status::kNew || IsWaived(*table)) continue;
    questions.push_back({table->table, ResolveSettings(table->settings, old_input, table->table)});
  }
  if (file.input.text) file.suggestion = FixSchema(old_input, file.input, questions);
  return file;
}

// The refused tables of files that have not changed: their old schemas or settings break a rule.
void AddReasonsOfUnchanged(const Report& report, const std::vector<ChangedPair>& pairs, NothingAllowed& reasons) {
  std::set<const TableResult*> changed;
  for (const ChangedPair& pair : pairs) changed.insert(pair.tables.begin(), pair.tables.end());
  for (const TableResult& table : report.tables) {
    if (table.status != Status::kRefused || IsWaived(table) || changed.contains(&table)) continue;
    reasons.lines.push_back(StaysRefused(table.second == nullptr ? "" : table.second->name, table.table, table.verdict));
  }
}

}  // namespace

std::vector<FixedFile> FixProject(const CheckRequest& request, NothingAllowed& reasons) {
  CommandResult result = RunCheck(request);
  ApplyAllWaivers(*result.projects, {}, result.report);
  RequireOneCompleteState("suggest", result.report);
  Git git;
  std::vector<FixedFile> files;
  const std::vector<ChangedPair> pairs = ChangedPairsOf(result.report);
  AddReasonsOfUnchanged(result.report, pairs, reasons);
  for (const ChangedPair& pair : pairs) {
    if (!HasRefused(pair)) continue;
    const std::string start = OneLine(PathText(pair.new_name)) + ": error: no suggestion: ";
    if (pair.is_deleted) {
      reasons.lines.push_back(start + "the file was deleted; allowed: restore it, or move it");
      continue;
    }
    FixedFile file = Fix(pair, git);
    if (!file.input.text) {
      reasons.lines.push_back(start + "it is an image, which has no lines to change");
      continue;
    }
    AddReasons(file, reasons);
    files.push_back(std::move(file));
  }
  return files;
}

}  // namespace korvel::tool
