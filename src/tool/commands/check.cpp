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
  std::vector<std::string> against;
  std::optional<std::string> default_against;
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
    const auto add_baseline = [this](const std::string& baseline) {
      against.push_back(baseline);
      return std::string();
    };
    arguments.Add({.names = "--against",
                   .value = "git:REV|DIR",
                   .description =
                       "compare the project's schema files with a commit or a directory; also git:REV... (merge base with "
                       "HEAD), git-tag:PATTERN (newest tag) or DIR; may be repeated",
                   .set = add_baseline,
                   .is_repeated = true});
    arguments.AddText("--default-against", "git:REV|DIR", default_against, "the same, unless the project file has 'against'")
        .excludes = "--against";
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
            .log = log,
            .in_order = report.log.is_open};
  }
};

CommandResult CheckPair(const CheckArguments& arguments, const CheckOptions& options) {
  CommandResult result = LoadForReport("check", kOldAndNew, arguments.inputs.paths, *arguments.report.format);
  const Pair pair = PairOf(result.report);
  const Selection selection = SelectTables(pair, options.tables);
  CheckEachTable(result.report, pair, selection.compared, options);
  for (const std::string& table : selection.added) result.report.tables.push_back(NewTable(pair.second, table));
  return result;
}

void WarnOfRepeated(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    const std::string message = ToolMessage(OneLine(path) + " is given twice; it is compared only once") + "\n";
    static_cast<void>(WriteAll(STDERR_FILENO, message));
  }
}

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

ProjectResult CheckAgainst(const CheckArguments& arguments, const Baseline& baseline, bool is_first,
                           const CheckOptions& options) {
  ProjectCheck check;
  check.options = options;
  check.states = OpenStates(baseline, options.project);
  check.files = SelectFiles(arguments.inputs.paths, options.project, check.states);
  if (is_first) WarnOfRepeated(check.files.repeated);
  RefuseOverlaps(ShownFiles(check.files, check.states), arguments.report.output, arguments.report.log);
  check.allow_new = arguments.allow_new;
  check.shows_sources = arguments.report.format->shows_sources;
  ProjectProgress progress;
  check.on_progress = std::ref(progress);
  return CheckProject(check);
}

CommandResult CheckAgainstAll(const CheckArguments& arguments, const std::vector<Baseline>& baselines,
                              const CheckOptions& options) {
  ProjectResult all;
  for (const Baseline& baseline : baselines) {
    const bool is_first = &baseline == &baselines.front();
    Append(CheckAgainst(arguments, baseline, is_first, options), baselines.size() > 1, all);
  }
  all.report.command = "check";
  return {.report = std::move(all.report), .project_sources = std::move(all.sources)};
}

bool NamesBaseline(const CheckArguments& arguments) { return !arguments.against.empty() || arguments.default_against; }

// What a call compares with, as the options or the project file say it; none if it compares two files.
std::vector<std::string> BaselineArguments(const CheckArguments& arguments, const Project* project) {
  const bool is_whole = arguments.inputs.paths.empty();
  const bool has_default = project != nullptr && !project->against.empty();
  if (!arguments.against.empty()) return arguments.against;
  if (has_default && (is_whole || arguments.default_against)) return BaselinesOf(*project);
  if (arguments.default_against) return {*arguments.default_against};
  return {};
}

// Two files, any number of paths with a baseline, or none.
void RequireFiles(const CheckArguments& arguments) {
  const std::vector<std::string>& paths = arguments.inputs.paths;
  if (!NamesBaseline(arguments)) {
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
  const std::vector<std::string> baselines = BaselineArguments(arguments, project ? &*project : nullptr);
  RequireBaseline(arguments, !baselines.empty());
  return RunReport(arguments.report, arguments.inputs.paths, [&](LPVESKCATEGORYINST log) {
    const CheckOptions options = arguments.OptionsFor(project ? &*project : nullptr, log);
    CommandResult result =
        baselines.empty() ? CheckPair(arguments, options) : CheckAgainstAll(arguments, ResolveBaselines(baselines), options);
    result.report.max_findings = arguments.limit.max_findings;
    if (project) ApplyWaivers(*project, is_whole && options.tables.empty(), result.report);
    return result;
  });
}

}  // namespace

const Command kCheckCommand{"check", "check a schema change", Declare<CheckArguments, Run>};

}  // namespace korvel::tool
