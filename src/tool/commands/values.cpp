// values: do the fields of SRC and DST fit, by the rules of their protocols? Held by tests/tool/pair_commands_test.cpp.
#include "project/load_inputs.h"
#include "qmx/qmx_metalib_kernel.h"
#include "tool/cli/command.h"
#include "tool/commands/check_tables.h"

namespace korvel::tool {
namespace {

TableResult CheckValues(const Pair& pair, const std::string& table, const Settings& given, LPVESKCATEGORYINST log) {
  const int created_as = *ResolveSettings(given, pair.first, table).created_as;
  const LPQMXMETALIB source = pair.first.Library();
  const LPQMXMETALIB destination = pair.second.Library();
  TableResult result = CheckOperation(pair, {table, table}, [&](ModifyTable& checker) {
    return checker.CompareValue(qmx_get_meta_by_name(source, table.c_str()), qmx_get_meta_by_name(destination, table.c_str()),
                                source, destination, created_as, log);
  });
  result.settings.created_as = created_as;
  return result;
}

CommandResult Run(const Command& command, const Options& options, LPVESKCATEGORYINST log) {
  CommandResult answer = StartResult(command, LoadInputs(options.inputs));
  Report& report = answer.report;
  const Pair pair = PairOf(report);
  const std::vector<std::string> tables = SelectFromFirst(pair, options.tables);
  RequireTables(pair.second, tables);
  CheckEachTable(report, options, tables,
                 [&](const std::string& table) { return CheckValues(pair, table, GivenFor(options, table), log); });
  return answer;
}

}  // namespace

const Command kValuesCommand{"values",
                             "do the fields of two schemas fit, by the rules of their protocols?",
                             {"SRC", "source"},
                             {"DST", "destination"},
                             kTableOption | kCreatedAsOption,
                             Run};

}  // namespace korvel::tool
