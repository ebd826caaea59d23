// Groups of arguments that several commands share. Each is a part of a command's options: AddTo declares it.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/input_error.h"
#include "base/limits.h"
#include "project/project.h"
#include "report/render/render.h"
#include "report/render/rule_doc_format.h"
#include "schema/file_below.h"
#include "schema/input.h"
#include "schema/settings.h"
#include "tool/cli/arguments.h"
#include "tool/io/output.h"
#include "vesk/log_category.h"

namespace korvel::tool {

// Schema files: paths, "git:REV:PATH", or "-" for standard input.
struct InputFiles {
  std::vector<std::string> paths;

  void AddPairTo(ArgumentList& arguments, const char* first, const char* second, bool second_is_required = true);
  void AddOneTo(ArgumentList& arguments, const char* name);
  void AddListTo(ArgumentList& arguments);
  // OLD and NEW, or the files of a project.
  void AddComparedTo(ArgumentList& arguments);
};

// --table
struct TableSelection {
  std::vector<std::string> tables;  // empty: all

  void AddTo(ArgumentList& arguments);
};

// --created-as; --type, --server-version, --whitelist, --list-num; --project, --no-project, --follow-symlinks
struct TableSettings {
  PartialSettings given;
  std::optional<std::string> project_file;
  bool no_project = false;
  bool follows_symlinks = false;

  void AddTo(ArgumentList& arguments);
  void AddCreatedAsTo(ArgumentList& arguments);
  void AddOthersTo(ArgumentList& arguments);
  void AddProjectTo(ArgumentList& arguments);
  void AddProjectFileTo(ArgumentList& arguments);  // without --no-project
  void AddFollowTo(ArgumentList& arguments);       // a part of the other two

  // The named project file, else the nearest one. Nullopt without one, and with --no-project. Throws InputError.
  std::optional<Project> ReadProject() const;
  // Whether nested project files take part: unless the call names a project file, or none.
  bool SearchesProjects() const { return !no_project && !project_file; }
  // To files that the call does not name.
  Links links() const { return follows_symlinks ? Links::kFollow : Links::kRefuse; }
};

// --max-findings
struct FindingLimit {
  std::size_t max_findings = kMaxFindings;

  void AddTo(ArgumentList& arguments);
};

// --strict-waivers
void AddStrictWaivers(ArgumentList& arguments, bool& is_strict);

// --fail-on
struct FailOn {
  std::optional<bool> warnings;  // whether warnings fail the call; absent: as the project file says

  void AddTo(ArgumentList& arguments);

  // `project` may be null.
  bool Warnings(const Project* project) const;
};

// --output
struct OutputOption {
  std::optional<std::string> file = {};  // absent: standard output
  bool is_required = false;
  bool is_report = false;            // a failing call discards the result of an earlier call: see DiscardFile
  mutable bool is_complete = false;  // the result was written
  mutable bool is_needed = false;    // the call needs the old file: nothing may be written there, not even that the call failed
  const char* option = "-o";         // as messages name it
  const char* remark = "";           // in the help, behind the description

  void AddTo(ArgumentList& arguments);

  // Writes the result of a command. Throws InputError if it would replace a project file; std::runtime_error.
  void Write(const std::string& text) const;
  void Write(const Producer& produce) const;
  // Writes the report of a call that failed, unless it is text for people on standard output, whom the messages on standard
  // error tell the same. Discards the file of an earlier call otherwise. Does not throw.
  void WriteFailure(const Failure& failure, bool is_for_people, const std::function<std::string()>& render) const;
  // Keeps the file of an earlier call from passing for the result of this one. Does not throw.
  void Discard(const Failure& failure) const;
};

// Files that a call writes.
using Outputs = std::vector<const OutputOption*>;

// --report: the same report in further formats, each in a file of its own
struct ReportFiles {
  struct File {
    std::size_t format;  // its position in the list of formats
    OutputOption output;
  };
  std::deque<File> files = {};

  void AddTo(ArgumentList& arguments, std::span<const NamedCode> formats);

  void AppendTo(Outputs& outputs) const;
  // Writes the report of a call that failed to each file, as OutputOption::WriteFailure. Does not throw.
  void WriteFailure(const Failure& failure, const std::function<std::string(std::size_t format)>& render) const;
};

// --log, --log-format, --log-level
struct LogOptions {
  bool is_open = false;  // --log was given
  vesk::LogSettings settings;

  void AddTo(ArgumentList& arguments);

  // Then nothing but the log should go there.
  bool IsOnStandardError() const { return is_open && !settings.file; }
};

// --color
struct ColorOption {
  enum class When { kAuto, kAlways, kNever } when = When::kAuto;

  void AddTo(ArgumentList& arguments);
  // Whether a result that goes there is colored: by default, on a terminal with colors, unless NO_COLOR is set.
  bool IsWanted(const OutputOption& output) const;
};

// --verbose, --quiet
struct DetailOption {
  bool is_verbose = false;
  bool is_quiet = false;

  void AddTo(ArgumentList& arguments);
  Detail detail() const { return is_quiet ? Detail::kQuiet : is_verbose ? Detail::kVerbose : Detail::kNormal; }
};

// --format of a report, --output, --report, --verbose, --quiet, --color, --log
struct ReportOptions {
  const Format* format = Formats().data();
  std::optional<std::string> path_prefix;  // see ServicePaths
  OutputOption output;
  ReportFiles files;
  DetailOption detail;
  ColorOption color;
  LogOptions log;

  void AddTo(ArgumentList& arguments);

  // Whether one of the requested formats has a property: &Format::shows_fixes.
  bool AnyFormat(bool Format::*property) const;
  Texts texts() const { return AnyFormat(&Format::shows_sources) ? Texts::kShown : Texts::kWhenNeeded; }
  Outputs AllOutputs() const;

  // Whether a report shows the changes of allowed tables, or their number.
  bool ShowsAllowedChanges() const { return detail.is_verbose || AnyFormat(&Format::shows_allowed_changes); }
  // Whether the report is text on standard output. If it would have nothing but faults, their messages on standard error are
  // enough.
  bool IsForPeople() const { return !output.file && format == Formats().data(); }

 private:
  void WriteFailure(const Failure& failure) const;
};

// The names of formats, each with its position as code.
template <class List, class Name>
std::vector<NamedCode> ChoicesOf(const List& formats, Name name) {
  std::vector<NamedCode> choices;
  for (const auto& format : formats) choices.push_back({name(format), static_cast<int>(choices.size())});
  return choices;
}

// --format text|json
struct TextOrJson {
  bool json = false;

  void AddTo(ArgumentList& arguments);
};

// --format of the pages about rules
struct PageFormat {
  const RuleDocFormat* format = &kRuleDocText;

  void AddTo(ArgumentList& arguments);
};

// The file that the words of a call name with -o, even if other words are wrong.
std::optional<std::string> FindOutput(const std::vector<std::string>& words);

// The files that they name with --report.
std::vector<std::string> FindReportFiles(const std::vector<std::string>& words);

// Whether the output file of a call may be one that it reads: a project file, a schema, or a file that it names a second time.
bool MayBeInput(const std::string& file, const std::vector<std::string>& words);

// Throws InputError if an output or the log would replace or change one of the files that are read, or another one of them.
void RefuseOverlaps(const std::vector<std::string>& inputs, const Outputs& outputs, const LogOptions& log = {});

// Throws UsageError if standard input is read twice.
void RequireOneStandardInput(const std::vector<std::string>& inputs);

// Both, for a command without a log.
void RequireDistinctFiles(const std::vector<std::string>& inputs, const OutputOption& output);

}  // namespace korvel::tool
