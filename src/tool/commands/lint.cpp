// Tested by tests/tool/lint_test.cpp.
#include "base/input_error.h"
#include "project/check_tables.h"
#include "project/waivers.h"
#include "tool/cli/command.h"
#include "tool/commands/run_check.h"

namespace korvel::tool {
namespace {

struct LintArguments {
  InputFiles inputs;
  TableSettings settings;
  bool strict_waivers = false;
  FindingLimit limit;
  FailOn fail_on;
  ReportOptions report;

  void AddTo(ArgumentList& arguments) {
    inputs.AddListTo(arguments, "FILE");
    settings.AddTo(arguments);
    settings.AddProjectTo(arguments);
    AddStrictWaivers(arguments, strict_waivers);
    limit.AddTo(arguments);
    fail_on.AddTo(arguments);
    report.AddTo(arguments);
  }
};

// A file without a table must not pass as checked.
void RequireTablesInEach(CommandResult& result) {
  for (const Input& input : result.inputs) {
    if (!input.tables.empty()) continue;
    result.report.faults.push_back(FaultAbout(FaultKind::kNoTable, input.name, "no table (a meta with a primary key)"));
  }
}

// A table is acceptable if it may stay as it is.
CommandResult Lint(const LintArguments& arguments, const CheckOptions& options) {
  CommandResult result = LoadReadable("lint", kFiles, arguments.inputs.paths, *arguments.report.format);
  RequireTablesInEach(result);
  for (std::size_t i = 0; i < result.inputs.size(); ++i) {
    SetPathInProject(options.project, result.paths[i], result.inputs[i]);
  }
  for (const Input& input : result.inputs) {
    CheckEachTable(result.report, {input, input}, {input.tables.begin(), input.tables.end()}, options);
  }
  result.report.max_findings = options.max_findings;
  result.report.fails_on_warnings = arguments.fail_on.Warnings(options.project);
  if (options.project != nullptr) {
    const std::vector<WaiverUse> uses = ApplyWaivers(*options.project, result.report);
    ReportWaivers(*options.project, uses, {.is_strict = arguments.strict_waivers}, result.report);
  }
  return result;
}

int Run(const LintArguments& arguments) {
  const std::optional<Project> project = arguments.settings.ReadProject();
  return RunReport(arguments.report, arguments.inputs.paths, [&](LPVESKCATEGORYINST log) {
    return Lint(arguments, {.given = arguments.settings.given,
                            .project = project ? &*project : nullptr,
                            .max_findings = arguments.limit.max_findings,
                            .wants_allowed_changes = arguments.report.format->shows_allowed_changes,
                            .log = log,
                            .in_order = arguments.report.log.is_open});
  });
}

}  // namespace

const Command kLintCommand{"lint", "check that schemas are well formed and their tables acceptable", Declare<LintArguments, Run>};

}  // namespace korvel::tool
