// Wording that several formats share. Wording of one format is in its renderer. Tested by tests/report/formats_test.cpp.
#include "report/result/words.h"

#include <algorithm>

#include "base/text.h"
#include "common/result_codes.h"
#include "rule_docs/rule_docs.h"

namespace korvel {

const char* WordOf(Status status) {
  constexpr const char* kWords[] = {"allowed", "refused", "new"};
  return kWords[static_cast<std::size_t>(status)];
}

const char* WordOf(EditStatus status) {
  constexpr const char* kWords[] = {"allowed", "refused", "blocked", "not-checked"};
  return kWords[static_cast<std::size_t>(status)];
}

OverallVerdict VerdictOf(const Summary& summary) {
  const bool hides_files = summary.files_dropped + summary.projects_unreadable > 0;
  if (summary.faults > 0 || (hides_files && (summary.hiding > 0 || summary.failing == 0))) return OverallVerdict::kIncomplete;
  if (summary.compared == 0) return OverallVerdict::kNothingCompared;
  if (summary.refused > 0) return OverallVerdict::kRefused;
  return summary.is_unchanged ? OverallVerdict::kUnchanged : OverallVerdict::kAllowed;
}

const char* WordOf(OverallVerdict verdict) {
  constexpr const char* kWords[] = {"allowed", "refused", "nothing-compared", "incomplete", "unchanged"};
  return kWords[static_cast<std::size_t>(verdict)];
}

std::string RemarkOn(const Summary& summary) {
  const std::size_t files = summary.files_not_checked;
  if (files > 0) return " (" + Counted(files, "file") + (files == 1 ? " was" : " were") + " not checked)";
  if (summary.faults > 0) return " (the check failed)";
  const OverallVerdict verdict = VerdictOf(summary);
  const bool names_files = verdict == OverallVerdict::kIncomplete || verdict == OverallVerdict::kRefused;
  const std::size_t dropped = names_files ? summary.files_dropped : 0;
  const std::string end = summary.hiding == 0 ? "; waived)" : ")";
  if (dropped > 0) return " (" + Counted(dropped, "file") + (dropped == 1 ? " is" : " are") + " no longer checked" + end;
  if (names_files && summary.projects_unreadable > 0) return " (a project file of the baseline cannot be read" + end;
  if (summary.failing_for_warnings > 0) return " (warnings fail this call)";
  if (summary.refused > 0 && summary.failing == 0) return " (all waived)";
  if (summary.compared == 0 && summary.added > 0) return " (all tables are new)";
  if (summary.refused == 0 && summary.failing > 0) return " (but the project file has an error)";
  if (verdict == OverallVerdict::kUnchanged) return " (the baseline is the commit that is checked out)";
  const bool has_warnings = summary.warnings.all > summary.warnings.waived || summary.settings_changed > 0;
  return summary.refused == 0 && has_warnings ? " (with warnings)" : "";
}

std::string ToText(const Waiver& waiver) {
  return std::string("waived") + (waiver.is_wide ? " (wide: any change of this rule here)" : "") + " until " +
         OneLine(waiver.until) + ": " + OneLine(waiver.reason);
}

std::vector<std::string> SuggestionLines(std::string_view suggestion) {
  std::vector<std::string> lines;
  for (std::size_t end = 0; end != std::string_view::npos; suggestion.remove_prefix(std::min(end + 1, suggestion.size()))) {
    end = suggestion.find('\n');
    lines.push_back(OneLine(suggestion.substr(0, end)));
  }
  return lines;
}

std::string SuggestionText(std::string_view suggestion) {
  return suggestion.empty() ? "" : "  suggestion: " + Join(SuggestionLines(suggestion), "\n    ") + "\n";
}

TextRange LocationOf(const InputFault& fault) {
  TextRange range{.file = fault.file, .begin = {}, .end = {}, .span = {}, .line = {}};
  if (fault.line == 0) return range;
  range.begin = {fault.line, fault.column};
  range.end = *range.begin;
  return range;
}

std::vector<std::string> DetailsOf(const InputFault& fault, const ServicePaths* paths) {
  std::vector<std::string> lines;
  if (!fault.allowed.empty()) lines.push_back("allowed: " + OneLine(fault.allowed));
  if (!fault.needed_by.empty()) {
    lines.push_back(ShownName(fault.needed_by, paths) + " cannot be compared with " + ShownName(fault.file, paths));
  }
  return lines;
}

const char* WordOf(ProjectFinding::Level level) { return level == ProjectFinding::Level::kError ? "error" : "warning"; }

const char* WordOf(const ProjectFinding& finding) { return finding.waiver ? "waived" : WordOf(finding.level); }

std::string EndOf(const ProjectFinding& finding) {
  const std::string waiver = finding.waiver ? "  " + ToText(*finding.waiver) + "\n" : "";
  const std::string fingerprint = finding.fingerprint.empty() ? "" : "  fingerprint: " + finding.fingerprint + "\n";
  return waiver + SuggestionText(finding.suggestion) + fingerprint;
}

const char* WordOf(const Finding& finding) { return finding.waiver ? "waived" : WordOf(finding.level); }

std::string Counted(std::size_t number, const std::string& noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

namespace {

// "; 2 warnings, 1 waived"
std::string AdvicePart(const LevelCount& count, const char* noun) {
  if (count.all == 0) return "";
  std::string text = "; " + Counted(count.all, noun);
  if (count.waived > 0) text += ", " + std::to_string(count.waived) + " waived";
  if (count.left_out > 0) text += ", " + std::to_string(count.left_out) + " not listed (--max-findings raises the limit)";
  return text;
}

std::string SummaryText(const Summary& summary, const std::string& parts_of_allowed) {
  const auto number = [](std::size_t n) { return std::to_string(n); };
  std::string text = Counted(summary.refused, "table") + " refused, " + number(summary.allowed) + " allowed" + parts_of_allowed +
                     "; " + number(summary.compared) + " compared, " + number(summary.added) + " new, " +
                     number(summary.removed) + " removed";
  if (summary.findings > 0) text += "; " + Counted(summary.findings, "finding") + ", " + number(summary.waived) + " waived";
  if (summary.left_out > 0) text += ", " + number(summary.left_out) + " not listed (--max-findings raises the limit)";
  if (summary.files_not_checked > 0) text += "; " + Counted(summary.files_not_checked, "file") + " not checked";
  LevelCount warnings = summary.warnings;
  warnings.all += summary.project_warnings.all;
  warnings.waived += summary.project_warnings.waived;
  text += AdvicePart(summary.project_errors, "error") + AdvicePart(warnings, "warning") + AdvicePart(summary.notes, "note");
  if (summary.files_added + summary.files_deleted + summary.files_moved > 0) {
    text += "; files: " + number(summary.files_added) + " added, " + number(summary.files_deleted) + " deleted, " +
            number(summary.files_moved) + " moved";
  }
  return text;
}

}  // namespace

std::string ToText(const Summary& summary) { return SummaryText(summary, ""); }

std::string ToDetailedText(const Summary& summary) {
  if (!summary.unchanged) return ToText(summary);
  return SummaryText(summary, " (" + std::to_string(summary.allowed - *summary.unchanged) + " changed, " +
                                  std::to_string(*summary.unchanged) + " unchanged)");
}

namespace {

// "ERROR_VALUE_FIELD: " and the first sentence of what the code means.
std::string MeaningOf(int code) {
  const std::string name = CodeNameOf(code);
  if (name.empty()) return "the checker returned " + std::to_string(code);
  const std::string& meaning = FindCodeDoc(code).meaning;
  return name + ": " + meaning.substr(0, std::min(meaning.find(". "), meaning.find_last_not_of('.') + 1));
}

}  // namespace

std::string SummaryOf(const Verdict& verdict) {
  const RefusalRow* const row = FindRule(verdict.rule);
  return row == nullptr ? MeaningOf(verdict.code) : row->summary;
}

std::string SummaryOf(const TableResult& table) {
  const bool is_explained = !table.removed || !table.verdict.rule.empty();
  return is_explained ? SummaryOf(table.verdict) : "the table was removed";
}

std::string CheckerLine(const std::string& text) { return "checker: " + (text.empty() ? "(no text)" : OneLine(text)); }

std::string ToText(const TextRange& range, const ServicePaths* paths) {
  const std::string file = paths == nullptr ? PathText(range.file) : PathText(paths->Shown(range.file));
  return range.begin ? FileLineColumn(file, *range.begin) : file;
}

std::string TableAndBaseline(const TableResult& table) {
  return "table " + OneLine(table.table) + (table.baseline.empty() ? "" : " against " + OneLine(table.baseline));
}

std::string CodeNameOf(int code) {
  const char* const name = ResultCodeName(code);
  return name == nullptr ? "" : name;
}

namespace {

constexpr char kWorkLimitText[] = "suggestions are incomplete from this table on: the search reached its limit for one call";

// Whether the element of the edit is missing from the new side. `after` of an element that moved to the front is empty, too.
bool IsRemoval(const Edit& edit) {
  const bool moves = edit.kind == EditKind::kEntryMoved || edit.kind == EditKind::kIndexMoved;
  return RemovesElement(edit) || (!moves && edit.after.empty() && !edit.before.empty());
}

}  // namespace

const Location& LeadOf(const TableResult& table, const Finding& finding) {
  const bool is_removal = finding.edits.empty() ? table.removed : IsRemoval(table.EditsFor(finding)[finding.edits.front()]);
  const bool is_old = finding.old_location && (is_removal || !finding.new_location);
  return is_old ? finding.old_location : finding.new_location;
}

std::vector<std::string> EditsOf(const TableResult& table, const Finding& finding) {
  std::vector<std::string> edits;
  if (table.is_alone) return edits;
  for (const std::size_t i : finding.edits) edits.push_back(OneLine(Describe(table.EditsFor(finding)[i])));
  return edits;
}

bool IsPreexisting(const TableResult& table) { return !table.removed && !table.is_alone; }

std::vector<std::string> AlsoOf(const FoldedReport& report, const FoldedFinding& folded) {
  if (folded.also_as) {
    const Finding& leader = *report.findings()[*folded.also_as].finding;
    return {"the same " + std::to_string(folded.also_count) + " tables and paths as finding " + leader.fingerprint};
  }
  std::vector<std::string> names;
  for (const FoldedFinding::Embedding& also : folded.also) {
    names.push_back(OneLine(also.path.empty() ? "table " + also.table->table : also.path));
  }
  return names;
}

std::size_t NumberOf(const Changes& changes, EditStatus status) {
  return static_cast<std::size_t>(std::ranges::count(changes.status, status));
}

std::string AllowedPart(const Changes& changes) {
  const std::size_t allowed = NumberOf(changes, EditStatus::kAllowed);
  const std::size_t checked = changes.edits.size() - NumberOf(changes, EditStatus::kNotChecked);
  const Verdict& together = changes.allowed_together;
  if (together.Refused() && checked < changes.edits.size()) {
    return "the checker stops at a pre-existing refusal: " + SummaryOf(together) + " (" + CheckerLine(together.text) + ")";
  }
  if (checked == 0) return "no change was checked";
  const std::string change = checked == changes.edits.size() ? "change" : "checked change";
  if (allowed == 0 && checked == 1) return "the only " + change + " is refused";
  if (allowed == 0) return "none of " + Counted(checked, change) + " is allowed on its own";
  const std::string part = std::to_string(allowed) + " of " + Counted(checked, change);
  return part + (allowed == 1 ? " is allowed on its own" : " are allowed on their own") + " (verified)";
}

std::string StoppedText(const Changes& changes) {
  return "stopped after " + Counted(changes.findings.size(), "finding") +
         ": the remaining changes were not checked; --max-findings raises the limit";
}

std::string NextOf(const SharedItems& items) {
  if (items.count == 1) return "";
  return "the next " + (items.count == 2 ? "finding" : Counted(items.count - 1, "finding"));
}

std::vector<std::string> LimitsOf(const FoldedTable& table) {
  std::vector<std::string> limits;
  if (table.table->changes && table.table->changes->stopped) limits.push_back(StoppedText(*table.table->changes));
  if (table.table->changes && table.table->changes->reached_work_limit) limits.emplace_back(kWorkLimitText);
  if (table.left_out > 0) {
    limits.push_back(Counted(table.left_out, "finding") + (table.left_out == 1 ? " is" : " are") +
                     " not listed: the report has as many as --max-findings allows");
  }
  return limits;
}

std::vector<Location> LocationsOf(const FoldedReport& folded, const std::vector<FoldedEdits>& edits) {
  std::vector<Location> locations;
  const auto add = [&](const auto& placed) {
    locations.push_back(placed.old_location);
    locations.push_back(placed.new_location);
  };
  for (const FoldedTable& table : folded.tables()) {
    locations.push_back(table.table->declared);
    for (const FoldedFinding& listed : table.findings) {
      add(*listed.finding);
      for (const std::size_t i : listed.finding->edits) add(table.table->EditsFor(*listed.finding)[i]);
    }
  }
  for (std::size_t i = 0; i < edits.size(); ++i) {
    for (const std::size_t edit : edits[i].listed) add(folded.tables()[i].table->changes->edits[edit]);
  }
  return locations;
}

}  // namespace korvel
