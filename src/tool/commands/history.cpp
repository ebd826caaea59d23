// Tested by tests/tool/history_test.cpp.
#include <unistd.h>

#include "base/file_descriptor.h"
#include "base/input_error.h"
#include "project/check_history.h"
#include "report/render/render.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/io/exit.h"
#include "vesk/closed_category.h"

namespace korvel::tool {
namespace {

struct HistoryArguments {
  InputFiles inputs;
  TableSelection selection;
  TableSettings settings;
  FindingLimit limit;
  FailOn fail_on;
  bool uses_git = false;
  OutputOption output{.is_report = true};
  TextOrJson format;

  void AddTo(ArgumentList& arguments) {
    inputs.AddListTo(arguments, "VERSION");
    selection.AddTo(arguments);
    settings.AddTo(arguments);
    settings.AddProjectTo(arguments);
    limit.AddTo(arguments);
    fail_on.AddTo(arguments);
    arguments.AddFlag("--git", uses_git, "check all commits that changed the file VERSION");
    output.AddTo(arguments);
    format.AddTo(arguments);
  }
};

// With --git, the path stands for the commits that changed its file.
std::vector<std::string> PathsOf(const HistoryArguments& arguments) {
  if (!arguments.uses_git) return arguments.inputs.paths;
  GitVersions versions = VersionsInGit(arguments.inputs.paths.front());
  if (versions.is_shallow) {
    const std::string note = ToolMessage("this clone is shallow: versions before its oldest commit are missing") + "\n";
    static_cast<void>(WriteAll(STDERR_FILENO, note));
  }
  return std::move(versions.paths);
}

int Run(const HistoryArguments& arguments) {
  const std::optional<Project> project = arguments.settings.ReadProject();
  RequireDistinctFiles(arguments.inputs.paths, arguments.output);
  const std::size_t count = arguments.inputs.paths.size();
  if (arguments.uses_git && count != 1) throw UsageError{"--git requires exactly one path"};
  if (!arguments.uses_git && count < 2) throw UsageError{"at least two versions are required"};
  const std::vector<std::string> paths = PathsOf(arguments);
  vesk::ClosedCategory log;
  const History history = CheckHistory(paths, {.tables = arguments.selection.tables,
                                               .given = arguments.settings.given,
                                               .project = project ? &*project : nullptr,
                                               .max_findings = arguments.limit.max_findings,
                                               .log = log.handle()});
  arguments.output.Write(arguments.format.json ? RenderHistoryJson(history)
                                               : RenderHistoryText(history, arguments.output.CanColor()));
  const bool fails_on_warnings = arguments.fail_on.Warnings(project ? &*project : nullptr);
  const bool fails = history.Refused() || (fails_on_warnings && history.Count(Level::kWarning) > 0);
  return fails ? kSomeRefused : kAllAllowed;
}

}  // namespace

const Command kHistoryCommand{"history", "check every step between several versions, and each version against the newest",
                              Declare<HistoryArguments, Run>};

}  // namespace korvel::tool
