// Tested by tests/tool/suggest_test.cpp and suggest_project_test.cpp.
#include <algorithm>
#include <utility>

#include "base/alignment.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/baseline.h"
#include "project/project.h"
#include "schema/input.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/commands/run_check.h"
#include "tool/commands/suggest_files.h"
#include "tool/commands/suggest_project.h"
#include "tool/io/blocked_signals.h"
#include "tool/io/exit.h"
#include "vesk/closed_category.h"

namespace korvel::tool {
namespace {

struct SuggestArguments {
  InputFiles inputs;
  TableSelection selection;
  TableSettings settings;
  std::vector<std::string> against;
  OutputOption output;
  bool whole_file = false;
  bool is_diff = false;  // the default
  bool writes = false;
  bool is_dry_run = false;

  void AddTo(ArgumentList& arguments) {
    inputs.AddComparedTo(arguments);
    selection.AddTo(arguments);
    settings.AddTo(arguments);
    AddBaselines(arguments, against,
                 "fix the project's schema files, compared with a commit or a directory as 'check --against' does; may be "
                 "repeated");
    settings.AddProjectTo(arguments);
    output.AddTo(arguments);
    arguments.AddFlag("--file", whole_file, "print the whole fixed schema file");
    arguments.AddFlag("--diff", is_diff, "print a unified diff to the fixed version (default)").excludes = "--file";
    arguments.AddFlag("--write", writes, "replace NEW, or the files of the project, by the fixed version").excludes = "--file";
    arguments.AddFlag("--dry-run", is_dry_run, "with --write: print the diff and write nothing").needs = "--write";
  }
};

// An image is written as a schema file in any case.
void PrintNothingToFix(const FixedFiles& fixed) {
  const std::vector<FixedFile>& files = fixed.files;
  if (!files.empty() && !files.front().input.text) return;
  const std::string name = files.empty() ? "" : OneLine(files.front().input.name) + ": ";
  PrintErrors(
      {ToolMessage(name + "nothing to fix: every table that was compared is allowed" + (fixed.has_waived ? " or waived" : ""))});
}

void RequireText(const Input& input, const SuggestArguments& arguments) {
  if (input.text || arguments.whole_file) return;
  const bool is_in_place = arguments.writes;
  throw InputError{
      {ToolMessage(OneLine(input.name) + (is_in_place ? " is an image; allowed with --write: a schema file"
                                                      : " is an image, which has no lines to compare; allowed: --file"))}};
}

std::string ResultFor(const std::vector<FixedFile>& files, const SuggestArguments& arguments) {
  if (arguments.whole_file) return files.front().suggestion.text;
  if (arguments.writes) FilesToReplace(files);  // a dry run fails as the call would
  std::string diffs;
  for (const FixedFile& file : files) {
    const std::string name = PathText(file.input.name);
    diffs += UnifiedDiff(name, file.input.text->Bytes(), name, file.suggestion.text);
  }
  return diffs;
}

void WriteResult(const std::vector<FixedFile>& files, const SuggestArguments& arguments) {
  if (!arguments.writes || arguments.is_dry_run) return arguments.output.Write(ResultFor(files, arguments));
  const BlockedSignals signals;  // until the files are listed
  arguments.output.Write(WriteInPlace(files, signals));
}

// What to compare the files of the project with; none for OLD and NEW.
std::vector<std::string> BaselinesFor(const SuggestArguments& arguments, const Project* project) {
  if (!arguments.against.empty()) return arguments.against;
  return project == nullptr || arguments.inputs.paths.size() > 1 ? std::vector<std::string>() : BaselinesOf(*project);
}

FixedFiles FixFiles(const SuggestArguments& arguments, const Project* project, NothingAllowed& reasons) {
  vesk::ClosedCategory log;
  std::vector<std::string> baselines = BaselinesFor(arguments, project);
  const bool is_pair = baselines.empty();
  const CheckRequest request{
      .command = "suggest",
      .paths = arguments.inputs.paths,
      .baselines = std::move(baselines),
      .options = {.tables = arguments.selection.tables,
                  .given = arguments.settings.given,
                  .project = project,
                  .log = log.handle()},
      .searches_projects = arguments.settings.SearchesProjects(),
      .links = arguments.settings.links(),
      .on_files = [&](const std::vector<std::string>& files) { RefuseOverlaps(files, {&arguments.output}); },
      .prints_pair_notes = is_pair};
  RequireBaseline(request);
  if (request.HasBaseline()) {
    if (arguments.whole_file) throw UsageError{"--file requires OLD and NEW"};
    return FixProject(request, reasons);
  }
  RequireDistinctFiles(request.paths, arguments.output);
  if (arguments.writes) RequireReplaceable(request.paths.back());
  return FixPair(
      request, [&](const Input& new_input) { RequireText(new_input, arguments); }, reasons);
}

int Run(const SuggestArguments& arguments) {
  RequireFiles(arguments.inputs.paths, !arguments.against.empty());
  const std::optional<Project> project = arguments.settings.ReadProject();
  if (project) RefuseOverlaps({project->file}, {&arguments.output});
  NothingAllowed reasons;
  const FixedFiles fixed = FixFiles(arguments, project ? &*project : nullptr, reasons);
  const std::vector<FixedFile>& files = fixed.files;
  const bool is_changed = std::ranges::any_of(files, [](const FixedFile& file) { return file.suggestion.is_changed; });
  // A table that stays refused, often for a reason of its own, does not withhold the suggestions for the others.
  if (!is_changed && !reasons.lines.empty()) throw reasons;
  if (!is_changed && reasons.lines.empty()) PrintNothingToFix(fixed);
  WriteResult(files, arguments);
  if (!reasons.lines.empty()) throw reasons;
  return kAllAllowed;
}

}  // namespace

const Command kSuggestCommand{"suggest", "print a fixed version of NEW, as a patch or a whole file, or write it",
                              Declare<SuggestArguments, Run>};

}  // namespace korvel::tool
