// lint: are these schemas well formed, and would their tables be accepted? Held by tests/tool/lint_test.cpp.
#include "tool/cannot_ask.h"
#include "tool/command.h"
#include "tool/judge.h"
#include "tool/one_line.h"

namespace korvel::tool {
namespace {

void RequireTablesInEach(const std::vector<ReportInput>& inputs) {
  CannotAsk empty;
  for (const auto& [role, input] : inputs) {
    if (input.tables.empty()) empty.lines.push_back(Said(OneLine(input.name) + ": no table (a meta with a primary key)"));
  }
  if (!empty.lines.empty()) throw empty;
}

// A table is accepted if it may stay as it is.
Report Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  Report report = StartReport(command, LoadInputs(options.inputs));
  RequireTablesInEach(report.inputs);
  for (const ReportInput& read : report.inputs) {
    const Input& input = read.input;
    JudgeEach(report, options, {input.tables.begin(), input.tables.end()}, [&](const std::string& table) {
      return JudgeChange({input, input}, table, options.given, log);
    });
  }
  return report;
}

}  // namespace

const Command kLintCommand{"lint",
                           "are schemas well formed, and would their tables be accepted?",
                           {"FILE", "file"},
                           kNoInput,
                           kCreatedAsOption | kSettingOptions | kManyInputs,
                           Run};

}  // namespace korvel::tool
