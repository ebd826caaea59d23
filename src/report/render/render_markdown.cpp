// A report for the description of a merge request: a table of findings, then the details of each. Tested by
// tests/report/formats_test.cpp.
#include <algorithm>

#include "base/text.h"
#include "report/render/markdown_items.h"
#include "report/render/render.h"
#include "report/result/issues.h"
#include "report/result/notes.h"

namespace korvel {
namespace {

// Services cut or refuse long texts.
constexpr std::size_t kMaxDetailed = 50;  // findings with details
constexpr std::size_t kMaxListed = 500;   // findings in the table

std::string Row(const Issue& issue, const ServicePaths& paths) {
  return std::string("| ") + StatusOf(issue) + " | " + MarkdownCode(issue.rule) + " | " + LocationCode(issue, paths) + " | " +
         MarkdownText(issue.summary) + " |\n";
}

std::string TableOf(const std::vector<Issue>& issues, const ServicePaths& paths) {
  if (issues.empty()) return "";
  std::string text = "\n| | rule | location | problem |\n|---|---|---|---|\n";
  const std::size_t shown = std::min(issues.size(), kMaxListed);
  for (std::size_t i = 0; i < shown; ++i) text += Row(issues[i], paths);
  return text + More(issues.size(), shown, "findings");
}

// The lines of both sides as a diff. A fault has no sides.
std::string DiffOf(const Issue& issue) {
  if (issue.fault != nullptr) return "";
  std::string lines;
  const auto add = [&](char sign, const TextRange& range) {
    if (const auto snippet = SnippetOf(range)) lines += std::string(1, sign) + snippet->text + "\n";
  };
  const bool removed =
      issue.folded != nullptr && &LeadOf(*issue.table, *issue.folded->finding) == &issue.folded->finding->old_location;
  if (issue.old_location && issue.old_location->line == issue.location.line) {
    add(' ', issue.location);  // the line did not change
  } else {
    if (issue.old_location) add('-', *issue.old_location);
    if (!removed) add(issue.old_location ? '+' : ' ', issue.location);
  }
  return lines.empty() ? "" : "\n" + MarkdownBlock("diff", lines);
}

std::string DetailsBlock(const Issue& issue, const ServicePaths& paths) {
  std::string text = "\n<details>\n<summary>" + MarkdownCode(issue.rule) + " " + LocationCode(issue, paths) + "</summary>\n\n" +
                     MarkdownText(issue.summary) + "\n";
  text += DiffOf(issue) + "\n";
  for (const std::string& line : DetailsOf(issue, paths)) text += "- " + MarkdownText(line) + "\n";
  return text + "- fingerprint " + MarkdownCode(issue.fingerprint) + "\n\n</details>\n";
}

// Tables of several pairs of files may have the same name. Without `paths`, there is one pair.
std::string NameOf(const TableResult& table, const ServicePaths* paths) {
  return "**Table " + MarkdownText(table.table) + "**" +
         (paths == nullptr ? "" : " of " + MarkdownCode(paths->Shown(table.second->name)));
}

// Edits that were listed with an earlier table are only counted.
std::string EditList(const Changes& changes, const FoldedEdits& edits, EditStatus status, const char* what) {
  std::string text = "\n\n";
  std::size_t listed = 0;
  for (const std::size_t i : edits.listed) {
    if (changes.status[i] != status) continue;
    if (++listed <= kMaxDetailed) text += "- " + MarkdownText(Describe(changes.edits[i])) + "\n";
  }
  const std::size_t above = NumberOf(changes, status) - listed;
  if (above > 0) text += "- " + std::to_string(above) + " listed above, with another table\n";
  return text + More(listed, std::min(listed, kMaxDetailed), what);
}

// The allowed changes, and those that were not checked. The others are in findings, or blocked by them.
std::string OtherEdits(const TableResult& table, const FoldedEdits& edits, const ServicePaths* paths) {
  if (!table.changes || table.status != Status::kRefused) return "";
  const Changes& changes = *table.changes;
  const std::string start = "\n" + NameOf(table, paths) + ": ";
  const std::string allowed = EditList(changes, edits, EditStatus::kAllowed, "allowed changes");
  const std::string not_checked = EditList(changes, edits, EditStatus::kNotChecked, "changes not checked");
  const bool has_hidden = changes.allowed_together.Refused();
  std::string text;
  if (!changes.edits.empty()) text += start + MarkdownText(AllowedPart(changes)) + (has_hidden ? not_checked : allowed);
  if (changes.stopped) text += start + MarkdownText(StoppedText(changes)) + (has_hidden ? "\n\n" : not_checked);
  return text;
}

}  // namespace

std::string RenderMarkdown(const Report& report) {
  const FoldedReport folded(report);
  const Summary summary = Summarize(folded);
  const Issues all(folded);
  const std::vector<Issue>& issues = all.all();
  std::string text = std::string("### korvelcheck: ") + WordOf(VerdictOf(summary)) + RemarkOn(summary) + "\n\n" +
                     MarkdownText(ToText(summary)) + "\n";
  const ServicePaths& paths = all.paths();
  const std::vector<std::string> notes = NotesOf(report, &paths);
  if (!notes.empty()) text += "\n";
  for (const std::string& note : notes) text += "- " + MarkdownText(note) + "\n";
  text += TableOf(issues, paths);
  const std::size_t detailed = std::min(issues.size(), kMaxDetailed);
  for (std::size_t i = 0; i < detailed; ++i) text += DetailsBlock(issues[i], paths);
  text += More(issues.size(), detailed, "findings without details here");
  const std::vector<FoldedEdits> edits = FoldEdits(folded);
  const ServicePaths* const several = report.inputs.size() > 2 ? &paths : nullptr;
  for (std::size_t i = 0; i < edits.size(); ++i) text += OtherEdits(report.tables[i], edits[i], several);
  return text;
}

}  // namespace korvel
