// lint: are these schemas well formed, and would their tables be accepted? Held by tests/tool/lint_test.cpp.
#include "tool/cannot_ask.h"
#include "tool/command.h"
#include "tool/judge.h"
#include "tool/one_line.h"

namespace korvel::tool {
namespace {

void RequireTablesInEach(const std::vector<Input>& inputs) {
  CannotAsk empty;
  for (const Input& input : inputs) {
    if (input.tables.empty()) empty.lines.push_back(Said(OneLine(input.name) + ": no table (a meta with a primary key)"));
  }
  if (!empty.lines.empty()) throw empty;
}

// A table is accepted if it may stay as it is.
Report Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  const std::vector<Input> inputs = LoadInputs(options.inputs);
  RequireTablesInEach(inputs);
  Report report = StartReport(command, inputs);
  for (const Input& input : inputs) {
    for (const std::string_view table : input.tables) {
      report.tables.push_back(JudgeChange({input, input}, std::string(table), options.given, log));
    }
  }
  return report;
}

}  // namespace

const Command kLintCommand{"lint",
                           "are schemas well formed, and would their tables be accepted?",
                           {"FILE", "file"},
                           kNoInput,
                           kCreatedAsOption | kSettingOptions,
                           Run};

}  // namespace korvel::tool
