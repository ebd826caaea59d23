// Tested by tests/tool/pair_commands_test.cpp.
#include "analysis/check_table_change.h"
#include "project/project.h"
#include "qmx/qmx_metalib_kernel.h"
#include "tool/cli/command.h"
#include "tool/commands/run_report.h"

namespace korvel::tool {
namespace {

struct ValuesArguments : PairArguments {
  TableSettings settings;

  void AddTo(ArgumentList& arguments) {
    inputs.AddPairTo(arguments, "SRC", "DST");
    selection.AddTo(arguments);
    settings.AddCreatedAsTo(arguments);
    settings.AddProjectTo(arguments);
    report.AddTo(arguments);
  }
};

TableResult CheckValues(const Pair& pair, const std::string& table, const PartialSettings& given, LPVESKCATEGORYINST log) {
  const int created_as = ResolveSettings(given, pair.first, table).created_as;
  const LPQMXMETALIB source = pair.first.Library();
  const LPQMXMETALIB destination = pair.second.Library();
  TableResult result = CheckOperation(pair, {table, table}, [&](ModifyTable& checker) {
    return checker.CompareValue(qmx_get_meta_by_name(source, table.c_str()), qmx_get_meta_by_name(destination, table.c_str()),
                                source, destination, created_as, log);
  });
  result.settings.created_as = created_as;
  return result;
}

int Run(const ValuesArguments& arguments) {
  const std::optional<Project> project = arguments.settings.ReadProject();
  if (project) RefuseOverlaps({project->file}, arguments.report.AllOutputs(), arguments.report.log);
  const auto check = [&](const Pair& pair, const std::string& table, LPVESKCATEGORYINST log) {
    return CheckValues(pair, table, GivenFor(arguments.settings.given, project ? &*project : nullptr, table), log);
  };
  return RunPairReport(arguments, {"values", kSourceAndDestination, SelectFromBoth, check, project ? &*project : nullptr});
}

}  // namespace

const Command kValuesCommand{"values",
                             "check whether the fields of two schemas are compatible under the rules of their protocols",
                             Declare<ValuesArguments, Run>};

}  // namespace korvel::tool
