// One finding as a block of text. Held by tests/report/formats_test.cpp.
#include "report/render/text_findings.h"

#include <algorithm>
#include <string_view>

#include "report/result/words.h"
#include "report/text/one_line.h"

namespace korvel::report {
namespace {

constexpr std::size_t kNumberWidth = 6;

std::string LinesOf(const Mark* mark) {
  const std::optional<Snippet> snippet = mark == nullptr ? std::nullopt : SnippetOf(*mark);
  if (!snippet) return "";
  const std::string number = std::to_string(snippet->line);
  const std::string margin(kNumberWidth - std::min(kNumberWidth, number.size()), ' ');
  const std::string under(std::max(kNumberWidth, number.size()), ' ');
  return margin + number + " | " + snippet->text + "\n" + under + " | " + snippet->caret + "\n";
}

std::string RuleOf(const Verdict& verdict) { return verdict.rule.empty() ? "" : " [" + verdict.rule + "]"; }

// The table says its own.
std::string CodeOf(const TableResult& table, const Finding& finding) {
  const int code = finding.verdict.code;
  return code == table.code ? "" : "   code: " + std::to_string(code) + " " + CodeNameOf(code) + "\n";
}

// The side that does not lead: where it was, or where it would be.
std::string OtherSide(const TableResult& table, const Finding& finding, const Marks& marks) {
  const bool leads_old = &LeadOf(table, finding) == &finding.old_place;
  const Mark* const other = marks.Find(leads_old ? finding.new_place : finding.old_place);
  if (other == nullptr) return "";
  if (leads_old) return "   now: " + Told(*other) + "\n";
  // A schema compared with itself was what it is.
  const Mark* const lead = marks.Find(LeadOf(table, finding));
  if (lead != nullptr && lead->file == other->file && lead->span.begin == other->span.begin) return "";
  return "   was: " + Told(*other) + "\n" + LinesOf(other);
}

std::string Cause(const TableResult& table, const Finding& finding, const Marks& marks) {
  const std::vector<std::string> edits = EditsOf(table, finding);
  if (edits.empty())
    return WasRefusedBefore(table) ? "   no change brings this about: the schema is refused as it already was\n" : "";
  if (edits.size() == 1)
    return "   change: " + edits.front() + (finding.path.empty() ? "" : ", at " + OneLine(finding.path)) + "\n";
  std::string text = "   only together:\n";
  for (std::size_t i = 0; i < edits.size(); ++i) {
    const Edit& edit = table.changes->edits[finding.edits[i]];
    const Mark* const place = marks.Find(edit.new_place ? edit.new_place : edit.old_place);
    text += "      " + edits[i] + (place == nullptr ? "" : " (" + Told(*place) + ")") + "\n";
  }
  return text;
}

std::string Also(const FoldedFinding& folded) {
  std::string text;
  for (const std::string& path : AlsoOf(folded)) text += (text.empty() ? "" : ", ") + path;
  return text.empty() ? "" : "   also: " + text + "\n";
}

}  // namespace

std::string Coloured(const char* text, const char* colour, bool wanted) {
  return wanted ? std::string("\x1b[") + colour + "m" + text + "\x1b[0m" : text;
}

std::string TextOfFinding(const FoldedFinding& folded, const Marks& marks, bool colour) {
  const TableResult& table = *folded.table;
  const Finding& finding = *folded.finding;
  const Mark* const lead = marks.Find(LeadOf(table, finding));
  std::string text = lead == nullptr ? "" : Told(*lead) + ": ";
  text += finding.waiver ? Coloured("waived", "33", colour) : Coloured("refused", "31", colour);
  text += RuleOf(finding.verdict) + " " + TextOf(finding.verdict.text) + "\n" + LinesOf(lead);
  text += CodeOf(table, finding) + Cause(table, finding, marks) + OtherSide(table, finding, marks) + Also(folded);
  if (finding.waiver) text += "   waived until " + OneLine(finding.waiver->until) + ": " + OneLine(finding.waiver->reason) + "\n";
  text += "   way out: " + OneLine(finding.way_out) + "\n";
  return finding.fingerprint.empty() ? text : text + "   fingerprint: " + finding.fingerprint + "\n";
}

std::string TextOfRepeated(const TableResult& table, const Finding& finding, const Marks& marks) {
  const Mark* const lead = marks.Find(LeadOf(table, finding));
  return "   told above:" + (lead == nullptr ? "" : " " + Told(*lead)) + RuleOf(finding.verdict) +
         (finding.path.empty() ? "" : ", here at " + OneLine(finding.path)) + "\n";
}

}  // namespace korvel::report
