// Tested by tests/tool/history_test.cpp and history_git_test.cpp.
#include <algorithm>
#include <utility>

#include "base/input_error.h"
#include "base/text.h"
#include "project/check_history.h"
#include "report/render/render.h"
#include "tool/cli/command.h"
#include "tool/cli/option_groups.h"
#include "tool/commands/selected_inputs.h"
#include "tool/io/exit.h"
#include "vesk/closed_category.h"

namespace korvel::tool {
namespace {

struct HistoryArguments {
  InputFiles inputs;
  TableSelection selection;
  TableSettings settings;
  bool strict_waivers = false;
  FindingLimit limit;
  FailOn fail_on;
  bool uses_git = false;
  std::optional<std::string> from;
  std::optional<std::string> tags;
  OutputOption output{.is_report = true};
  ReportFiles files;
  DetailOption detail;
  ColorOption color;
  std::optional<std::string> path_prefix;  // see ServicePaths
  const HistoryFormat* format = HistoryFormats().data();

  void AddTo(ArgumentList& arguments) {
    arguments
        .AddPositional("VERSIONS", "FILE", inputs.paths,
                       "versions of a schema, oldest first; or directories; with --git, also files; default: the project's files")
        .is_repeated = true;
    selection.AddTo(arguments);
    settings.AddTo(arguments);
    settings.AddProjectTo(arguments);
    AddStrictWaivers(arguments, strict_waivers);
    limit.AddTo(arguments);
    fail_on.AddTo(arguments);
    arguments.AddFlag("--git", uses_git, "check the commits that changed these files, and uncommitted changes");
    arguments.AddText("--from", "REV", from, "with git: begin with the version of this commit");
    arguments.AddText("--tags", "PATTERN", tags, "with git: the versions are the tags that match, in version order").excludes =
        "--from";
    output.AddTo(arguments);
    arguments.OnFailure([this](const Failure& failure) {
      output.WriteFailure(failure, IsForPeople(), [&] { return FailureReport(*failure.error, *format, color.IsWanted(output)); });
      files.WriteFailure(failure, [&](std::size_t one) { return FailureReport(*failure.error, HistoryFormats()[one], false); });
    });
    AddFormatTo(arguments);
    detail.AddTo(arguments);
    color.AddTo(arguments);
  }

  void AddFormatTo(ArgumentList& arguments) {
    static const auto choices = ChoicesOf(HistoryFormats(), [](const HistoryFormat& one) { return one.name; });
    arguments.AddChoice(
        "--format", choices, [this](int code) { format = &HistoryFormats()[static_cast<std::size_t>(code)]; },
        "output format; default: text");
    files.AddTo(arguments, choices);
    arguments.AddText("--path-prefix", "TEXT", path_prefix,
                      "put TEXT in front of the paths in sarif, github, gitlab, junit and markdown");
  }

  // Whether the result is text on standard output.
  bool IsForPeople() const { return !output.file && format == HistoryFormats().data(); }

  std::string FailureReport(const InputError& error, const HistoryFormat& one, bool is_colored) const {
    Histories failed;
    failed.faults = FaultsOfCall(error);
    failed.detail = detail.detail();
    std::string report;
    one.write(failed, path_prefix, is_colored, [&](std::string_view piece) { report += piece; });
    return report;
  }

  Outputs AllOutputs() const {
    Outputs outputs{&output};
    files.AppendTo(outputs);
    return outputs;
  }

  bool ShowsTexts() const {
    return format->shows_texts || std::ranges::any_of(files.files, [](const ReportFiles::File& file) {
             return HistoryFormats()[file.format].shows_texts;
           });
  }

  // A directory is no version of a schema.
  bool IsInGit() const { return uses_git || from || tags || SelectsFiles(inputs.paths); }
};

std::vector<FileVersions> VersionsOf(const HistoryArguments& arguments, const Project* project) {
  const std::vector<std::string>& paths = arguments.inputs.paths;
  if (arguments.IsInGit()) {
    return VersionsInGit({paths, arguments.from, arguments.tags, arguments.settings.links()}, project);
  }
  RequireOneStandardInput(paths);
  RefuseOverlaps(paths, arguments.AllOutputs());
  if (paths.size() < 2) {
    const bool is_committed = paths.front() != "-" && IsInHead(paths.front());
    throw UsageError{std::string("at least two versions are required") +
                     (is_committed ? "; --git checks the commits that changed the file" : "")};
  }
  return {NamedVersions(paths, project)};
}

// The files that are read from the disk.
std::vector<std::string> FilesOnDisk(const std::vector<FileVersions>& files) {
  std::vector<std::string> paths;
  for (const FileVersions& file : files) {
    for (const FileVersion& version : file.versions) {
      if (!version.in_git && !version.is_removed) paths.push_back(version.path_on_disk);
    }
  }
  return paths;
}

int Run(const HistoryArguments& arguments) {
  const std::optional<Project> project = arguments.settings.ReadProject();
  if (project) RefuseOverlaps({project->file}, arguments.AllOutputs());
  HistoryCheck check;
  check.files = VersionsOf(arguments, project ? &*project : nullptr);
  RefuseOverlaps(FilesOnDisk(check.files), arguments.AllOutputs());
  vesk::ClosedCategory log;
  check.options = {.tables = arguments.selection.tables,
                   .given = arguments.settings.given,
                   .project = project ? &*project : nullptr,
                   .max_findings = arguments.limit.max_findings,
                   .wants_allowed_changes = arguments.detail.is_verbose && arguments.format == HistoryFormats().data(),
                   .log = log.handle()};
  check.fails_on_warnings = arguments.fail_on.Warnings(check.options.project);
  check.strict_waivers = arguments.strict_waivers;
  check.allows_faults = arguments.IsInGit();
  check.keeps_texts = arguments.ShowsTexts();
  Histories histories = CheckHistories(check);
  histories.detail = arguments.detail.detail();
  for (const ReportFiles::File& file : arguments.files.files) {
    file.output.Write(
        [&](const TextSink& sink) { HistoryFormats()[file.format].write(histories, arguments.path_prefix, false, sink); });
  }
  arguments.output.Write([&](const TextSink& sink) {
    arguments.format->write(histories, arguments.path_prefix, arguments.color.IsWanted(arguments.output), sink);
  });
  // The other versions were checked, but the result is not complete.
  if (std::vector<InputFault> faults = histories.Faults(); !faults.empty()) throw ErrorOf(std::move(faults));
  return histories.Fails() ? kSomeRefused : kAllAllowed;
}

}  // namespace

const Command kHistoryCommand{"history", "check every step between several versions, and each version against the newest",
                              Declare<HistoryArguments, Run>};

}  // namespace korvel::tool
