// Tested by tests/tool/usage_test.cpp and settings_test.cpp.
#include "tool/cli/option_groups.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "base/limits.h"
#include "project/found_project.h"
#include "schema/setting_keys.h"
#include "schema/setting_values.h"
#include "tool/io/output.h"

namespace korvel::tool {
namespace {

constexpr char kInput[] = "schema file or image, or '-' for standard input";

constexpr NamedCode kLogFormats[] = {{"text", static_cast<int>(vesk::LineFormat::kText)},
                                     {"json", static_cast<int>(vesk::LineFormat::kJson)}};
constexpr NamedCode kLogLevels[] = {{"error", VESK_PRIORITY_ERROR}, {"warn", VESK_PRIORITY_WARN}, {"info", VESK_PRIORITY_INFO}};
constexpr NamedCode kColors[] = {{"auto", static_cast<int>(ColorOption::When::kAuto)},
                                 {"always", static_cast<int>(ColorOption::When::kAlways)},
                                 {"never", static_cast<int>(ColorOption::When::kNever)}};
constexpr NamedCode kTextOrJson[] = {{"text", 0}, {"json", 1}};

std::string FailureReport(const ReportOptions& options, const Failure& failure, const Format& format, bool color) {
  Report report;
  report.command = failure.command;
  report.faults = FaultsOfCall(*failure.error);
  report.path_prefix = options.path_prefix;
  report.detail = options.detail.detail();
  return format.Render(report, color);
}

}  // namespace

void InputFiles::AddPairTo(ArgumentList& arguments, const char* first, const char* second, bool second_is_required) {
  arguments.AddPositional(first, "FILE", paths, kInput).is_required = true;
  arguments.AddPositional(second, "FILE", paths, kInput).is_required = second_is_required;
}

void InputFiles::AddOneTo(ArgumentList& arguments, const char* name) {
  arguments.AddPositional(name, "FILE", paths, kInput).is_required = true;
}

void InputFiles::AddListTo(ArgumentList& arguments) {
  arguments
      .AddPositional("FILES", "FILE", paths,
                     "schema files, images and directories, or '-' for standard input; default: the project's files")
      .is_repeated = true;
}

void InputFiles::AddComparedTo(ArgumentList& arguments) {
  arguments.AddPositional("FILES", "FILE", paths, "OLD and NEW, schema files or images; with --against, files and directories")
      .is_repeated = true;
}

void TableSelection::AddTo(ArgumentList& arguments) {
  const auto set = [this](const std::string& table) {
    tables.push_back(table);
    return std::string();
  };
  arguments.Add({.names = "--table",
                 .value = "NAME",
                 .description = "use only this table; may be repeated; default: all tables",
                 .set = set,
                 .is_repeated = true});
}

void TableSettings::AddTo(ArgumentList& arguments) {
  AddCreatedAsTo(arguments);
  AddOthersTo(arguments);
}

void TableSettings::AddCreatedAsTo(ArgumentList& arguments) {
  arguments.AddChoice(
      "--created-as", kProtocols, [this](int code) { given.created_as = code; },
      "protocol the table was created in; default: from the first schema, else qmx");
}

void TableSettings::AddOthersTo(ArgumentList& arguments) {
  arguments.AddChoice(
      "--type", kTableTypes, [this](int code) { given.type = code; },
      "type of the table; default: from the old schema's attributes, else generic");
  arguments.Add({.names = "--server-version",
                 .value = "VERSION",
                 .description = "oldest server that runs the table; without it, field lengths are not checked",
                 .set = [this](const std::string& value) { return SetSetting(given, "server-version", value); }});
  arguments.AddText("--whitelist", "A;B", given.whitelist, "fields that may exceed the length limit, separated by ';'");
  arguments.Add({.names = "--list-num",
                 .value = "N",
                 .description = "list length on the server; default: from the old schema's attributes, else 0",
                 .set = [this](const std::string& value) { return SetSetting(given, "list-num", value); }});
}

void TableSettings::AddProjectFileTo(ArgumentList& arguments) {
  arguments.AddText("--project", "FILE", project_file,
                    "project file; default: the nearest korvelcheck.toml in this directory or above");
  AddFollowTo(arguments);
}

void TableSettings::AddFollowTo(ArgumentList& arguments) {
  arguments.AddFlag("--follow-symlinks", follows_symlinks, "follow symbolic links to files of the project");
}

void TableSettings::AddProjectTo(ArgumentList& arguments) {
  AddProjectFileTo(arguments);
  arguments.AddFlag("--no-project", no_project, "use no project file").excludes = "--project";
}

std::optional<Project> TableSettings::ReadProject() const {
  if (no_project) return std::nullopt;
  if (project_file) return korvel::ReadProject(*project_file);
  const std::optional<std::string> path = FindProjectFile();
  if (!path) return std::nullopt;
  return ParseProject(*path, std::string(ReadFoundProject("", *path, *path, links()).View()));
}

void FindingLimit::AddTo(ArgumentList& arguments) {
  const auto set = [this](const std::string& value) -> std::string {
    const std::optional<std::size_t> count = ParseMaxFindings(value);
    if (!count) return kAllowedMaxFindings;
    max_findings = *count;
    return "";
  };
  arguments.Add({.names = "--max-findings",
                 .value = "N",
                 .description = "list at most N findings; default: " + std::to_string(kMaxFindings),
                 .set = set});
}

void AddStrictWaivers(ArgumentList& arguments, bool& is_strict) {
  arguments.AddFlag("--strict-waivers", is_strict, "fail if a waiver of the project file is unused or has expired");
}

void FailOn::AddTo(ArgumentList& arguments) {
  arguments.AddChoice(
      "--fail-on", kFailOn, [this](int code) { warnings = code == kFailOnWarning; },
      "what makes the exit code 1: refusals only, or warnings as well; default: from the project file, else refused");
}

bool FailOn::Warnings(const Project* project) const {
  return warnings.value_or(project != nullptr && project->fails_on_warnings);
}

void OutputOption::AddTo(ArgumentList& arguments) {
  const auto set = [this](const std::string& path) {
    file.reset();
    if (path != "-") file = path;
    return std::string(path.empty() ? "a file, or '-' for standard output" : "");
  };
  arguments.Add({.names = "-o,--output",
                 .value = "FILE",
                 .description = std::string("write to FILE atomically; '-'") + (is_required ? "" : ", the default,") +
                                " is standard output" + remark,
                 .set = set,
                 .is_required = is_required});
  if (is_report) arguments.OnFailure([this](const Failure& failure) { Discard(failure); });
}

void OutputOption::Write(const std::string& text) const { Write(AsProducer(text)); }

void OutputOption::Write(const Producer& produce) const {
  RefuseOverlaps({}, {this});
  file ? WriteFile(*file, produce) : WriteStandardOutput(produce);
  is_complete = true;
}

void OutputOption::WriteFailure(const Failure& failure, bool is_for_people, const std::function<std::string()>& render) const {
  const bool is_wanted = failure.error != nullptr && !is_complete && !is_for_people;
  const bool is_safe = !file || (!is_needed && !MayBeInput(*file, failure.words));
  try {
    if (is_wanted && is_safe) Write(AsProducer(render()));
  } catch (const std::exception&) {
    // The report cannot be written either.
  }
  Discard(failure);
}

void OutputOption::Discard(const Failure& failure) const {
  try {
    const std::string path = file ? *file : FindOutput(failure.words).value_or("-");
    if (!is_complete && !is_needed && path != "-" && !MayBeInput(path, failure.words)) DiscardFile(path);
  } catch (const std::exception&) {
    // Out of memory: the call ends with its own error.
  }
}

void LogOptions::AddTo(ArgumentList& arguments) {
  settings.max_priority = VESK_PRIORITY_INFO;
  settings.max_bytes = kMaxLogBytes;
  const auto set = [this](const std::string& path) {
    is_open = true;
    if (path != "-") settings.file = path;
    return std::string();
  };
  arguments.Add(
      {.names = "--log", .value = "FILE", .description = "append the checker's log to FILE; '-' is standard error", .set = set});
  const auto set_format = [this](int code) { settings.format = static_cast<vesk::LineFormat>(code); };
  arguments.AddChoice("--log-format", kLogFormats, set_format, "log format, with --log; default: text").needs = "--log";
  const auto set_level = [this](int code) { settings.max_priority = code; };
  arguments.AddChoice("--log-level", kLogLevels, set_level, "minimum log level, with --log; default: info").needs = "--log";
}

void ColorOption::AddTo(ArgumentList& arguments) {
  arguments.AddChoice(
      "--color", kColors, [this](int code) { when = static_cast<When>(code); },
      "in text: use colors; default: auto, on a terminal unless NO_COLOR is set");
}

bool ColorOption::IsWanted(const OutputOption& output) const {
  return when == When::kAlways || (when == When::kAuto && !output.file && CanColor());
}

void DetailOption::AddTo(ArgumentList& arguments) {
  arguments.AddFlag("-v,--verbose", is_verbose, "in text: list allowed tables and moved files, too");
  arguments.AddFlag("-q,--quiet", is_quiet, "in text: print only the verdict and what fails the call").excludes = "--verbose";
}

void ReportOptions::AddTo(ArgumentList& arguments) {
  output.is_report = true;
  output.AddTo(arguments);
  arguments.OnFailure([this](const Failure& failure) { WriteFailure(failure); });
  static const std::vector<NamedCode> choices = ChoicesOf(Formats(), [](const Format& one) { return one.name; });
  arguments.AddChoice(
      "--format", choices, [this](int code) { format = &Formats()[static_cast<std::size_t>(code)]; },
      "output format; default: text");
  files.AddTo(arguments, choices);
  arguments.AddText(
      "--path-prefix", "TEXT", path_prefix,
      "put TEXT in front of the paths in sarif, github, gitlab, junit, markdown and reviews; default: what leads from the "
      "top of the repository to the working directory");
  detail.AddTo(arguments);
  color.AddTo(arguments);
  log.AddTo(arguments);
}

void ReportOptions::WriteFailure(const Failure& failure) const {
  output.WriteFailure(failure, IsForPeople(), [&] { return FailureReport(*this, failure, *format, color.IsWanted(output)); });
  files.WriteFailure(failure, [&](std::size_t one) { return FailureReport(*this, failure, Formats()[one], false); });
}

bool ReportOptions::AnyFormat(bool Format::*property) const {
  return format->*property ||
         std::ranges::any_of(files.files, [&](const ReportFiles::File& file) { return Formats()[file.format].*property; });
}

Outputs ReportOptions::AllOutputs() const {
  Outputs outputs{&output};
  files.AppendTo(outputs);
  return outputs;
}

void TextOrJson::AddTo(ArgumentList& arguments) {
  arguments.AddChoice(
      "--format", kTextOrJson, [this](int code) { json = code == 1; }, "output format; default: text");
}

void PageFormat::AddTo(ArgumentList& arguments) {
  static const std::vector<NamedCode> choices = ChoicesOf(RuleDocFormats(), [](const RuleDocFormat* one) { return one->name; });
  arguments.AddChoice(
      "--format", choices, [this](int code) { format = RuleDocFormats()[static_cast<std::size_t>(code)]; },
      "output format; default: text");
}

void RequireOneStandardInput(const std::vector<std::string>& inputs) {
  if (std::ranges::count(inputs, "-") > 1) throw UsageError{"'-' (standard input) is given twice; allowed: once"};
}

void RequireDistinctFiles(const std::vector<std::string>& inputs, const OutputOption& output) {
  RequireOneStandardInput(inputs);
  RefuseOverlaps(inputs, {&output});
}

}  // namespace korvel::tool
