// Tested by tests/lsp/server_test.cpp.
#include "lsp/document_check.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>
#include <system_error>
#include <utility>

#include "base/input_error.h"
#include "base/paths.h"
#include "lsp/open_files.h"
#include "project/check_tables.h"
#include "project/file_selection.h"
#include "project/input_projects.h"
#include "project/project_path.h"
#include "project/waivers.h"

namespace korvel::lsp {
namespace {

enum class CheckKind {
  kOther,     // no schema, or one that the project excludes
  kSelected,  // a schema file of the project
  kAlone      // a schema that no project file selects
};

bool LooksLikeSchema(const Text& text) { return text.bytes().find("<metalib") != std::string::npos; }

// With patterns, the project file says what is a schema; else the text does.
CheckKind CheckKindOf(const Document& document, OpenProject& project) {
  const CheckKind by_text = LooksLikeSchema(document.text) ? CheckKind::kAlone : CheckKind::kOther;
  if (project.checks().empty()) return by_text;
  const ProjectStates& states = project.checks().front().states;
  const std::filesystem::path path = std::filesystem::path(document.path).lexically_relative(states.top);
  if (LeadsOut(path)) return by_text;
  const Patterns patterns(states.projects->Of(path.string()));
  if (patterns.Excluding(path.string()) != nullptr) return CheckKind::kOther;
  if (!patterns.IsSchemaName(path.string())) return by_text;
  return patterns.IsEmpty() && by_text == CheckKind::kOther ? CheckKind::kOther : CheckKind::kSelected;
}

void Compare(Texts texts, DocumentCheck& check) {
  ProjectResult all;
  std::vector<ProjectCheck>& checks = check.project->checks();
  for (ProjectCheck& one : checks) {
    one.files = SelectFiles({check.name}, one.states);
    one.shows_sources = texts == Texts::kShown;
    Append(CheckProject(one), checks.size() > 1, all);
  }
  check.report = std::move(all.report);
  check.report.projects = ListOf(check.project->set(), std::move(all.judged));
  check.sources = std::move(all.sources);
  check.compared = std::move(all.compared);
}

void Lint(const Document& document, DocumentCheck& check) {
  InputProject nearest = InputProjects(check.project->set(), check.project->links()).Of(check.name);
  Input input = LoadBytes(check.name, BytesOf(document.text.bytes()));
  if (input.tables.empty()) throw ErrorOf({NoTableFault(input)});
  input.path_in_project = std::move(nearest.path_in_project);
  const Source& source = *check.sources.emplace_back(std::make_shared<const Source>(std::move(input)));
  CheckOptions options = check.project->options();
  options.project = nearest.project;
  options.is_alone = true;
  check.report.inputs.push_back({kFiles.first, &source});
  CheckEachTable(check.report, {source, source}, {source.tables.begin(), source.tables.end()}, options);
  for (TableResult& table : check.report.tables) table.project = nearest.position;
}

// Adds the faults of a step that failed.
void KeepFaults(DocumentCheck& check, const std::function<void()>& step) {
  try {
    step();
  } catch (const InputError& error) {
    std::ranges::move(FaultsOfCall(error), std::back_inserter(check.report.faults));
  } catch (const std::system_error& error) {
    const InputError as_input{{ToolMessage(error.what())}};
    std::ranges::move(FaultsOfCall(as_input), std::back_inserter(check.report.faults));
  }
}

}  // namespace

std::shared_ptr<OpenProject> DocumentChecks::ProjectAt(const std::string& root) {
  std::shared_ptr<OpenProject>& project = projects_[root];
  if (project == nullptr || !project->IsCurrent()) {
    project.reset();
    project = std::make_shared<OpenProject>(options_, documents_, baseline_files_);
  }
  return project;
}

void DocumentChecks::Run(const Document& document, Texts texts, DocumentCheck& check) {
  check.root = EnterProjectOf(document.path);
  check.name = std::filesystem::path(document.path).lexically_relative(check.root).string();
  check.project = ProjectAt(check.root);
  const CheckKind kind = CheckKindOf(document, *check.project);
  check.is_schema = kind != CheckKind::kOther;
  if (!check.is_schema) return;
  Report& report = check.report;
  report.command = kind == CheckKind::kSelected ? "check" : "lint";
  if (kind == CheckKind::kSelected) KeepFaults(check, [&] { Compare(texts, check); });
  // What could not be compared can still be checked by itself.
  const bool is_compared = !report.tables.empty() || std::ranges::any_of(report.faults, &InputFault::line);
  if (!is_compared) KeepFaults(check, [&] { Lint(document, check); });
  const Project* const project = check.project->project();
  report.fails_on_warnings = project != nullptr && project->fails_on_warnings;
  ApplyAllWaivers(check.project->set(), {}, report);
  AddSuggestions(report, true);
  check.project->RememberFiles();
}

std::shared_ptr<const DocumentCheck> DocumentChecks::Check(const Document& document, Texts texts) {
  auto check = std::make_shared<DocumentCheck>();
  check->version = document.version;
  check->is_schema = !document.path.empty() && LooksLikeSchema(document.text);
  if (!document.path.empty()) KeepFaults(*check, [&] { Run(document, texts, *check); });
  if (!check->is_schema) check->report = {};
  check->report.max_findings = kMaxFindings;
  check->folded = std::make_unique<FoldedReport>(check->report);
  check->issues = std::make_unique<Issues>(*check->folded);
  return check;
}

}  // namespace korvel::lsp
