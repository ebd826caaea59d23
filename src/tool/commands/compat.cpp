// Tested by tests/tool/pair_commands_test.cpp.
#include "analysis/check_table_change.h"
#include "tool/cli/command.h"
#include "tool/commands/run_report.h"

namespace korvel::tool {
namespace {

struct CompatArguments : PairArguments {
  void AddTo(ArgumentList& arguments) {
    inputs.AddPairTo(arguments, "OLD", "NEW");
    selection.AddTo(arguments);
    report.AddTo(arguments);
  }
};

TableResult CheckReadability(const Pair& pair, const std::string& table, LPVESKCATEGORYINST log) {
  return CheckOperation(pair, {table, table}, [&](ModifyTable& checker) {
    return checker.CheckTableMetaCompatible(pair.first.Library(), pair.second.Library(), table.c_str(), log);
  });
}

int Run(const CompatArguments& arguments) {
  return RunPairReport(
      arguments,
      {.name = "compat", .roles = kOldAndNew, .select = SelectFromFirst, .check = CheckReadability, .prints_notes = true});
}

}  // namespace

const Command kCompatCommand{"compat", "check whether records of the old schema can be read under the new one",
                             Declare<CompatArguments, Run>};

}  // namespace korvel::tool
