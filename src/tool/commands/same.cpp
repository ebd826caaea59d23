// Tested by tests/tool/pair_commands_test.cpp.
#include "project/check_tables.h"
#include "qmx/qmx_metalib_kernel.h"
#include "tool/cli/command.h"
#include "tool/commands/run_report.h"

namespace korvel::tool {
namespace {

struct SameArguments {
  InputFiles inputs;
  TableSelection selection;
  ReportOptions report;

  void AddTo(ArgumentList& arguments) {
    inputs.AddPairTo(arguments, "SRC", "DST");
    selection.AddTo(arguments);
    report.AddTo(arguments);
  }
};

int Run(const SameArguments& arguments) {
  return RunReport(arguments.report, arguments.inputs.paths, [&](LPVESKCATEGORYINST log) {
    CommandResult result = LoadForReport("same", kSourceAndDestination, arguments.inputs.paths, *arguments.report.format);
    const Pair pair = PairOf(result.report);
    const std::vector<std::string> tables = SelectFromFirst(pair, arguments.selection.tables);
    RequireTables(pair.second, tables);
    CheckEachTable(result.report, tables, arguments.report.log.is_open, [&](const std::string& table) {
      return CheckOperation(pair, {table, table}, [&](ModifyTable& checker) {
        return checker.CompareTableField(qmx_get_meta_by_name(pair.first.Library(), table.c_str()),
                                         qmx_get_meta_by_name(pair.second.Library(), table.c_str()), log);
      });
    });
    return result;
  });
}

}  // namespace

const Command kSameCommand{"same", "compare the field sets of two schemas", Declare<SameArguments, Run>};

}  // namespace korvel::tool
