// Tested by tests/tool/pair_commands_test.cpp.
#include "analysis/check_table_change.h"
#include "qmx/qmx_metalib_kernel.h"
#include "tool/cli/command.h"
#include "tool/commands/run_report.h"

namespace korvel::tool {
namespace {

struct SameArguments : PairArguments {
  void AddTo(ArgumentList& arguments) {
    inputs.AddPairTo(arguments, "SRC", "DST");
    selection.AddTo(arguments);
    report.AddTo(arguments);
  }
};

TableResult CompareFields(const Pair& pair, const std::string& table, LPVESKCATEGORYINST log) {
  return CheckOperation(pair, {table, table}, [&](ModifyTable& checker) {
    return checker.CompareTableField(qmx_get_meta_by_name(pair.first.Library(), table.c_str()),
                                     qmx_get_meta_by_name(pair.second.Library(), table.c_str()), log);
  });
}

int Run(const SameArguments& arguments) {
  return RunPairReport(arguments, {"same", kSourceAndDestination, SelectFromBoth, CompareFields});
}

}  // namespace

const Command kSameCommand{"same", "compare the field sets of two schemas", Declare<SameArguments, Run>};

}  // namespace korvel::tool
