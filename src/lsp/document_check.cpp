// Tested by tests/lsp/server_test.cpp.
#include "lsp/document_check.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <utility>

#include "base/input_error.h"
#include "base/paths.h"
#include "base/text.h"
#include "lsp/open_files.h"
#include "project/check_tables.h"
#include "project/file_selection.h"
#include "project/input_projects.h"
#include "project/project_path.h"
#include "project/waivers.h"

namespace korvel::lsp {
namespace {

enum class CheckKind {
  kNone,   // no schema, or one that the project excludes
  kAlone,  // without a baseline
  kCompared
};

// Whether a file is a schema although its text does not look like one: a key press may have made it something else.
bool IsSchemaByName(const std::string& path, const Patterns& patterns, std::vector<ProjectCheck>& checks) {
  if (!patterns.IsEmpty() && patterns.IsSchemaName(path)) return true;
  return std::ranges::any_of(checks, [&](const ProjectCheck& one) {
    return one.states.old_state->HasFile(path) && IsSchema(*one.states.old_state, path);
  });
}

CheckKind CheckKindOf(const Document& document, DocumentCheck& check) {
  const CheckKind by_text = document.was_schema ? CheckKind::kAlone : CheckKind::kNone;
  std::vector<ProjectCheck>& checks = check.project->checks();
  if (checks.empty()) return by_text;
  const ProjectStates& states = checks.front().states;
  const std::string path = std::filesystem::path(document.path).lexically_relative(states.top).string();
  if (LeadsOut(path)) return by_text;
  const ProjectScope& scope = states.projects->Of(path);
  const Patterns patterns(scope);
  if (!document.was_schema && !IsSchemaByName(path, patterns, checks)) return CheckKind::kNone;
  const ProjectText* const excluding = patterns.Excluding(path);
  if (excluding == nullptr) return CheckKind::kCompared;
  check.excluded_by = FileLineColumn(PathText(scope.project->file), excluding->location);
  return CheckKind::kNone;
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

// Each fault once: several steps may fail for the same reason.
void AddFaults(const InputError& error, Report& report) {
  for (InputFault& fault : FaultsOfCall(error)) {
    const auto is_same = [&](const InputFault& one) { return one.message == fault.message; };
    if (std::ranges::none_of(report.faults, is_same)) report.faults.push_back(std::move(fault));
  }
}

// Adds the faults of a step that failed.
void KeepFaults(DocumentCheck& check, const std::function<void()>& step) {
  try {
    step();
  } catch (const InputError& error) {
    AddFaults(error, check.report);
  } catch (const std::runtime_error& error) {
    AddFaults({{ToolMessage(error.what())}}, check.report);
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
  const CheckKind kind = CheckKindOf(document, check);
  check.is_schema = kind != CheckKind::kNone;
  if (!check.is_schema) return;
  Report& report = check.report;
  report.command = kind == CheckKind::kCompared ? "check" : "lint";
  if (kind == CheckKind::kCompared) KeepFaults(check, [&] { Compare(texts, check); });
  // What could not be compared can still be checked by itself.
  const bool is_compared = !report.tables.empty() || std::ranges::any_of(report.faults, &InputFault::line);
  if (!is_compared) KeepFaults(check, [&] { Lint(document, check); });
  const Project* const project = check.project->project();
  report.fails_on_warnings = project != nullptr && project->fails_on_warnings;
  ApplyAllWaivers(check.project->set(), {}, report);
  AddSuggestions(report, true);
  check.project->RememberFiles();
}

void DocumentChecks::ForgetUnusedProjects() {
  std::erase_if(projects_, [this](const auto& project) {
    return std::ranges::all_of(documents_.all(), [&](const auto& document) {
      return LeadsOut(std::filesystem::path(document.second.path).lexically_relative(project.first));
    });
  });
}

std::shared_ptr<const DocumentCheck> DocumentChecks::Check(const Document& document, Texts texts) {
  auto check = std::make_shared<DocumentCheck>();
  check->revision = document.revision;
  check->is_schema = !document.path.empty() && document.was_schema;
  if (!document.path.empty()) KeepFaults(*check, [&] { Run(document, texts, *check); });
  if (!check->is_schema) check->report = {};
  check->report.max_findings = kMaxDocumentFindings;
  check->folded = std::make_unique<FoldedReport>(check->report);
  check->issues = std::make_unique<Issues>(*check->folded);
  return check;
}

}  // namespace korvel::lsp
