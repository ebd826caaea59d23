// Tested by tests/tool/suggest_project_test.cpp.
#include "tool/commands/suggest_project.h"

#include <algorithm>
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

}  // namespace

std::vector<FixedFile> FixProject(const CheckRequest& request, NothingAllowed& reasons) {
  CommandResult result = RunCheck(request);
  ApplyAllWaivers(*result.projects, {}, result.report);
  RequireOneCompleteState("suggest", result.report);
  Git git;
  std::vector<FixedFile> files;
  for (const ChangedPair& pair : ChangedPairsOf(result.report)) {
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
