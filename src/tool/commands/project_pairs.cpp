// Tested by tests/tool/suggest_project_test.cpp and diff_project_test.cpp.
#include "tool/commands/project_pairs.h"

#include <algorithm>
#include <filesystem>

#include "base/input_error.h"
#include "base/text.h"
#include "project/load_inputs.h"
#include "report/result/summary.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

bool IsDeleted(const Report& report, const std::string& old_name) {
  return std::ranges::any_of(
      report.files, [&](const FileNote& note) { return note.kind == FileNote::Kind::kDeleted && note.old_file == old_name; });
}

// An unchanged file is one source. A new table has no old one, and follows the other tables of its file.
bool IsOfChangedFile(const TableResult& table) {
  return table.first != nullptr && table.second != nullptr && table.first->name != table.second->name;
}

}  // namespace

std::vector<ChangedPair> ChangedPairsOf(const Report& report) {
  std::vector<ChangedPair> pairs;
  for (const TableResult& table : report.tables) {
    const bool is_new_file = pairs.empty() || table.second == nullptr || pairs.back().new_name != table.second->name;
    if (is_new_file && !IsOfChangedFile(table)) continue;
    if (is_new_file || (table.first != nullptr && pairs.back().old_name != table.first->name)) {
      pairs.push_back({table.first->name, table.second->name, IsDeleted(report, table.first->name), {}});
    }
    pairs.back().tables.push_back(&table);
  }
  return pairs;
}

void RequireOneCompleteState(const char* command, const Report& report) {
  if (report.baselines.size() > 1) {
    throw InputError{{ToolMessage(std::string(command) + ": there are several baselines; allowed: one, such as --against " +
                                  ShellWord(report.baselines.front().name))}};
  }
  if (ExitCodeOf(report) == kInputError) {
    throw InputError{
        {ToolMessage(std::string(command) + ": the check is incomplete; 'korvelcheck check' with the same baseline says why")}};
  }
}

std::string PathOnDisk(const std::string& name) { return std::filesystem::path(name).is_absolute() ? name : "./" + name; }

Input LoadNew(const ChangedPair& pair, Git& git) {
  Input input = LoadInput(PathOnDisk(pair.new_name), git);
  input.name = pair.new_name;
  return input;
}

}  // namespace korvel::tool
