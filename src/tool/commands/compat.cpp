// Tested by tests/tool/pair_commands_test.cpp.
#include "project/check_tables.h"
#include "tool/cli/command.h"
#include "tool/commands/run_report.h"

namespace korvel::tool {
namespace {

struct CompatArguments {
  InputFiles inputs;
  TableSelection selection;
  ReportOptions report;

  void AddTo(ArgumentList& arguments) {
    inputs.AddPairTo(arguments, "OLD", "NEW");
    selection.AddTo(arguments);
    report.AddTo(arguments);
  }
};

int Run(const CompatArguments& arguments) {
  return RunReport(arguments.report, arguments.inputs.paths, [&](LPVESKCATEGORYINST log) {
    CommandResult result = LoadForReport("compat", kOldAndNew, arguments.inputs.paths, *arguments.report.format);
    const Pair pair = PairOf(result.report);
    const std::vector<std::string> tables = SelectFromFirst(pair, arguments.selection.tables);
    CheckEachTable(result.report, tables, arguments.report.log.is_open, [&](const std::string& table) {
      return CheckOperation(pair, {table, table}, [&](ModifyTable& checker) {
        return checker.CheckTableMetaCompatible(pair.first.Library(), pair.second.Library(), table.c_str(), log);
      });
    });
    return result;
  });
}

}  // namespace

const Command kCompatCommand{"compat", "check whether records of the old schema can be read under the new one",
                             Declare<CompatArguments, Run>};

}  // namespace korvel::tool
