// Tested by tests/tool/waiver_test.cpp.
#include <algorithm>

#include "base/calendar.h"
#include "base/input_error.h"
#include "project/hidden_changes.h"
#include "project/waivers.h"
#include "report/result/waiver_list.h"
#include "tool/cli/command.h"
#include "tool/commands/run_check.h"
#include "tool/io/exit.h"
#include "vesk/closed_category.h"

namespace korvel::tool {
namespace {

struct WaiversArguments {
  InputFiles inputs;
  TableSettings settings;
  BaselineOption baseline;
  FindingLimit limit;
  OutputOption output{.is_report = true};
  TextOrJson format;

  void AddTo(ArgumentList& arguments) {
    inputs.AddComparedTo(arguments);
    settings.AddTo(arguments);
    baseline.AddTo(arguments);
    settings.AddProjectFileTo(arguments);
    limit.AddTo(arguments);
    output.AddTo(arguments);
    format.AddTo(arguments);
  }
};

WaiverList::Row RowOf(const Project& project, const WaiverUse& use, const Report& report, const std::string& today) {
  const WaiverEntry& waiver = *use.waiver;
  WaiverList::Row row;
  row.project_file = project.file;
  row.position = waiver.location;
  row.state = use.state;
  row.is_wide = waiver.form == WaiverForm::kWide;
  row.rule = waiver.rule;
  row.table = waiver.table;
  row.path = waiver.path;
  row.change = waiver.change;
  row.file = waiver.file;
  row.entry = waiver.entry;
  row.fingerprint = waiver.fingerprint;
  row.reason = waiver.reason;
  row.until = waiver.until;
  if (IsDay(waiver.until)) row.days_left = DaysFrom(today, waiver.until);
  row.fault = use.fault;
  row.suggestion = use.suggestion;
  for (const auto& [table, finding] : use.findings) {
    row.matches.push_back({table->second->path_in_project, table->table, finding->path, finding->fingerprint});
  }
  for (const std::size_t i : use.project) {
    const ProjectFinding& finding = report.project[i];
    row.matches.push_back({.file = PlaceOf(finding), .table = "", .path = "", .fingerprint = finding.fingerprint});
  }
  return row;
}

// The waivers of all project files that took part.
WaiverList ListOf(const ProjectSet& projects, Report& report) {
  const std::string today = Today();
  WaiverList list;
  for (std::size_t i = 0; i < projects.size(); ++i) {
    const Project* const project = projects[i];
    if (project == nullptr) continue;
    if (list.project_file.empty()) list.project_file = project->file;
    for (const WaiverUse& use : ApplyWaivers(*project, i, report)) list.rows.push_back(RowOf(*project, use, report, today));
  }
  return list;
}

[[noreturn]] void RefuseNoProject() {
  throw InputError{{ToolMessage("waivers: there is no korvelcheck.toml in this directory or above")}};
}

CheckRequest RequestOf(const WaiversArguments& arguments, const Project* project, LPVESKCATEGORYINST log) {
  return {.command = "waivers",
          .paths = arguments.inputs.paths,
          .baselines = arguments.baseline.For(arguments.inputs.paths, project),
          .allow_new = true,
          .options = {.given = arguments.settings.given,
                      .project = project,
                      .max_findings = arguments.limit.max_findings,
                      .log = log},
          .searches_projects = arguments.settings.SearchesProjects(),
          .links = arguments.settings.links(),
          .on_files = [&](const std::vector<std::string>& files) { RefuseOverlaps(files, {&arguments.output}); }};
}

int Run(const WaiversArguments& arguments) {
  RequireFiles(arguments.inputs.paths, arguments.baseline.IsGiven());
  RequireDistinctFiles(arguments.inputs.paths, arguments.output);
  const std::optional<Project> project = arguments.settings.ReadProject();
  if (project) RefuseOverlaps({project->file}, {&arguments.output});
  if (!project && arguments.inputs.paths.empty()) RefuseNoProject();
  vesk::ClosedCategory log;
  const CheckRequest request = RequestOf(arguments, project ? &*project : nullptr, log.handle());
  RequireBaseline(request);
  CommandResult result = RunCheck(request);
  const WaiverList list = ListOf(*result.projects, result.report);
  if (list.project_file.empty()) RefuseNoProject();
  arguments.output.Write(arguments.format.json ? RenderWaiversJson(list) : RenderWaiversText(list));
  const bool has_malformed =
      std::ranges::any_of(list.rows, [](const WaiverList::Row& row) { return row.state == WaiverState::kMalformed; });
  return has_malformed ? kSomeRefused : kAllAllowed;
}

}  // namespace

const Command kWaiversCommand{"waivers", "list the waivers of the project file and what they match",
                              Declare<WaiversArguments, Run>};

}  // namespace korvel::tool
