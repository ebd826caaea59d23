// Tested by tests/capi/check_test.cpp and same_answer_test.cpp.
#include "capi/check.h"

#include "base/input_error.h"
#include "project/check_tables.h"
#include "schema/selection.h"
#include "vesk/closed_category.h"

namespace korvel::capi {
namespace {

CheckOptions OptionsFor(const Request& request, LPVESKCATEGORYINST log) {
  return {.tables = request.tables,
          .project = &request.settings.project,
          .max_findings = request.settings.max_findings,
          .wants_allowed_changes = true,
          .is_alone = request.IsLint(),
          .log = log};
}

Report NewReport(const Request& request, const std::vector<const Input*>& inputs) {
  const InputRoles& roles = request.IsLint() ? kFiles : kOldAndNew;
  Report report;
  report.command = request.IsLint() ? "lint" : "check";
  for (const Input* input : inputs) report.inputs.push_back({report.inputs.empty() ? roles.first : roles.second, input});
  report.max_findings = request.settings.max_findings;
  report.fails_on_warnings = request.settings.project.fails_on_warnings;
  return report;
}

// Without their settings, tables that are misspelled there would be checked by others.
void RequireTablesOf(const CheckSettings& settings, const Pair& pair) {
  std::vector<std::string> names;
  for (const auto& [name, own] : settings.project.tables) names.push_back(name);
  RequireTablesOfSettings(pair, names);
}

}  // namespace

Report RunCheck(const Request& request, const std::vector<const Input*>& inputs) {
  vesk::ClosedCategory log;
  const CheckOptions options = OptionsFor(request, log.handle());
  Report report = NewReport(request, inputs);
  const Pair pair{*inputs.front(), *inputs.back()};
  RequireTablesOf(request.settings, pair);
  if (request.IsLint()) {
    const std::vector<std::string_view>& tables = pair.first.tables;
    if (tables.empty()) throw ErrorOf({NoTableFault(pair.first)});
    CheckEachTable(report, pair, {tables.begin(), tables.end()}, options);
  } else {
    CheckWantedTables(report, pair, options);
  }
  AddSuggestions(report, true);
  return report;
}

std::vector<const Input*> InputsOf(const Request& request) {
  std::vector<const Input*> inputs;
  for (const auto& schema : request.schemas) inputs.push_back(&schema->input);
  return inputs;
}

std::vector<Input> InputsWithText(const Request& request) {
  std::vector<Input> inputs;
  for (const auto& schema : request.schemas) AddDump(inputs.emplace_back(schema->input));
  return inputs;
}

}  // namespace korvel::capi
