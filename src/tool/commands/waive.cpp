// Tested by tests/tool/waiver_test.cpp.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <set>
#include <string_view>
#include <system_error>

#include "base/calendar.h"
#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/found_project.h"
#include "project/waiver_entry.h"
#include "project/waivers.h"
#include "tool/cli/command.h"
#include "tool/commands/finding_list.h"
#include "tool/commands/run_check.h"
#include "tool/io/directory_lock.h"
#include "tool/io/exit.h"
#include "tool/io/output.h"
#include "vesk/closed_category.h"

namespace korvel::tool {
namespace {

struct WaiveArguments {
  std::vector<std::string> words;  // fingerprints and files
  std::optional<std::string> reason;
  std::optional<std::string> until;
  bool is_wide = false;
  BaselineOption baseline;
  TableSettings settings;
  FindingLimit limit;
  OutputOption output;

  void AddTo(ArgumentList& arguments) {
    Argument& list = arguments.AddPositional("FINGERPRINT", "FILE", words,
                                             "fingerprints of findings, as shown in reports; then files, as for 'check'");
    list.is_required = true;
    list.is_repeated = true;
    arguments.AddText("--reason", "TEXT", reason, "reason for the waiver").is_required = true;
    arguments.AddText("--until", "DAY", until, "last day of the waiver, such as 2027-01-31").is_required = true;
    arguments.AddFlag("--wide", is_wide, "waive any change that the rule refuses there, not only this one");
    baseline.AddTo(arguments);
    settings.AddTo(arguments);
    arguments.AddText("--project", "FILE", settings.project_file,
                      "project file; default: the nearest korvelcheck.toml in this directory or above, else a new one");
    settings.AddFollowTo(arguments);
    limit.AddTo(arguments);
    output.AddTo(arguments);
  }
};

[[noreturn]] void Refuse(const std::string& what) { throw InputError{{ToolMessage("waive: " + what)}}; }

// --- Arguments ---

struct WaiveWords {
  std::vector<std::string> fingerprints;  // each once
  std::vector<std::string> files;
};

// A file whose name looks like a fingerprint can be given with "./" in front.
WaiveWords Split(const std::vector<std::string>& words) {
  WaiveWords split;
  for (const std::string& word : words) {
    const bool is_hexadecimal = word.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    std::error_code ignored;
    if (IsFingerprint(word)) {
      if (std::ranges::find(split.fingerprints, word) == split.fingerprints.end()) split.fingerprints.push_back(word);
    } else if (is_hexadecimal && !std::filesystem::exists(word, ignored)) {
      Refuse("fingerprint is " + Quote(word) + "; allowed: 16 hexadecimal digits, as shown in reports");
    } else {
      split.files.push_back(word);
    }
  }
  if (split.fingerprints.empty()) throw UsageError{"a fingerprint is required"};
  return split;
}

// --- The project file ---

std::string TextOf(const std::string& path, const TableSettings& settings) {
  return TextOfProject(path, settings.project_file.has_value(), settings.links());
}

// Reads the text before it is written: the reader of project files knows what a waiver is, and whether one can follow. The last
// `added` of its waivers are new.
void RequireWaivers(const std::string& path, const std::string& text, std::size_t before, std::size_t added) {
  Project project;
  try {
    project = ParseProject(path, text);
  } catch (const InputError&) {
    Refuse(OneLine(path) + " cannot take another waiver: 'waivers' is not a list of [[waivers]], or a text is not UTF-8");
  }
  if (project.waivers.size() != before + added) Refuse(OneLine(path) + " cannot take another waiver");
  const std::string today = Today();
  for (std::size_t i = before; i < project.waivers.size(); ++i) {
    const WaiverEntry& waiver = project.waivers[i];
    if (!waiver.fault.empty()) Refuse(waiver.fault);
    if (waiver.until < today) Refuse(waiver.until + " is in the past (today is " + today + ")");
  }
}

// --- Findings ---

// Names the findings that there are.
[[noreturn]] void RefuseUnknown(const std::vector<std::string>& unknown, Report& report) {
  const FindingList findings(report);
  InputError error;
  for (const std::string& fingerprint : unknown) {
    error.lines.push_back(ToolMessage("waive: no finding has the fingerprint " + Quote(fingerprint) +
                                      DidYouMean(fingerprint, findings.fingerprints())));
  }
  std::ranges::move(findings.Lines(), std::back_inserter(error.lines));
  error.lines.emplace_back("'korvelcheck history' prints the entries that waive its findings about reused ids.");
  throw error;
}

[[noreturn]] void RefuseWaived(const Project& project, const WaiverEntry& waiver, const std::string& fingerprint) {
  Refuse(OneLine(project.file) + ":" + std::to_string(waiver.location.line) + " already has a waiver for " + fingerprint +
         ", until " + waiver.until + "; change or remove it");
}

// A waiver of the other form is no obstacle: it may be meant to be replaced.
void RequireNotWaived(const Project& project, const std::vector<WaiverUse>& uses, const TableFinding& wanted, WaiverForm form) {
  for (const WaiverUse& use : uses) {
    const bool is_other = use.state == WaiverState::kMalformed || use.waiver->form != form;
    const auto is_wanted = [&](const TableFinding& one) { return one.finding == wanted.finding; };
    if (is_other || std::ranges::none_of(use.findings, is_wanted)) continue;
    RefuseWaived(project, *use.waiver, wanted.finding->fingerprint);
  }
}

// The position of the project file that judges the findings. One call changes one file.
std::size_t OwnerOf(const std::vector<std::string>& fingerprints, const ProjectSet& projects, Report& report) {
  std::optional<std::size_t> owner;
  const auto add = [&](const std::string& fingerprint, std::size_t position) {
    if (std::ranges::find(fingerprints, fingerprint) == fingerprints.end()) return;
    if (!owner) owner = position;
    if (*owner == position) return;
    const auto name = [&](std::size_t one) {
      return projects[one] == nullptr ? std::string(kProjectFileName) : OneLine(projects[one]->file);
    };
    Refuse("the findings belong to " + name(*owner) + " and " + name(position) +
           "; allowed: findings of one project file, which --project selects");
  };
  for (const auto& [table, finding] : FindingsOf(report)) add(finding->fingerprint, table->project);
  for (const ProjectFinding& finding : report.project) add(finding.fingerprint, finding.project);
  return owner.value_or(0);
}

// The entry for a finding about the project file, or nullopt if none has the fingerprint.
std::optional<WaiverEntry> EntryOfProject(const std::string& fingerprint, const Project& project,
                                          const std::vector<WaiverUse>& uses, const Report& report) {
  const auto found = std::ranges::find(report.project, fingerprint, &ProjectFinding::fingerprint);
  if (found == report.project.end()) return std::nullopt;
  const auto position = static_cast<std::size_t>(found - report.project.begin());
  for (const WaiverUse& use : uses) {
    if (use.state == WaiverState::kMalformed || std::ranges::find(use.project, position) == use.project.end()) continue;
    RefuseWaived(project, *use.waiver, fingerprint);
  }
  return EntryFor(*found);
}

// The entries that waive the findings: one for each, or, if they are wide, one for each table and path with it.
std::vector<WaiverEntry> EntriesFor(const WaiveArguments& arguments, const std::vector<std::string>& fingerprints,
                                    const Project& project, std::size_t position, Report& report) {
  const std::vector<WaiverUse> uses = ApplyWaivers(project, position, report);
  const std::vector<TableFinding> findings = FindingsOf(report);
  const WaiverForm form = arguments.is_wide ? WaiverForm::kWide : WaiverForm::kExact;
  std::vector<WaiverEntry> entries;
  std::vector<std::string> unknown;
  for (const std::string& fingerprint : fingerprints) {
    const auto add = [&](WaiverEntry entry) {
      entry.reason = arguments.reason.value_or("");
      entry.until = arguments.until.value_or("");
      const auto is_same = [&](const WaiverEntry& one) { return NamesTheSame(one, entry); };
      if (std::ranges::none_of(entries, is_same)) entries.push_back(std::move(entry));
    };
    bool is_known = false;
    if (std::optional<WaiverEntry> entry = EntryOfProject(fingerprint, project, uses, report)) {
      is_known = true;
      add(*std::move(entry));
    }
    for (const TableFinding& found : findings) {
      if (found.finding->fingerprint != fingerprint || (is_known && !arguments.is_wide)) continue;
      is_known = true;
      if (form == WaiverForm::kWide && HidesChanges(*found.table, *found.finding)) {
        Refuse("--wide does not cover " + fingerprint +
               ": the checker stops at this pre-existing refusal, which hides changes of table " + OneLine(found.table->table) +
               "; allowed: without --wide, which accepts these changes");
      }
      RequireNotWaived(project, uses, found, form);
      add(EntryFor(*found.table, *found.finding, form));
    }
    if (!is_known) unknown.push_back(fingerprint);
  }
  if (!unknown.empty()) RefuseUnknown(unknown, report);
  return entries;
}

CommandResult Check(const WaiveArguments& arguments, const std::vector<std::string>& files, const Project& project) {
  vesk::ClosedCategory log;
  const CheckRequest request{.command = "waive",
                             .paths = files,
                             .baselines = arguments.baseline.For(files, &project),
                             .allow_new = true,
                             .options = {.given = arguments.settings.given,
                                         .project = &project,
                                         .max_findings = arguments.limit.max_findings,
                                         .log = log.handle()},
                             .searches_projects = arguments.settings.SearchesProjects(),
                             .links = arguments.settings.links()};
  RequireBaseline(request);
  return RunCheck(request);
}

// Adds the waivers to the project file at `path`, in which `of_call` is that of the call. Returns nothing, or the path of the
// nested project file that they belong to instead.
std::optional<std::string> WaiveIn(const std::string& path, const std::string& of_call, const WaiveArguments& arguments,
                                   const WaiveWords& words) {
  RefuseOverlaps({path}, {&arguments.output});
  const DirectoryLock lock(path);  // so that no waiver of another call is lost
  if (lock.error() != 0) Refuse("cannot lock " + OneLine(lock.directory().string()) + ": " + std::strerror(lock.error()));
  const std::string text = TextOf(path, arguments.settings);
  const Project project = ParseProject(of_call, path == of_call ? text : TextOf(of_call, arguments.settings));
  CommandResult result = Check(arguments, words.files, project);
  const ProjectSet& projects = *result.projects;
  const std::size_t owner = OwnerOf(words.fingerprints, projects, result.report);
  const Project& changed = *projects[owner];
  if (changed.file != path) return changed.file;
  const std::vector<WaiverEntry> entries = EntriesFor(arguments, words.fingerprints, changed, owner, result.report);
  const std::string longer = WithWaivers(text, entries);
  RequireWaivers(path, longer, changed.waivers.size(), entries.size());
  if (TextOf(path, arguments.settings) != text)
    Refuse(OneLine(path) + " was modified in the meantime; nothing was written; run the command again");
  WriteFile(path, AsProducer(longer));
  std::string done;
  for (const std::string& fingerprint : words.fingerprints) {
    done += PathText(path) + ": waived " + fingerprint + " until " + entries.front().until + "\n";
  }
  arguments.output.Write(done);
  return std::nullopt;
}

int Run(const WaiveArguments& arguments) {
  const WaiveWords words = Split(arguments.words);
  RequireFiles(words.files, arguments.baseline.IsGiven());
  const std::string of_call = arguments.settings.project_file.value_or(FindProjectFile().value_or(kProjectFileName));
  if (of_call == "-") Refuse("--project is '-'; allowed: a file");
  const std::optional<std::string> nested = WaiveIn(of_call, of_call, arguments, words);
  if (!nested) return kAllAllowed;
  if (nested->starts_with("git:")) Refuse(OneLine(*nested) + " is not on the disk; allowed: --project with a file that is");
  if (WaiveIn(*nested, of_call, arguments, words))
    Refuse(OneLine(*nested) + " was modified in the meantime; run the command again");
  return kAllAllowed;
}

}  // namespace

const Command kWaiveCommand{"waive", "add temporary waivers to the project file", Declare<WaiveArguments, Run>};

}  // namespace korvel::tool
