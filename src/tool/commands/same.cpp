// same: have the tables of SRC and DST the same set of fields? Held by tests/tool/pair_commands_test.cpp.
#include "project/load_inputs.h"
#include "qmx/qmx_metalib_kernel.h"
#include "tool/cli/command.h"
#include "tool/commands/check_tables.h"

namespace korvel::tool {
namespace {

CommandResult Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  CommandResult answer = StartResult(command, LoadInputs(options.inputs));
  Report& report = answer.report;
  const Pair pair = PairOf(report);
  const std::vector<std::string> tables = SelectFromFirst(pair, options.tables);
  RequireTables(pair.second, tables);
  CheckEachTable(report, options, tables, [&](const std::string& table) {
    return CheckOperation(pair, {table, table}, [&](ModifyTable& checker) {
      return checker.CompareTableField(qmx_get_meta_by_name(pair.first.Library(), table.c_str()),
                                       qmx_get_meta_by_name(pair.second.Library(), table.c_str()), log);
    });
  });
  return answer;
}

}  // namespace

const Command kSameCommand{
    "same", "have two schemas the same set of fields?", {"SRC", "source"}, {"DST", "destination"}, kTableOption, Run};

}  // namespace korvel::tool
