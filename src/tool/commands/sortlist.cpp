// Tested by tests/tool/pair_commands_test.cpp.
#include <optional>

#include "project/check_tables.h"
#include "tool/cli/command.h"
#include "tool/commands/run_report.h"

namespace korvel::tool {
namespace {

struct SortlistArguments {
  InputFiles inputs;
  TableSelection selection;
  std::optional<std::string> dst_table;
  ReportOptions report;

  void AddTo(ArgumentList& arguments) {
    inputs.AddPairTo(arguments, "SRC", "DST");
    selection.AddTo(arguments);
    arguments.AddText("--dst-table", "NAME", dst_table, "name of the table in DST, with one --table; default: the same name")
        .needs = "--table";
    report.AddTo(arguments);
  }
};

int Run(const SortlistArguments& arguments) {
  const std::optional<std::string>& dst_table = arguments.dst_table;
  if (dst_table && arguments.selection.tables.size() != 1) throw UsageError{"--dst-table requires exactly one --table"};
  return RunReport(arguments.report, arguments.inputs.paths, [&](LPVESKCATEGORYINST log) {
    CommandResult result = LoadForReport("sortlist", kSourceAndDestination, arguments.inputs.paths, *arguments.report.format);
    const Pair pair = PairOf(result.report);
    if (dst_table) RequireTables(pair.second, {*dst_table});
    const std::vector<std::string> tables = SelectFromFirst(pair, arguments.selection.tables);
    CheckEachTable(result.report, tables, arguments.report.log.is_open, [&](const std::string& table) {
      const TableNames names{table, dst_table.value_or(table)};
      return CheckOperation(pair, names, [&](ModifyTable& checker) {
        return checker.CompareSortListInfo(names.first.c_str(), names.second.c_str(), pair.first.Library(), pair.second.Library(),
                                           log);
      });
    });
    return result;
  });
}

}  // namespace

const Command kSortlistCommand{"sortlist", "check whether the destination keeps the sort fields of the source",
                               Declare<SortlistArguments, Run>};

}  // namespace korvel::tool
