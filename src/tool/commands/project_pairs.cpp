// Tested by tests/tool/suggest_project_test.cpp and diff_project_test.cpp.
#include "tool/commands/project_pairs.h"

#include <filesystem>
#include <utility>

#include "base/input_error.h"
#include "base/text.h"
#include "project/file_pair.h"
#include "project/load_inputs.h"
#include "report/result/summary.h"
#include "tool/io/exit.h"

namespace korvel::tool {

void RequireCompleteState(const char* command, const Report& report) {
  if (ExitCodeOf(report) != kInputError) return;
  throw InputError{
      {ToolMessage(std::string(command) + ": the check is incomplete; 'korvelcheck check' with the same baseline says why")}};
}

std::string PathOnDisk(const std::string& name) { return std::filesystem::path(name).is_absolute() ? name : "./" + name; }

Input LoadOld(const ComparedFile& file, Git& git) { return LoadInput(file.old_name, git); }

Input LoadNew(const ComparedFile& file, Git& git) {
  Input input = LoadInput(PathOnDisk(file.new_name), git);
  input.name = file.new_name;
  return input;
}

FileInBoth LoadBoth(const ComparedFile& file, Git& git) {
  if (file.is_deleted) {
    Input old_input = LoadOld(file, git);
    Input new_input = WithoutTables(old_input, file.new_name);
    return {std::move(old_input), std::move(new_input)};
  }
  Input new_input = LoadNew(file, git);
  Input old_input = file.old_name.empty() ? WithoutTables(new_input, file.new_name) : LoadOld(file, git);
  return {std::move(old_input), std::move(new_input)};
}

}  // namespace korvel::tool
