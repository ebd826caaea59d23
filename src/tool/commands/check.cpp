// Tested by tests/tool/check_test.cpp and against_test.cpp.
#include <unistd.h>

#include <optional>

#include "base/file_descriptor.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/check_project.h"
#include "project/waivers.h"
#include "tool/cli/command.h"
#include "tool/commands/run_report.h"
#include "tool/io/progress.h"

namespace korvel::tool {
namespace {

struct CheckArguments {
  InputFiles inputs;
  TableSelection selection;
  TableSettings settings;
  std::optional<std::string> against;
  bool allow_new = false;
  FindingLimit limit;
  ReportOptions report;

  void AddTo(ArgumentList& arguments) {
    arguments
        .AddPositional("FILES", "FILE", inputs.paths,
                       "OLD and NEW, schema files or images; with --against, files and directories")
        .is_repeated = true;
    selection.AddTo(arguments);
    settings.AddTo(arguments);
    arguments.AddText("--against", "git:REV|DIR", against,
                      "compare the project's schema files with those of a commit or a directory");
    arguments.AddFlag("--allow-new", allow_new, "with --against: succeed even if every table is new");
    settings.AddProjectTo(arguments);
    limit.AddTo(arguments);
    report.AddTo(arguments);
  }

  CheckOptions OptionsFor(const Project* project, LPVESKCATEGORYINST log) const {
    return {.tables = selection.tables,
            .given = settings.given,
            .project = project,
            .max_findings = limit.max_findings,
            .wants_allowed_changes = report.format->shows_allowed_changes,
            .wants_fixes = report.format->shows_fixes,
            .log = log,
            .in_order = report.log.is_open};
  }
};

CommandResult CheckPair(const CheckArguments& arguments, const CheckOptions& options) {
  CommandResult result = LoadForReport("check", kOldAndNew, arguments.inputs.paths, *arguments.report.format);
  const Pair pair = PairOf(result.report);
  const Selection selection = SelectTables(pair, options.tables);
  CheckEachTable(result.report, selection.compared, options.in_order,
                 [&](const std::string& table) { return CheckTableChange(CheckFor(pair, table, options)); });
  for (const std::string& table : selection.added) result.report.tables.push_back(NewTable(pair.second, table));
  return result;
}

void Print(const std::string& message) { static_cast<void>(WriteAll(STDERR_FILENO, ToolMessage(message) + "\n")); }

// Shows both phases of a project check, one after the other.
class ProjectProgress {
 public:
  void operator()(ProjectPhase phase, std::size_t done, std::size_t total) {
    if (done == 0) {
      bar_.emplace(STDERR_FILENO, total, phase == ProjectPhase::kLoad ? "files" : "files checked");
    } else {
      bar_->Step();
    }
  }

 private:
  std::optional<Progress> bar_;
};

CommandResult CheckAgainst(const CheckArguments& arguments, const CheckOptions& options) {
  ProjectCheck check{.states = OpenStates(arguments.against, options.project), .files = {}, .options = options};
  check.files = SelectFiles(arguments.inputs.paths, options.project, check.states);
  for (const std::string& path : check.files.repeated) Print(OneLine(path) + " is given twice; it is compared only once");
  RefuseOverlaps(ShownFiles(check.files, check.states), arguments.report.output, arguments.report.log);
  check.allow_new = arguments.allow_new;
  check.shows_sources = arguments.report.format->shows_sources;
  ProjectProgress progress;
  check.on_progress = std::ref(progress);
  ProjectResult found = CheckProject(check);
  found.report.command = "check";
  return {.report = std::move(found.report), .project_sources = std::move(found.sources)};
}

// Two files, any number of paths with --against, or none.
void RequireFiles(const CheckArguments& arguments) {
  const std::vector<std::string>& paths = arguments.inputs.paths;
  if (!arguments.against) {
    if (paths.size() == 1) throw UsageError{"NEW is required"};
    if (paths.size() > 2) throw UsageError{"unexpected argument " + Quote(paths[2])};
  }
  RequireOneStandardInput(paths);
}

void RequireBaseline(const CheckArguments& arguments, bool has_baseline) {
  if (arguments.inputs.paths.empty() && !has_baseline) throw UsageError{"OLD and NEW are required, or --against"};
  if (arguments.allow_new && !has_baseline) throw UsageError{"--allow-new requires --against"};
}

int Run(const CheckArguments& arguments) {
  RequireFiles(arguments);
  const std::optional<Project> project = arguments.settings.ReadProject();
  const bool is_whole = arguments.inputs.paths.empty();
  const bool has_baseline = arguments.against || (is_whole && project && project->against);
  RequireBaseline(arguments, has_baseline);
  return RunReport(arguments.report, arguments.inputs.paths, [&](LPVESKCATEGORYINST log) {
    const CheckOptions options = arguments.OptionsFor(project ? &*project : nullptr, log);
    CommandResult result = has_baseline ? CheckAgainst(arguments, options) : CheckPair(arguments, options);
    result.report.max_findings = arguments.limit.max_findings;
    if (project) ApplyWaivers(*project, is_whole && options.tables.empty(), result.report);
    return result;
  });
}

}  // namespace

const Command kCheckCommand{"check", "check a schema change", Declare<CheckArguments, Run>};

}  // namespace korvel::tool
