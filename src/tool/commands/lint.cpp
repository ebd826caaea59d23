// Tested by tests/tool/lint_test.cpp.
#include <span>

#include "base/input_error.h"
#include "project/check_tables.h"
#include "project/input_projects.h"
#include "project/repeated_tables.h"
#include "project/schema_finder.h"
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
    inputs.AddListTo(arguments);
    settings.AddTo(arguments);
    settings.AddProjectTo(arguments);
    AddStrictWaivers(arguments, strict_waivers);
    limit.AddTo(arguments);
    fail_on.AddTo(arguments);
    report.AddTo(arguments);
  }
};

void RequireTablesInEach(CommandResult& result) {
  for (const Input& input : result.inputs) {
    if (input.tables.empty()) result.report.faults.push_back(NoTableFault(input));
  }
}

// Checks the tables of each input with the settings of its own project file.
void AddTables(const std::vector<std::string>& paths, const CheckOptions& options, ProjectSet& projects, Links links,
               CommandResult& result) {
  InputProjects input_projects(projects, links);
  std::vector<InputProject> nearest;
  std::vector<JudgedFile> judged;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const InputProject& one = nearest.emplace_back(input_projects.Of(paths[i]));
    result.inputs[i].path_in_project = one.path_in_project;
    judged.emplace_back(one.position, paths[i]);
  }
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const Input& input = result.inputs[i];
    const std::size_t first = result.report.tables.size();
    CheckOptions own = options;
    own.project = nearest[i].project;
    CheckEachTable(result.report, {input, input}, {input.tables.begin(), input.tables.end()}, own);
    const auto added = std::span(result.report.tables).subspan(first);
    for (TableResult& table : added) table.project = nearest[i].position;
  }
  result.report.projects = ListOf(projects, std::move(judged));
}

// A table is acceptable if it may stay as it is.
CommandResult Lint(const LintArguments& arguments, const CheckOptions& options) {
  const auto projects = std::make_shared<ProjectSet>(options.project, arguments.settings.SearchesProjects());
  SchemaFinder finder(*projects, arguments.settings.links());
  const std::vector<std::string> paths = finder.Select(arguments.inputs.paths);
  RefuseOverlaps(paths, arguments.report.AllOutputs(), arguments.report.log);
  CommandResult result =
      LoadReadable("lint", kFiles, paths, arguments.report.texts(), [&](const std::string& path) { return finder.Read(path); });
  RequireTablesInEach(result);
  AddTables(result.paths, options, *projects, arguments.settings.links(), result);
  RefuseOverlaps(projects->Files(), arguments.report.AllOutputs(), arguments.report.log);
  result.projects = projects;
  result.report.max_findings = options.max_findings;
  result.report.fails_on_warnings = arguments.fail_on.Warnings(options.project);
  if (arguments.inputs.paths.empty()) {
    result.report.project = FindRepeatedTables(result.report.tables, result.report.fails_on_warnings);
  }
  ApplyAllWaivers(*projects, {.is_strict = arguments.strict_waivers}, result.report);
  return result;
}

int Run(const LintArguments& arguments) {
  const std::optional<Project> project = arguments.settings.ReadProject();
  if (project) RefuseOverlaps({project->file}, arguments.report.AllOutputs(), arguments.report.log);
  return RunReport(arguments.report, arguments.inputs.paths, [&](LPVESKCATEGORYINST log) {
    return Lint(arguments, {.given = arguments.settings.given,
                            .project = project ? &*project : nullptr,
                            .max_findings = arguments.limit.max_findings,
                            .wants_allowed_changes = arguments.report.AnyFormat(&Format::shows_allowed_changes),
                            .is_alone = true,
                            .log = log,
                            .in_order = arguments.report.log.is_open});
  });
}

}  // namespace

const Command kLintCommand{"lint", "check that files are well formed and that the checker accepts their tables",
                           Declare<LintArguments, Run>};

}  // namespace korvel::tool
