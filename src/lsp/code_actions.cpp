// Tested by tests/lsp/code_actions_test.cpp.
#include "lsp/code_actions.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <vector>

#include "base/calendar.h"
#include "base/input_error.h"
#include "base/text.h"
#include "base/uri.h"
#include "lsp/open_files.h"
#include "project/fix_file.h"
#include "project/found_project.h"
#include "project/project_path.h"
#include "project/waiver_entry.h"
#include "report/result/summary.h"

namespace korvel::lsp {
namespace {

constexpr char kQuickFix[] = "quickfix";
constexpr char kFixAll[] = "source.fixAll";

bool IsWanted(const Json& params, std::string_view kind) {
  const Json only = params.value("context", Json::object()).value("only", Json());
  return !only.is_array() || std::ranges::any_of(only, [&](const Json& one) {
    return one.is_string() && (kind == one || kind.starts_with(one.get<std::string>() + "."));
  });
}

Json EditOf(const std::string& uri, Json edits) { return {{"changes", {{uri, std::move(edits)}}}}; }

// --- The suggestion of a finding ---

Json FixOf(const Issue& issue, const Document& document) {
  Json edits = Json::array();
  for (const Replacement& one : issue.folded->finding->fix) {
    edits.push_back({{"range", ToJson(document.text, one.span)}, {"newText", one.text}});
  }
  return {{"title", "Fix: " + Join(SuggestionLines(issue.suggestion), "; ")},
          {"kind", kQuickFix},
          {"isPreferred", true},
          {"edit", EditOf(document.uri, std::move(edits))}};
}

// --- A waiver ---

Text TextOfProjectFile(const std::string& path, const Documents& documents) {
  if (const Document* const open = documents.FindPath(path)) return open->text;
  return Text(korvel::TextOfProject(path, false, Links::kRefuse));
}

// Whether the project file takes this many waivers.
bool HasWaivers(const std::string& text, std::size_t count) {
  try {
    return ParseProject(kProjectFileName, text).waivers.size() == count;
  } catch (const InputError&) {
    return false;
  }
}

// Nothing without a project file, and if it cannot take another waiver.
std::optional<Json> WaiverOf(const Issue& issue, const DocumentCheck& check, const Documents& documents) {
  const Project* const project = check.project->set()[issue.folded->table->project];
  if (project == nullptr) return std::nullopt;
  WaiverEntry entry = EntryFor(*issue.folded->table, *issue.folded->finding, WaiverForm::kExact);
  entry.reason = "TODO: why this change is acceptable";
  entry.until = DayAfter(Today(), kWaiverDays);
  const std::string path = (std::filesystem::path(check.root) / project->file).lexically_normal().string();
  const Text text = TextOfProjectFile(path, documents);
  const std::string longer = WithWaivers(text.bytes(), {entry});
  if (!HasWaivers(longer, project->waivers.size() + 1)) return std::nullopt;
  const std::size_t end = text.bytes().size();
  const Document* const open = documents.FindPath(path);
  return Json{{"title", "Waive until " + entry.until + " (give the reason in " + OneLine(project->file) + ")"},
              {"kind", kQuickFix},
              {"edit", EditOf(open == nullptr ? UriOf(path) : open->uri,
                              {{{"range", ToJson(text, {end, end})}, {"newText", longer.substr(end)}}})}};
}

// --- The whole file ---

Json FixAll(const Document& document) {
  return {{"title", "Fix all refused changes of this file"}, {"kind", kFixAll}, {"data", {{"uri", document.uri}}}};
}

// The lines that differ.
Json Difference(const Document& document, const std::string& fixed) {
  const std::string& text = document.text.bytes();
  const auto left = std::ranges::mismatch(text, fixed).in1;
  const auto first = static_cast<std::size_t>(left - text.begin());
  const std::size_t begin = first == 0 ? 0 : text.rfind('\n', first - 1) + 1;
  std::size_t same = 0;  // bytes at the end
  const std::size_t most = std::min(text.size(), fixed.size()) - begin;
  while (same < most && text[text.size() - 1 - same] == fixed[fixed.size() - 1 - same]) ++same;
  while (same > 0 && text[text.size() - 1 - same] != '\n') --same;
  return {{{"range", ToJson(document.text, {begin, text.size() - same})},
           {"newText", fixed.substr(begin, fixed.size() - same - begin)}}};
}

std::string ReasonsOf(const SchemaSuggestion& suggestion) {
  return "no version of this file is allowed: " + Join(suggestion.refused, "; ", [](const TableRefusal& one) {
           return "table " + OneLine(one.table) + ": " + OneLine(one.verdict.text);
         });
}

// The diagnostics of the request that the action is about.
Json WithDiagnostics(Json action, const Issue& issue, const Json& params) {
  for (const Json& diagnostic : params.value(Json::json_pointer("/context/diagnostics"), Json::array())) {
    const Json fingerprint = diagnostic.value(Json::json_pointer("/data/fingerprint"), Json());
    if (fingerprint == issue.fingerprint) action["diagnostics"].push_back(diagnostic);
  }
  return action;
}

bool IsOpen(const Issue& issue) {
  return issue.folded != nullptr && !issue.waived && issue.location.begin && issue.level == Level::kRefused;
}

}  // namespace

Json CodeActions(Session& session, const Json& params) {
  const Document& document = session.documents.Of(params);
  Json actions = Json::array();
  if (document.IsProjectFile()) return actions;
  const DocumentCheck& check = session.CheckOf(document);
  const qmx::Span wanted = SpanOf(document.text, params.at("range"));
  bool is_refused = false;
  for (const Issue& issue : check.issues->all()) {
    is_refused = is_refused || IsOpen(issue);
    const bool is_here =
        issue.location.file == check.name && issue.location.span.begin <= wanted.end && wanted.begin <= issue.location.span.end;
    if (!is_here || issue.folded == nullptr || issue.waived || !IsWanted(params, kQuickFix)) continue;
    if (!issue.folded->finding->fix.empty()) actions.push_back(WithDiagnostics(FixOf(issue, document), issue, params));
    if (auto waiver = WaiverOf(issue, check, session.documents)) {
      actions.push_back(WithDiagnostics(*std::move(waiver), issue, params));
    }
  }
  if (is_refused && !check.compared.empty() && IsWanted(params, kFixAll)) actions.push_back(FixAll(document));
  return actions;
}

Json ResolveCodeAction(Session& session, const Json& action) {
  Json resolved = action;
  const std::string uri = action.value("data", Json::object()).value("uri", "");
  const Document* const document = session.documents.Find(uri);
  if (document == nullptr) return resolved;
  const DocumentCheck& check = session.CheckOf(*document);
  std::vector<const ComparedFile*> states;
  for (const ComparedFile& file : check.compared) states.push_back(&file);
  std::filesystem::current_path(check.root);
  Git git;
  const Input input = LoadBytes(check.name, BytesOf(document->text.bytes()));
  const SchemaSuggestion fixed =
      FixFile(EarlierStatesOf(states, check.report, git), input, check.project->options(), check.project->set());
  if (!fixed.is_changed) throw RequestError(kRequestFailed, ReasonsOf(fixed));
  resolved["edit"] = EditOf(uri, Difference(*document, fixed.text));
  return resolved;
}

}  // namespace korvel::lsp
