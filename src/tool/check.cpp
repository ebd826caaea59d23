// check: may the tables of OLD become those of NEW? Held by tests/tool/check_test.cpp.
#include "tool/against.h"
#include "tool/command.h"
#include "tool/judge.h"

namespace korvel::tool {
namespace {

Answer CheckPair(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  Answer answer = StartAnswer(command, LoadInputs(options.inputs));
  Report& report = answer.report;
  const Pair pair = PairOf(report);
  const Selection selection = SelectTables(pair, options.tables);
  JudgeEach(report, options, selection.compared, [&](const std::string& table) {
    return JudgeChange(pair, table, GivenFor(options, table), options.max_findings, log);
  });
  for (const std::string& table : selection.added) report.tables.push_back(NewTable(pair.second, table));
  return answer;
}

Answer Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  if (options.against) return CheckAgainst(command, options, log);
  if (!options.inputs.empty()) return CheckPair(command, options, log);
  if (options.project && options.project->against) return CheckAgainst(command, options, log);
  RefuseUsage(command, "OLD is required");
}

}  // namespace

const Command kCheckCommand{"check",
                            "is this change of a schema allowed?",
                            {"OLD", "old"},
                            {"NEW", "new"},
                            kTableOption | kCreatedAsOption | kSettingOptions | kFindingsOption | kAgainstOption,
                            Run};

}  // namespace korvel::tool
