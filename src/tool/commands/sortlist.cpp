// sortlist: does DST keep the sort fields of SRC? Held by tests/tool/pair_commands_test.cpp.
#include "project/load_inputs.h"
#include "tool/cli/command.h"
#include "tool/commands/check_tables.h"

namespace korvel::tool {
namespace {

TableNames NamesOf(const std::string& table, const Options& options) { return {table, options.dst_table.value_or(table)}; }

CommandResult Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  CommandResult answer = StartResult(command, LoadInputs(options.inputs));
  Report& report = answer.report;
  const Pair pair = PairOf(report);
  if (options.dst_table) RequireTables(pair.second, {*options.dst_table});
  CheckEachTable(report, options, SelectFromFirst(pair, options.tables), [&](const std::string& table) {
    const TableNames names = NamesOf(table, options);
    return CheckOperation(pair, names, [&](ModifyTable& checker) {
      return checker.CompareSortListInfo(names.first.c_str(), names.second.c_str(), pair.first.Library(), pair.second.Library(),
                                         log);
    });
  });
  return answer;
}

}  // namespace

const Command kSortlistCommand{"sortlist",
                               "does the destination keep the sort fields of the source?",
                               {"SRC", "source"},
                               {"DST", "destination"},
                               kTableOption | kDstTableOption,
                               Run};

}  // namespace korvel::tool
