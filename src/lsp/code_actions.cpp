// Tested by tests/lsp/code_actions_test.cpp.
#include "lsp/code_actions.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "analysis/suggest/element_text.h"
#include "base/input_error.h"
#include "base/text.h"
#include "lsp/open_files.h"
#include "lsp/waiver_action.h"
#include "project/child_process.h"
#include "project/fix_file.h"
#include "report/result/summary.h"

namespace korvel::lsp {
namespace {

constexpr char kQuickFix[] = "quickfix";
constexpr char kFixAll[] = "source.fixAll";

bool IsWanted(const Json& params, std::string_view kind) {
  const Json only = params.value("context", Json::object()).value("only", Json());
  return !only.is_array() || std::ranges::any_of(only, [&](const Json& one) {
    if (!one.is_string()) return false;
    const auto& wanted = one.get_ref<const std::string&>();
    return wanted.empty() || kind == wanted || kind.starts_with(wanted + ".");
  });
}

Json EditOf(const std::string& uri, Json edits) { return {{"changes", {{uri, std::move(edits)}}}}; }

// --- The suggestion of a finding ---

// The issues of one rule at one place: one for each baseline.
using IssueGroup = std::vector<const Issue*>;

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

std::string ProblemOf(const Issue& issue) { return issue.rule + " " + issue.summary; }

std::set<std::string> RefusedIn(const DocumentCheck& check) {
  std::set<std::string> refused;
  for (const Issue& issue : check.issues->all()) {
    if (!issue.waived && issue.level == Level::kRefused) refused.insert(ProblemOf(issue));
  }
  return refused;
}

// A fix was found for one baseline. Whether the others do not refuse it.
bool IsAccepted(Session& session, const Document& document, const DocumentCheck& check, const Issue& issue) {
  if (check.project->checks().size() <= 1) return true;
  const std::string fixed = ApplyReplacements(document.text.bytes(), issue.folded->finding->fix);
  std::set<std::string> known = RefusedIn(check);
  known.erase(ProblemOf(issue));
  return std::ranges::includes(known, RefusedIn(*session.CheckWith(document, fixed)));
}

// Nullopt without a fix that all baselines accept.
std::optional<Json> FixOf(Session& session, const Document& document, const DocumentCheck& check, const IssueGroup& group) {
  const auto fixed = std::ranges::find_if(
      group, [&](const Issue* one) { return !one->folded->finding->fix.empty() && IsAccepted(session, document, check, *one); });
  return fixed == group.end() ? std::nullopt : std::optional(FixOf(**fixed, document));
}

// --- Waivers ---

// Different ones.
std::vector<Json> WaiversOf(const IssueGroup& group, const DocumentCheck& check, const Documents& documents) {
  std::vector<Json> actions;
  for (const Issue* const issue : group) {
    std::optional<WaiverAction> waiver = WaiverActionFor(*issue, check, documents);
    if (!waiver) continue;
    Json action = {
        {"title", waiver->title}, {"kind", kQuickFix}, {"edit", EditOf(waiver->uri, Json::array({std::move(waiver->edit)}))}};
    if (std::ranges::find(actions, action) == actions.end()) actions.push_back(std::move(action));
  }
  return actions;
}

// --- The whole file ---

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
  return Json::array({{{"range", ToJson(document.text, {begin, text.size() - same})},
                       {"newText", fixed.substr(begin, fixed.size() - same - begin)}}});
}

std::string ReasonsOf(const SchemaSuggestion& suggestion) {
  return "no version of this file is allowed: " + Join(suggestion.refused, "; ", [](const TableRefusal& one) {
           return "table " + OneLine(one.table) + ": " + OneLine(one.verdict.text);
         });
}

void AddFixAll(Session& session, const Document& document, Json& actions) {
  Json action = {{"title", "Fix all refused changes of this file"}, {"kind", kFixAll}, {"data", {{"uri", document.uri}}}};
  try {
    actions.push_back(session.client.resolves_edits ? std::move(action) : ResolveCodeAction(session, action));
  } catch (const RequestError&) {  // no version of the file is allowed
  } catch (const InputError&) {
  } catch (const OutputTimeoutError&) {  // the other actions do not need git
  }
}

// --- Selection ---

// The diagnostics of the request that the action is about.
Json WithDiagnostics(Json action, const IssueGroup& group, const Json& params) {
  for (const Json& diagnostic : params.value(Json::json_pointer("/context/diagnostics"), Json::array())) {
    const Json fingerprint = diagnostic.value(Json::json_pointer("/data/fingerprint"), Json());
    const bool is_here = std::ranges::any_of(group, [&](const Issue* one) { return fingerprint == one->fingerprint; });
    if (is_here) action["diagnostics"].push_back(diagnostic);
  }
  return action;
}

bool IsOpen(const Issue& issue) {
  return issue.folded != nullptr && !issue.waived && issue.location.begin && issue.level == Level::kRefused;
}

// The findings at a place that are not waived.
std::vector<IssueGroup> GroupsAt(qmx::Span wanted, const DocumentCheck& check) {
  std::vector<IssueGroup> groups;
  for (const Issue& issue : check.issues->all()) {
    const qmx::Span span = issue.location.span;
    const bool is_here = issue.location.file == check.name && span.begin <= wanted.end && wanted.begin <= span.end;
    if (!is_here || issue.folded == nullptr || issue.waived) continue;
    const auto same = std::ranges::find_if(groups, [&](const IssueGroup& group) {
      return group.front()->location.span.begin == span.begin && ProblemOf(*group.front()) == ProblemOf(issue);
    });
    (same == groups.end() ? groups.emplace_back() : *same).push_back(&issue);
  }
  return groups;
}

}  // namespace

Json CodeActions(Session& session, const Json& params) {
  const Document& document = session.documents.Of(params);
  Json actions = Json::array();
  if (document.IsProjectFile()) return actions;
  const DocumentCheck& check = session.CheckOf(document);
  const qmx::Span wanted = SpanOf(document.text, params.at("range"));
  const std::vector<IssueGroup> groups = IsWanted(params, kQuickFix) ? GroupsAt(wanted, check) : std::vector<IssueGroup>();
  for (const IssueGroup& group : groups) {
    if (auto fix = FixOf(session, document, check, group)) actions.push_back(WithDiagnostics(*std::move(fix), group, params));
    for (Json& waiver : WaiversOf(group, check, session.documents)) {
      actions.push_back(WithDiagnostics(std::move(waiver), group, params));
    }
  }
  const bool can_fix_all = std::ranges::any_of(check.issues->all(), IsOpen) && !check.compared.empty();
  if (can_fix_all && IsWanted(params, kFixAll)) AddFixAll(session, document, actions);
  return actions;
}

Json ResolveCodeAction(Session& session, const Json& action) {
  Json resolved = action;
  const std::string uri = action.value("data", Json::object()).value("uri", "");
  const Document* const document = session.documents.Find(uri);
  if (document == nullptr) return resolved;
  const DocumentCheck& check = session.CheckOf(*document);
  // What was offered for an earlier state may not be possible any more.
  if (check.compared.empty()) throw RequestError(kRequestFailed, "this file is not compared with a baseline any more");
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
