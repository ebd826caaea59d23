// lint: are these schemas well formed, and would their tables be accepted? Held by tests/tool/lint_test.cpp.
#include "report/text/one_line.h"
#include "tool/cannot_ask.h"
#include "tool/command.h"
#include "tool/judge.h"
#include "tool/waivers.h"

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
Answer Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  Answer answer = StartAnswer(command, LoadInputs(options.inputs));
  Report& report = answer.report;
  RequireTablesInEach(answer.inputs);
  for (const Input& input : answer.inputs) {
    JudgeEach(report, options, {input.tables.begin(), input.tables.end()}, [&](const std::string& table) {
      return JudgeChange({input, input}, table, GivenFor(options, table), options, log);
    });
  }
  if (options.project) ApplyWaivers(*options.project, false, report);
  return answer;
}

}  // namespace

const Command kLintCommand{"lint",   "are schemas well formed, and would their tables be accepted?",     {"FILE", "file"},
                           kNoInput, kCreatedAsOption | kSettingOptions | kFindingsOption | kManyInputs, Run};

}  // namespace korvel::tool
