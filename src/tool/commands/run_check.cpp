// Tested by tests/tool/check_test.cpp and against_test.cpp.
#include "tool/commands/run_check.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/input_error.h"
#include "base/text.h"
#include "project/check_project.h"
#include "project/input_projects.h"
#include "tool/commands/pair_notes.h"
#include "tool/commands/project_pairs.h"
#include "tool/io/exit.h"
#include "tool/io/progress.h"

namespace korvel::tool {
namespace {

CommandResult CheckPair(const CheckRequest& request, ProjectSet& projects) {
  CommandResult result = LoadForReport(request.command, kOldAndNew, request.paths, request.texts);
  const std::string& path = request.paths.back();
  InputProject nearest = InputProjects(projects, request.links).Of(path);
  result.inputs.back().path_in_project = std::move(nearest.path_in_project);
  if (request.on_files) request.on_files(projects.Files());
  CheckOptions options = request.options;
  options.project = nearest.project;
  const Pair pair = PairOf(result.report);
  if (request.prints_pair_notes) PrintPairNotes(request.command, pair, request.paths);
  CheckWantedTables(result.report, pair, options);
  for (TableResult& table : result.report.tables) table.project = nearest.position;
  result.report.projects = ListOf(projects, {{nearest.position, path}});
  // An image has no text to fix.
  if (pair.second.IsFromText()) result.report.fix_command = request.fix_command;
  return result;
}

void WarnOfRepeated(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) {
    PrintErrors({ToolMessage(OneLine(path) + " is given twice; it is compared only once")});
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

ProjectResult CheckAgainst(const CheckRequest& request, ProjectSet& projects, const Baseline& baseline, bool is_first) {
  ProjectCheck check;
  check.options = request.options;
  check.states = OpenStates(baseline, projects, request.links);
  check.files = SelectFiles(request.paths, check.states);
  if (is_first) WarnOfRepeated(check.files.repeated);
  if (request.on_files) {
    request.on_files(ShownFiles(check.files, check.states));
    request.on_files(projects.Files());
  }
  check.allow_new = request.allow_new;
  check.shows_sources = request.texts == Texts::kShown;
  ProjectProgress progress;
  check.on_progress = std::ref(progress);
  return CheckProject(check);
}

// A branch that is behind seems to remove what its base has gained. Whether it may be so.
bool IsBehind(const Baseline& baseline, const Report& report) {
  const auto is_refused = [](const TableResult& table) { return table.status == Status::kRefused; };
  return std::ranges::any_of(report.tables, is_refused) && IsAheadOfHead(baseline);
}

// Whether a refused file is a symbolic link, for which `suggest --write` fails as a whole.
bool IsRefusedLink(const ComparedFile& file, const Report& report) {
  std::error_code ignored;
  const auto is_refused = [](const TableResult& table) { return table.status == Status::kRefused; };
  return !file.is_deleted && std::ranges::any_of(TablesOf(file, report), is_refused) &&
         std::filesystem::is_symlink(PathOnDisk(file.new_name), ignored);
}

void PrintBehindNote(const Baseline& baseline) {
  PrintErrors({ToolMessage("note: " + OneLine(baseline.name) +
                           " has commits that are not in HEAD, and this branch seems to undo them; to compare with the merge "
                           "base: korvelcheck check --against " +
                           ShellWord(baseline.name + "..."))});
}

CommandResult CheckAgainstAll(const CheckRequest& request, ProjectSet& projects) {
  const std::vector<Baseline> baselines = ResolveBaselines(request.baselines);
  ProjectResult all;
  const bool looks_behind = request.prints_pair_notes || !request.fix_command.empty();
  bool is_behind = false;
  for (const Baseline& baseline : baselines) {
    const bool is_first = &baseline == &baselines.front();
    ProjectResult result = CheckAgainst(request, projects, baseline, is_first);
    if (looks_behind && IsBehind(baseline, result.report)) {
      is_behind = true;
      if (request.prints_pair_notes) PrintBehindNote(baseline);
    }
    Append(std::move(result), baselines.size() > 1, all);
  }
  all.report.command = request.command;
  const bool has_link =
      std::ranges::any_of(all.compared, [&](const ComparedFile& file) { return IsRefusedLink(file, all.report); });
  if (!is_behind && !has_link) all.report.fix_command = request.fix_command;
  all.report.projects = ListOf(projects, std::move(all.judged));
  return {.report = std::move(all.report), .project_sources = std::move(all.sources), .compared = std::move(all.compared)};
}

// An option that names baselines.
void AddRepeated(ArgumentList& arguments, const char* name, std::vector<std::string>& baselines, std::string description) {
  const auto add = [&baselines](const std::string& baseline) {
    baselines.push_back(baseline);
    return std::string();
  };
  arguments.Add({.names = name, .value = "git:REV|DIR", .description = std::move(description), .set = add, .is_repeated = true});
}

}  // namespace

void AddBaselines(ArgumentList& arguments, std::vector<std::string>& against, std::string description) {
  AddRepeated(arguments, "--against", against, std::move(description));
}

void BaselineOption::AddTo(ArgumentList& arguments) {
  AddBaselines(arguments, against,
               "compare the project's schema files with a commit or a directory; also git:REV... (merge base with "
               "HEAD) and git-tag:PATTERN (newest tag); may be repeated");
  arguments.AddText("--default-against", "git:REV|DIR", default_against, "the same, unless the project file has 'against'")
      .excludes = "--against";
  AddRepeated(arguments, "--also-against", also_against,
              "the same, in addition to --against or to 'against' of the project file; may be repeated");
}

std::vector<std::string> BaselineOption::For(const std::vector<std::string>& paths, const Project* project) const {
  const bool has_default = project != nullptr && !project->against.empty();
  std::vector<std::string> baselines = against;
  if (baselines.empty() && has_default && (paths.size() < 2 || IsGiven())) baselines = BaselinesOf(*project);
  if (baselines.empty() && default_against) baselines.push_back(*default_against);
  baselines.insert(baselines.end(), also_against.begin(), also_against.end());
  return baselines;
}

void RequireFiles(const std::vector<std::string>& paths, bool has_baseline) {
  if (!has_baseline && paths.size() > 2) throw UsageError{"unexpected argument " + Quote(paths[2])};
  RequireOneStandardInput(paths);
}

void RequireBaseline(const CheckRequest& request) {
  if (request.HasBaseline() || request.paths.size() == 2) return;
  throw UsageError{std::string(request.paths.empty() ? "OLD and NEW are" : "NEW is") + " required, or --against"};
}

CommandResult RunCheck(const CheckRequest& request) {
  const auto projects = std::make_shared<ProjectSet>(request.options.project, request.searches_projects);
  CommandResult result = request.HasBaseline() ? CheckAgainstAll(request, *projects) : CheckPair(request, *projects);
  if (!request.reports_faults && !result.report.faults.empty()) throw ErrorOf(std::move(result.report.faults));
  result.report.max_findings = request.options.max_findings;
  result.projects = projects;
  return result;
}

}  // namespace korvel::tool
