// lint: are these schemas well formed, and would their tables be accepted? Held by tests/tool/lint_test.cpp.
#include "base/input_error.h"
#include "base/one_line.h"
#include "project/load_inputs.h"
#include "project/waivers.h"
#include "tool/cli/command.h"
#include "tool/commands/check_tables.h"

namespace korvel::tool {
namespace {

void RequireTablesInEach(const std::vector<Input>& inputs) {
  InputError empty;
  for (const Input& input : inputs) {
    if (input.tables.empty()) empty.lines.push_back(ToolMessage(OneLine(input.name) + ": no table (a meta with a primary key)"));
  }
  if (!empty.lines.empty()) throw empty;
}

// A table is accepted if it may stay as it is.
CommandResult Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  CommandResult answer = StartResult(command, LoadInputs(options.inputs));
  Report& report = answer.report;
  RequireTablesInEach(answer.inputs);
  for (const Input& input : answer.inputs) {
    CheckEachTable(report, options, {input.tables.begin(), input.tables.end()}, [&](const std::string& table) {
      return CheckTableChange(CheckFor({input, input}, table, options, log));
    });
  }
  if (options.project) ApplyWaivers(*options.project, false, report);
  return answer;
}

}  // namespace

const Command kLintCommand{"lint",   "are schemas well formed, and would their tables be accepted?",     {"FILE", "file"},
                           kNoInput, kCreatedAsOption | kSettingOptions | kFindingsOption | kManyInputs, Run};

}  // namespace korvel::tool
