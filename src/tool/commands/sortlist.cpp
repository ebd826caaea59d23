// Tested by tests/tool/pair_commands_test.cpp.
#include <optional>

#include "analysis/check_table_change.h"
#include "tool/cli/command.h"
#include "tool/commands/run_report.h"

namespace korvel::tool {
namespace {

struct SortlistArguments : PairArguments {
  std::optional<std::string> dst_table;

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
  const auto select = [&](const Pair& pair, const std::vector<std::string>& requested) {
    if (dst_table) RequireTables(pair.second, {*dst_table});
    return SelectFromFirst(pair, requested);
  };
  const auto check = [&](const Pair& pair, const std::string& table, LPVESKCATEGORYINST log) {
    const TableNames names{table, dst_table.value_or(table)};
    return CheckOperation(pair, names, [&](ModifyTable& checker) {
      return checker.CompareSortListInfo(names.first.c_str(), names.second.c_str(), pair.first.Library(), pair.second.Library(),
                                         log);
    });
  };
  return RunPairReport(arguments, {"sortlist", kSourceAndDestination, select, check});
}

}  // namespace

const Command kSortlistCommand{"sortlist", "check whether the destination keeps the sort fields of the source",
                               Declare<SortlistArguments, Run>};

}  // namespace korvel::tool
