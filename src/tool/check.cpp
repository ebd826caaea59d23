// check: may the tables of OLD become those of NEW? Held by tests/tool/check_test.cpp.
#include "tool/command.h"
#include "tool/judge.h"

namespace korvel::tool {
namespace {

TableResult NewTable(const Pair& pair, const std::string& table) {
  TableResult result;
  result.table = table;
  result.status = Status::kNew;
  result.second = &pair.second;
  result.declared = DeclaredAt(pair.second, table);
  return result;
}

Answer Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  Answer answer = StartAnswer(command, LoadInputs(options.inputs));
  Report& report = answer.report;
  const Pair pair = PairOf(report);
  const Selection selection = SelectTables(pair, options.tables);
  JudgeEach(report, options, selection.compared, [&](const std::string& table) {
    return JudgeChange(pair, table, GivenFor(options, table), options.max_findings, log);
  });
  for (const std::string& table : selection.added) report.tables.push_back(NewTable(pair, table));
  return answer;
}

}  // namespace

const Command kCheckCommand{"check",
                            "is this change of a schema allowed?",
                            {"OLD", "old"},
                            {"NEW", "new"},
                            kTableOption | kCreatedAsOption | kSettingOptions | kFindingsOption,
                            Run};

}  // namespace korvel::tool
