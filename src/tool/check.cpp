// check: may the tables of OLD become those of NEW? Held by tests/tool/check_test.cpp.
#include "tool/against.h"
#include "tool/command.h"
#include "tool/judge.h"
#include "tool/waivers.h"

namespace korvel::tool {
namespace {

Answer CheckPair(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  Answer answer = StartAnswer(command, LoadInputs(options.inputs));
  Report& report = answer.report;
  const Pair pair = PairOf(report);
  const Selection selection = SelectTables(pair, options.tables);
  JudgeEach(report, options, selection.compared,
            [&](const std::string& table) { return JudgeChange(pair, table, GivenFor(options, table), options, log); });
  for (const std::string& table : selection.added) report.tables.push_back(NewTable(pair.second, table));
  return answer;
}

Answer Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  const bool is_whole = options.inputs.empty();
  const bool has_state = options.against || (is_whole && options.project && options.project->against);
  if (is_whole && !has_state) RefuseUsage(command, "OLD and NEW are required, or --against");
  if (options.allow_new && !has_state) RefuseUsage(command, "--allow-new goes with --against");
  Answer answer = has_state ? CheckAgainst(command, options, log) : CheckPair(command, options, log);
  if (options.project) ApplyWaivers(*options.project, is_whole && options.tables.empty(), answer.report);
  return answer;
}

}  // namespace

const Command kCheckCommand{"check",
                            "is this change of a schema allowed?",
                            {"OLD", "old"},
                            {"NEW", "new"},
                            kTableOption | kCreatedAsOption | kSettingOptions | kFindingsOption | kAgainstOption,
                            Run};

}  // namespace korvel::tool
