// Tested by tests/tool/diff_test.cpp and diff_project_test.cpp.
#include <algorithm>
#include <deque>
#include <utility>

#include "project/baseline.h"
#include "project/load_inputs.h"
#include "report/render/render.h"
#include "schema/selection.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/commands/project_pairs.h"
#include "tool/commands/run_check.h"
#include "tool/io/exit.h"
#include "vesk/closed_category.h"

namespace korvel::tool {
namespace {

struct DiffArguments {
  InputFiles inputs;
  TableSelection selection;
  TableSettings settings;  // only the project file
  std::vector<std::string> against;
  OutputOption output{.is_report = true};
  TextOrJson format;

  void AddTo(ArgumentList& arguments) {
    inputs.AddComparedTo(arguments);
    selection.AddTo(arguments);
    AddBaselines(arguments, against,
                 "list the changes of the project's schema files since a commit or a directory, as for 'check --against'; may be "
                 "repeated");
    settings.AddProjectTo(arguments);
    output.AddTo(arguments);
    format.AddTo(arguments);
  }
};

std::string DiffOfPair(const DiffArguments& arguments) {
  RequireDistinctFiles(arguments.inputs.paths, arguments.output);
  const std::vector<Input> inputs = LoadInputs(arguments.inputs.paths);
  const Selection selection = SelectTables({inputs[0], inputs[1]}, arguments.selection.tables);
  const Listing listing = ListChanges(inputs[0], inputs[1], selection.compared, selection.added);
  return arguments.format.json ? RenderDiffJson(listing) : RenderDiffText(listing);
}

CheckRequest RequestOf(const DiffArguments& arguments, const Project* project, LPVESKCATEGORYINST log) {
  std::vector<std::string> baselines = arguments.against;
  if (baselines.empty() && project != nullptr) baselines = BaselinesOf(*project);
  return {.command = "diff",
          .paths = arguments.inputs.paths,
          .baselines = std::move(baselines),
          .allow_new = true,
          .options = {.tables = arguments.selection.tables, .project = project, .log = log},
          .searches_projects = arguments.settings.SearchesProjects(),
          .links = arguments.settings.links(),
          .on_files = [&](const std::vector<std::string>& files) { RefuseOverlaps(files, {&arguments.output}); }};
}

// The changes of a file.
FileListing ListingOf(const ComparedFile& file, const FileInBoth& states, const Report& report) {
  using Kind = FileListing::Kind;
  std::vector<std::string> compared;
  std::vector<std::string> added;
  for (const TableResult& table : TablesOf(file, report)) {
    (table.status == Status::kNew ? added : compared).push_back(table.table);
  }
  return {.kind = file.is_deleted         ? Kind::kDeleted
                  : file.old_name.empty() ? Kind::kAdded
                                          : Kind::kChanged,
          .baseline = file.baseline,
          .listing = ListChanges(states.old_input, states.new_input, compared, added)};
}

// Comments and descriptions are no part of a schema.
bool HasChanges(const Listing& listing) {
  return !listing.library.empty() || std::ranges::any_of(listing.tables, [](const TableEdits& table) {
    return table.status != TableEdits::Status::kCompared || table.HasEdits();
  });
}

// The check finds the files that belong together; its verdict does not matter.
std::string DiffOfProject(const DiffArguments& arguments) {
  const std::optional<Project> project = arguments.settings.ReadProject();
  if (project) RefuseOverlaps({project->file}, {&arguments.output});
  vesk::ClosedCategory log;
  const CheckRequest request = RequestOf(arguments, project ? &*project : nullptr, log.handle());
  RequireBaseline(request);
  const CommandResult result = RunCheck(request);
  RequireCompleteState("diff", result.report);
  Git git;
  std::deque<FileInBoth> sources;
  std::vector<FileListing> listings;
  for (const ComparedFile& file : result.compared) {
    if (file.is_unchanged || file.table_count == 0) continue;
    FileListing listing = ListingOf(file, sources.emplace_back(LoadBoth(file, git)), result.report);
    if (HasChanges(listing.listing)) listings.push_back(std::move(listing));
  }
  return arguments.format.json ? RenderProjectDiffJson(result.report, listings) : RenderProjectDiffText(result.report, listings);
}

int Run(const DiffArguments& arguments) {
  RequireFiles(arguments.inputs.paths, !arguments.against.empty());
  const bool is_pair = arguments.against.empty() && arguments.inputs.paths.size() == 2;
  arguments.output.Write(is_pair ? DiffOfPair(arguments) : DiffOfProject(arguments));
  return kAllAllowed;
}

}  // namespace

const Command kDiffCommand{"diff", "list the changes between two schemas without checking them", Declare<DiffArguments, Run>};

}  // namespace korvel::tool
