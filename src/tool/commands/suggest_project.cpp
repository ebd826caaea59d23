// Tested by tests/tool/suggest_project_test.cpp.
#include "tool/commands/suggest_project.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "base/input_error.h"
#include "base/text.h"
#include "project/git.h"
#include "project/load_inputs.h"
#include "project/waivers.h"
#include "report/result/summary.h"

namespace korvel::tool {
namespace {

// Tables of one pair of files.
struct RefusedPair {
  std::string old_name;
  std::string new_name;
  std::vector<const TableResult*> tables;
  bool has_refused = false;
};

std::vector<RefusedPair> RefusedPairsOf(const Report& report) {
  std::vector<RefusedPair> pairs;
  for (const TableResult& table : report.tables) {
    if (table.first == nullptr || table.second == nullptr) continue;
    const bool is_same_pair =
        !pairs.empty() && pairs.back().old_name == table.first->name && pairs.back().new_name == table.second->name;
    if (!is_same_pair) pairs.push_back({table.first->name, table.second->name, {}});
    if (IsWaived(table)) continue;
    pairs.back().tables.push_back(&table);
    pairs.back().has_refused = pairs.back().has_refused || table.status == Status::kRefused;
  }
  std::erase_if(pairs, [](const RefusedPair& pair) { return !pair.has_refused; });
  return pairs;
}

bool IsDeleted(const Report& report, const std::string& old_name) {
  return std::ranges::any_of(
      report.files, [&](const FileNote& note) { return note.kind == FileNote::Kind::kDeleted && note.old_file == old_name; });
}

// The path of a file of the project, which must not be taken for standard input or a file of a commit.
std::string OnDisk(const std::string& name) { return std::filesystem::path(name).is_absolute() ? name : "./" + name; }

FixedFile Fix(const RefusedPair& pair, Git& git) {
  FixedFile file{LoadInput(OnDisk(pair.new_name), git), OnDisk(pair.new_name), {}};
  file.input.name = pair.new_name;
  const Input old_input = LoadInput(pair.old_name, git);
  std::vector<TableQuestion> questions;
  for (const TableResult* const table : pair.tables) {
    questions.push_back({table->table, ResolveSettings(table->settings, old_input, table->table)});
  }
  if (file.input.text) file.suggestion = FixSchema(old_input, file.input, questions);
  return file;
}

void RequireComplete(const Report& report) {
  if (report.baselines.size() > 1) {
    throw InputError{
        {ToolMessage("suggest: there are several baselines, whose suggestions may contradict each other; allowed: one, "
                     "such as --against " +
                     ShellWord(report.baselines.front().name))}};
  }
  if (ExitCodeOf(report) == kInputError) {
    throw InputError{{ToolMessage("suggest: the check is incomplete; 'korvelcheck check' with the same baseline says why")}};
  }
}

}  // namespace

std::vector<FixedFile> FixProject(const CheckRequest& request, NothingAllowed& reasons) {
  CommandResult result = RunCheck(request);
  ApplyAllWaivers(*result.projects, {}, result.report);
  RequireComplete(result.report);
  Git git;
  std::vector<FixedFile> files;
  for (const RefusedPair& pair : RefusedPairsOf(result.report)) {
    const std::string start = OneLine(PathText(pair.new_name)) + ": error: no suggestion: ";
    if (IsDeleted(result.report, pair.old_name)) {
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
