// Tested by tests/tool/check_test.cpp and against_test.cpp.
#include <optional>

#include "project/waivers.h"
#include "tool/cli/command.h"
#include "tool/commands/next_commands.h"
#include "tool/commands/run_check.h"

namespace korvel::tool {
namespace {

struct CheckArguments {
  InputFiles inputs;
  TableSelection selection;
  TableSettings settings;
  BaselineOption baseline;
  bool allow_new = false;
  bool strict_waivers = false;
  FindingLimit limit;
  FailOn fail_on;
  ReportOptions report;

  void AddTo(ArgumentList& arguments) {
    inputs.AddComparedTo(arguments);
    selection.AddTo(arguments);
    settings.AddTo(arguments);
    baseline.AddTo(arguments);
    arguments.AddFlag("--allow-new", allow_new, "with --against: succeed even if every table is new");
    settings.AddProjectTo(arguments);
    AddStrictWaivers(arguments, strict_waivers);
    limit.AddTo(arguments);
    fail_on.AddTo(arguments);
    report.AddTo(arguments);
  }

  CheckOptions OptionsFor(const Project* project) const {
    return {.tables = selection.tables,
            .given = settings.given,
            .project = project,
            .max_findings = limit.max_findings,
            .wants_allowed_changes = report.ShowsAllowedChanges(),
            .in_order = report.log.is_open};
  }
};

CheckRequest RequestOf(const CheckArguments& arguments, const Project* project) {
  return {.command = "check",
          .paths = arguments.inputs.paths,
          .baselines = arguments.baseline.For(arguments.inputs.paths, project),
          .allow_new = arguments.allow_new,
          .texts = arguments.report.texts(),
          .options = arguments.OptionsFor(project),
          .searches_projects = arguments.settings.SearchesProjects(),
          .links = arguments.settings.links(),
          .on_files =
              [&](const std::vector<std::string>& files) {
                RefuseOverlaps(files, arguments.report.AllOutputs(), arguments.report.log);
              },
          .prints_pair_notes = !arguments.report.log.IsOnStandardError(),
          .reports_faults = true};
}

int Run(const CheckArguments& arguments) {
  RequireFiles(arguments.inputs.paths, arguments.baseline.IsGiven());
  const std::optional<Project> project = arguments.settings.ReadProject();
  if (project) RefuseOverlaps({project->file}, arguments.report.AllOutputs(), arguments.report.log);
  CheckRequest request = RequestOf(arguments, project ? &*project : nullptr);
  RequireBaseline(request);
  request.fix_command = FixCommand(request, arguments.baseline.IsGiven());
  if (arguments.allow_new && !request.HasBaseline()) throw UsageError{"--allow-new requires --against"};
  return RunReport(arguments.report, arguments.inputs.paths, [&](LPVESKCATEGORYINST log) {
    request.options.log = log;
    CommandResult result = RunCheck(request);
    result.report.fails_on_warnings = arguments.fail_on.Warnings(request.options.project);
    const bool all_compared = request.paths.empty() && request.options.tables.empty() && result.report.faults.empty();
    ApplyAllWaivers(*result.projects, {.all_compared = all_compared, .is_strict = arguments.strict_waivers}, result.report);
    return result;
  });
}

}  // namespace

const Command kCheckCommand{"check", "check a schema change", Declare<CheckArguments, Run>};

}  // namespace korvel::tool
