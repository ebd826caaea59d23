// Tested by tests/tool/layout_test.cpp and layout_project_test.cpp.
#include <algorithm>
#include <deque>
#include <iterator>
#include <utility>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/load_inputs.h"
#include "report/render/render.h"
#include "schema/selection.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/commands/project_pairs.h"
#include "tool/commands/run_check.h"
#include "tool/commands/selected_inputs.h"
#include "tool/io/exit.h"
#include "vesk/closed_category.h"

namespace korvel::tool {
namespace {

struct LayoutArguments {
  InputFiles inputs;
  TableSelection selection;
  TableSettings settings;  // only the project file
  std::vector<std::string> against;
  OutputOption output{.is_report = true};
  TextOrJson format;

  void AddTo(ArgumentList& arguments) {
    arguments
        .AddPositional("FILES", "FILE", inputs.paths,
                       "a schema file or image, or OLD and NEW side by side, or directories; default: the project's files")
        .is_repeated = true;
    selection.AddTo(arguments);
    AddBaselines(
        arguments, against,
        "show the changed tables of the project's schema files since a commit or a directory side by side; may be repeated");
    settings.AddProjectTo(arguments);
    output.AddTo(arguments);
    format.AddTo(arguments);
  }

  std::string Render(const std::vector<LayoutRequest>& requests) const {
    return format.json ? RenderLayoutsJson(requests) : RenderLayoutsText(requests);
  }
};

LayoutRequest RequestFor(const Input& input, const std::vector<std::string>& tables) {
  RequireTables(input, tables);
  return {nullptr, &input, SelectTables({input, input}, tables).compared};
}

LayoutRequest RequestFor(const Input& before, const Input& after, const std::vector<std::string>& tables) {
  Selection selection = SelectTables({before, after}, tables);
  selection.compared.insert(selection.compared.end(), selection.added.begin(), selection.added.end());
  return {&before, &after, std::move(selection.compared)};
}

std::string LayoutOfFiles(const LayoutArguments& arguments) {
  RequireFiles(arguments.inputs.paths, false);
  RequireDistinctFiles(arguments.inputs.paths, arguments.output);
  const std::vector<Input> inputs = LoadInputs(arguments.inputs.paths);
  const std::vector<std::string>& tables = arguments.selection.tables;
  const LayoutRequest request =
      inputs.size() == 1 ? RequestFor(inputs.front(), tables) : RequestFor(inputs.front(), inputs.back(), tables);
  return arguments.format.json ? RenderLayoutJson(request) : RenderLayoutText(request);
}

void RequireTablesInAny(const std::vector<Input>& inputs, const std::vector<std::string>& names) {
  InputError missing;
  for (const std::string& name : names) {
    if (std::ranges::any_of(inputs, [&](const Input& input) { return input.HasMeta(name); })) continue;
    std::vector<std::string_view> known;
    for (const Input& input : inputs) known.insert(known.end(), input.tables.begin(), input.tables.end());
    missing.lines.push_back(ToolMessage("table " + Quote(name) + " is in no file" + DidYouMean(name, known)));
  }
  if (!missing.lines.empty()) throw missing;
}

// Each file by itself. With --table, those that have one of the tables.
std::vector<LayoutRequest> RequestsFor(const std::vector<Input>& inputs, const std::vector<std::string>& tables) {
  RequireTablesInAny(inputs, tables);
  std::vector<LayoutRequest> requests;
  for (const Input& input : inputs) {
    std::vector<std::string> present;
    std::ranges::copy_if(tables, std::back_inserter(present), [&](const std::string& name) { return input.HasMeta(name); });
    if (!present.empty()) present = SelectTables({input, input}, present).compared;
    if (tables.empty()) present.assign(input.tables.begin(), input.tables.end());
    if (tables.empty() || !present.empty()) requests.push_back({nullptr, &input, std::move(present)});
  }
  return requests;
}

std::string LayoutOfProject(const LayoutArguments& arguments, const Project* project) {
  const SelectedInputs selected = LoadSelected(arguments.inputs.paths, arguments.settings, project, arguments.output);
  return arguments.Render(RequestsFor(selected.inputs, arguments.selection.tables));
}

// The tables of a file that have changed.
std::vector<std::string> ChangedTables(const ComparedFile& file, const Report& report) {
  std::vector<std::string> changed;
  for (const TableResult& table : TablesOf(file, report)) {
    if (!table.is_unchanged.value_or(false)) changed.push_back(table.table);
  }
  return changed;
}

// The check finds the files and tables that changed; its verdict does not matter.
std::string LayoutOfChanges(const LayoutArguments& arguments, const Project* project) {
  vesk::ClosedCategory log;
  const CommandResult result =
      RunCheck({.command = "layout",
                .paths = arguments.inputs.paths,
                .baselines = arguments.against,
                .allow_new = true,
                .options = {.tables = arguments.selection.tables, .project = project, .log = log.handle()},
                .searches_projects = arguments.settings.SearchesProjects(),
                .links = arguments.settings.links(),
                .on_files = [&](const std::vector<std::string>& files) { RefuseOverlaps(files, {&arguments.output}); }});
  RequireCompleteState("layout", result.report);
  Git git;
  std::deque<FileInBoth> sources;
  std::vector<LayoutRequest> requests;
  for (const ComparedFile& file : result.compared) {
    std::vector<std::string> tables = ChangedTables(file, result.report);
    if (tables.empty()) continue;
    const FileInBoth& states = sources.emplace_back(LoadBoth(file, git));
    requests.push_back({&states.old_input, &states.new_input, std::move(tables)});
  }
  if (requests.empty()) PrintErrors({ToolMessage("no table has changed")});
  return arguments.Render(requests);
}

std::string LayoutOf(const LayoutArguments& arguments) {
  if (arguments.against.empty() && !SelectsFiles(arguments.inputs.paths)) return LayoutOfFiles(arguments);
  const std::optional<Project> project = arguments.settings.ReadProject();
  if (project) RefuseOverlaps({project->file}, {&arguments.output});
  const Project* const of_call = project ? &*project : nullptr;
  return arguments.against.empty() ? LayoutOfProject(arguments, of_call) : LayoutOfChanges(arguments, of_call);
}

int Run(const LayoutArguments& arguments) {
  arguments.output.Write(LayoutOf(arguments));
  return kAllAllowed;
}

}  // namespace

const Command kLayoutCommand{"layout", "show the record layout: offsets and sizes", Declare<LayoutArguments, Run>};

}  // namespace korvel::tool
