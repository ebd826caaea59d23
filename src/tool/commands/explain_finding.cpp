// Tested by tests/tool/explain_finding_test.cpp.
#include "tool/commands/explain_finding.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <utility>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/waivers.h"
#include "report/render/rule_doc_format.h"
#include "tool/commands/finding_list.h"
#include "tool/commands/next_commands.h"
#include "tool/io/exit.h"
#include "vesk/closed_category.h"

namespace korvel::tool {
namespace {

constexpr std::size_t kMinPrefix = 4;  // digits; shorter numbers are result codes
constexpr std::size_t kDigits = 16;

[[noreturn]] void Refuse(const std::string& what, const FindingList& findings, const std::string& prefix) {
  InputError error{{ToolMessage("explain: " + what)}};
  std::ranges::move(findings.Lines(prefix), std::back_inserter(error.lines));
  error.lines.emplace_back(
      "Reports of 'korvelcheck check' print the fingerprint of each finding; name the same files and baselines.");
  throw error;
}

// The only fingerprint of the report that begins so.
std::string FullFingerprint(const std::string& prefix, Report& report) {
  const FindingList findings(report);
  const std::vector<std::string_view>& known = findings.fingerprints();
  const auto begins = [&](std::string_view one) { return one.starts_with(prefix); };
  const auto found = std::ranges::find_if(known, begins);
  if (found == known.end()) {
    if (!report.faults.empty()) throw ErrorOf(std::move(report.faults));
    Refuse("no finding has the fingerprint " + Quote(prefix) + DidYouMean(prefix, known), findings, "");
  }
  if (std::ranges::count_if(known, begins) > 1) Refuse("several fingerprints begin with " + Quote(prefix), findings, prefix);
  return std::string(*found);
}

CheckRequest RequestOf(const ExplainedCheck& check, const Project* project, const OutputOption& output, LPVESKCATEGORYINST log) {
  return {.command = "explain",
          .paths = check.inputs.paths,
          .baselines = check.baseline.For(check.inputs.paths, project),
          .allow_new = true,
          .options = {.given = check.settings.given, .project = project, .max_findings = check.limit.max_findings, .log = log},
          .searches_projects = check.settings.SearchesProjects(),
          .links = check.settings.links(),
          .on_files = [&output](const std::vector<std::string>& files) { RefuseOverlaps(files, {&output}); },
          .reports_faults = true};
}

struct ExpiredWaiver {
  std::string place;  // "korvelcheck.toml:5"
  std::string until;
};

// The expired waiver of the finding that keeps `waive` from adding another one, or nullopt.
std::optional<ExpiredWaiver> FindExpired(const ProjectSet& projects, Report& report, const std::string& fingerprint) {
  for (std::size_t i = 0; i < projects.size(); ++i) {
    if (projects[i] == nullptr) continue;
    for (const WaiverUse& use : ApplyWaivers(*projects[i], i, report)) {
      const auto of_table = [&](const TableFinding& one) { return one.finding->fingerprint == fingerprint; };
      const auto of_project = [&](std::size_t position) { return report.project[position].fingerprint == fingerprint; };
      const bool covers = std::ranges::any_of(use.findings, of_table) || std::ranges::any_of(use.project, of_project);
      if (!covers || use.state != WaiverState::kExpired || use.waiver->form == WaiverForm::kWide) continue;
      return ExpiredWaiver{OneLine(projects[i]->file) + ":" + std::to_string(use.waiver->location.line), use.waiver->until};
    }
  }
  return std::nullopt;
}

std::string WaiveHint(const CheckRequest& request, bool names_baseline, const ExplainedFinding& finding, CommandResult& result,
                      const std::string& fingerprint) {
  // `waive` fails if a file has a fault.
  if (finding.is_waived || !result.report.faults.empty()) return "";
  const std::optional<ExpiredWaiver> expired = FindExpired(*result.projects, result.report, fingerprint);
  return "To accept it temporarily: " +
         (expired ? "change 'until' of the waiver in " + expired->place + ", " + expired->until + ", to a later day"
                  : WaiveCommand(request, names_baseline, fingerprint)) +
         "\n";
}

std::string PageOf(const ExplainedFinding& finding) {
  if (const RuleDoc* doc = FindRuleDoc(finding.rule)) return "\n" + kRuleDocText.rule(*doc);
  return ResultCodeName(finding.code) == nullptr ? "" : "\n" + kRuleDocText.code(FindCodeDoc(finding.code));
}

}  // namespace

void ExplainedCheck::AddTo(ArgumentList& arguments) {
  arguments
      .AddPositional("FILES", "FILE", inputs.paths,
                     "for a fingerprint: what the check compares, as for 'check'; default: the project's files")
      .is_repeated = true;
  baseline.AddTo(arguments);
  settings.AddTo(arguments);
  settings.AddProjectTo(arguments);
  limit.AddTo(arguments);
}

bool MayBeFingerprint(std::string_view word) {
  return word.size() >= kMinPrefix && word.size() <= kDigits &&
         word.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

std::optional<std::string> ExplainFinding(const ExplainedCheck& check, const std::string& fingerprint,
                                          const OutputOption& output) {
  RequireFiles(check.inputs.paths, check.baseline.IsGiven());
  const std::optional<Project> project = check.settings.ReadProject();
  if (project) RefuseOverlaps({project->file}, {&output});
  RefuseOverlaps(check.inputs.paths, {&output});
  vesk::ClosedCategory log;
  CheckRequest request = RequestOf(check, project ? &*project : nullptr, output, log.handle());
  if (!check.IsGiven() && !request.HasBaseline()) return std::nullopt;
  RequireBaseline(request);
  const bool names_baseline = check.baseline.IsGiven();
  request.fix_command = FixCommand(request, names_baseline);
  CommandResult result = RunCheck(request);
  result.report.max_findings = std::numeric_limits<std::size_t>::max();  // whichever finding it is
  ApplyAllWaivers(*result.projects, {}, result.report);
  AddSuggestions(result.report, false);
  const std::string full = FullFingerprint(fingerprint, result.report);
  if (!result.report.faults.empty()) {
    PrintErrors(ErrorOf(result.report.faults).lines);
    result.report.fix_command.clear();  // it fails, too
  }
  const ExplainedFinding finding = RenderFinding(result.report, full);
  const std::string hint = check.settings.no_project ? "" : WaiveHint(request, names_baseline, finding, result, full);
  return finding.text + hint + PageOf(finding);
}

}  // namespace korvel::tool
