// check: may the tables of OLD become those of NEW? Held by tests/tool/check_test.cpp.
#include "project/load_inputs.h"
#include "project/waivers.h"
#include "tool/cli/command.h"
#include "tool/commands/against.h"
#include "tool/commands/check_tables.h"

namespace korvel::tool {
namespace {

CommandResult CheckPair(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  CommandResult answer = StartResult(command, LoadInputs(options.inputs));
  Report& report = answer.report;
  const Pair pair = PairOf(report);
  const Selection selection = SelectTables(pair, options.tables);
  CheckEachTable(report, options, selection.compared,
                 [&](const std::string& table) { return CheckTableChange(CheckFor(pair, table, options, log)); });
  for (const std::string& table : selection.added) report.tables.push_back(NewTable(pair.second, table));
  return answer;
}

CommandResult Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  const bool is_whole = options.inputs.empty();
  const bool has_state = options.against || (is_whole && options.project && options.project->against);
  if (is_whole && !has_state) RefuseUsage(command, "OLD and NEW are required, or --against");
  if (options.allow_new && !has_state) RefuseUsage(command, "--allow-new goes with --against");
  CommandResult answer = has_state ? CheckAgainst(command, options, log) : CheckPair(command, options, log);
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
