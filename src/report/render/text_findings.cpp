// One finding as a block of text. Held by tests/report/formats_test.cpp.
#include "report/render/text_findings.h"

#include <algorithm>
#include <string_view>

#include "base/one_line.h"
#include "report/result/words.h"

namespace korvel {
namespace {

constexpr std::size_t kNumberWidth = 6;

std::string LinesOf(const TextRange* mark) {
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
std::string OtherSide(const TableResult& table, const Finding& finding, const TextRanges& marks) {
  const bool leads_old = &LeadOf(table, finding) == &finding.old_location;
  const TextRange* const other = marks.Find(leads_old ? finding.new_location : finding.old_location);
  if (other == nullptr) return "";
  if (leads_old) return "   now: " + ToText(*other) + "\n";
  // A schema compared with itself was what it is.
  const TextRange* const lead = marks.Find(LeadOf(table, finding));
  if (lead != nullptr && lead->file == other->file && lead->span.begin == other->span.begin) return "";
  return "   was: " + ToText(*other) + "\n" + LinesOf(other);
}

std::string Cause(const TableResult& table, const Finding& finding, const TextRanges& marks) {
  const std::vector<std::string> edits = EditsOf(table, finding);
  if (edits.empty())
    return WasRefusedBefore(table) ? "   no change brings this about: the schema is refused as it already was\n" : "";
  if (edits.size() == 1)
    return "   change: " + edits.front() + (finding.path.empty() ? "" : ", at " + OneLine(finding.path)) + "\n";
  std::string text = "   only together:\n";
  for (std::size_t i = 0; i < edits.size(); ++i) {
    const Edit& edit = table.changes->edits[finding.edits[i]];
    const TextRange* const place = marks.Find(edit.new_location ? edit.new_location : edit.old_location);
    text += "      " + edits[i] + (place == nullptr ? "" : " (" + ToText(*place) + ")") + "\n";
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

std::string TextOfFinding(const FoldedFinding& folded, const TextRanges& marks, bool colour) {
  const TableResult& table = *folded.table;
  const Finding& finding = *folded.finding;
  const TextRange* const lead = marks.Find(LeadOf(table, finding));
  std::string text = lead == nullptr ? "" : ToText(*lead) + ": ";
  text += finding.waiver ? Coloured("waived", "33", colour) : Coloured("refused", "31", colour);
  text += RuleOf(finding.verdict) + " " + TextOf(finding.verdict.text) + "\n" + LinesOf(lead);
  text += CodeOf(table, finding) + Cause(table, finding, marks) + OtherSide(table, finding, marks) + Also(folded);
  if (finding.waiver) text += "   waived until " + OneLine(finding.waiver->until) + ": " + OneLine(finding.waiver->reason) + "\n";
  text += "   way out: " + OneLine(finding.suggestion) + "\n";
  return finding.fingerprint.empty() ? text : text + "   fingerprint: " + finding.fingerprint + "\n";
}

std::string TextOfRepeated(const TableResult& table, const Finding& finding, const TextRanges& marks) {
  const TextRange* const lead = marks.Find(LeadOf(table, finding));
  return "   told above:" + (lead == nullptr ? "" : " " + ToText(*lead)) + RuleOf(finding.verdict) +
         (finding.path.empty() ? "" : ", here at " + OneLine(finding.path)) + "\n";
}

}  // namespace korvel
