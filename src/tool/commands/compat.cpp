// compat: can records written under OLD be read under NEW? Held by tests/tool/pair_commands_test.cpp.
#include "project/load_inputs.h"
#include "tool/cli/command.h"
#include "tool/commands/check_tables.h"

namespace korvel::tool {
namespace {

CommandResult Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  CommandResult answer = StartResult(command, LoadInputs(options.inputs));
  Report& report = answer.report;
  const Pair pair = PairOf(report);
  CheckEachTable(report, options, SelectFromFirst(pair, options.tables), [&](const std::string& table) {
    return CheckOperation(pair, {table, table}, [&](ModifyTable& checker) {
      return checker.CheckTableMetaCompatible(pair.first.Library(), pair.second.Library(), table.c_str(), log);
    });
  });
  return answer;
}

}  // namespace

const Command kCompatCommand{"compat",       "can records written under the old schema be read under the new one?",
                             {"OLD", "old"}, {"NEW", "new"},
                             kTableOption,   Run};

}  // namespace korvel::tool
