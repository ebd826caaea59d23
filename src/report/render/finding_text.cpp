// Tested by tests/report/formats_test.cpp and tests/tool/text_report_test.cpp.
#include "report/render/finding_text.h"

#include <algorithm>
#include <string_view>

#include "base/text.h"
#include "report/render/text_color.h"
#include "report/result/words.h"
#include "rule_docs/fault_rules.h"

namespace korvel {
namespace {

constexpr std::size_t kNumberWidth = 6;

std::string SnippetLines(const TextRange* range) {
  const std::optional<Snippet> snippet = range == nullptr ? std::nullopt : SnippetOf(*range);
  if (!snippet) return "";
  const std::string number = std::to_string(snippet->line);
  const std::string margin(kNumberWidth - std::min(kNumberWidth, number.size()), ' ');
  const std::string under(std::max(kNumberWidth, number.size()), ' ');
  return margin + number + " | " + snippet->text + "\n" + under + " | " + snippet->caret + "\n";
}

// The text of a range within its line; empty in an image.
std::string_view TextAt(const TextRange& range) {
  if (!range.begin || range.span.end > range.line_begin + range.line.size()) return "";
  return range.line.substr(range.span.begin - range.line_begin, range.span.end - range.span.begin);
}

class OneFinding {
 public:
  OneFinding(const FoldedReport& report, const FoldedFinding& folded, const TextRanges& ranges)
      : report_(report),
        folded_(folded),
        table_(*folded.table),
        finding_(*folded.finding),
        ranges_(ranges),
        leads_old_(&LeadOf(table_, finding_) == &finding_.old_location),
        lead_(ranges.Find(LeadOf(table_, finding_))),
        other_(ranges.Find(leads_old_ ? finding_.new_location : finding_.old_location)) {}

  // The first line, without its end.
  std::string Heading(bool color) const {
    return (lead_ == nullptr ? "" : Colored(ToText(*lead_), kBold, color) + ": ") +
           Colored(WordOf(finding_), ColorOf(finding_), color) + InBrackets(finding_.verdict.rule) + " " +
           SummaryOf(finding_.verdict);
  }

  std::string Text(bool color) const {
    std::string text = Heading(color) + "\n" + SnippetLines(lead_);
    if (!IsAdvice(finding_)) text += "  " + CheckerLine(finding_.verdict.text) + "\n" + Code();
    text += Cause() + Path() + OtherSide() + Also();
    if (finding_.waiver) text += "  " + ToText(*finding_.waiver) + "\n";
    text += "  suggestion: " + OneLine(finding_.suggestion) + "\n";
    return finding_.fingerprint.empty() ? text : text + "  fingerprint: " + finding_.fingerprint + "\n";
  }

 private:
  const Edit& EditAt(std::size_t i) const { return table_.EditsFor(finding_)[finding_.edits[i]]; }

  // The code of the table is in the line of the table.
  std::string Code() const {
    const int code = finding_.verdict.code;
    return code == table_.verdict.code ? "" : "  code: " + std::to_string(code) + " " + CodeNameOf(code) + "\n";
  }

  // The old value, where there is one single change of a value.
  std::string OldValue() const {
    if (finding_.edits.size() != 1) return "";
    const Edit& edit = EditAt(0);
    const bool is_value = edit.kind != EditKind::kEntryMoved && edit.kind != EditKind::kIndexMoved;
    return is_value ? OneLine(edit.before) : "";
  }

  // Whether a reader sees the change already: the caret marks the new value, and the old value follows.
  bool IsChangeVisible() const {
    const Edit& edit = EditAt(0);
    const bool has_both = !leads_old_ && lead_ != nullptr && other_ != nullptr && !OldValue().empty();
    const std::string key = edit.kind == EditKind::kTableAttribute && !edit.item.empty() ? edit.item + "=" : "";
    const bool is_rename = edit.kind == EditKind::kEntryRenamed || edit.kind == EditKind::kMetaRenamed;
    return has_both && !is_rename && edit.reuse.empty() && TextAt(*lead_) == key + edit.after;
  }

  std::string Cause() const {
    const std::size_t edits = finding_.edits.size();
    if (edits == 0) return IsPreexisting(table_) ? std::string("  ") + kPreexisting + "\n" : "";
    if (edits == 1) return IsChangeVisible() ? "" : "  change: " + DescribeIn(table_.table, EditAt(0)) + "\n";
    std::string text = "  refused in combination:\n";
    for (std::size_t i = 0; i < edits; ++i) {
      const Edit& edit = EditAt(i);
      const TextRange* const range = ranges_.Find(edit.new_location ? edit.new_location : edit.old_location);
      text += "    " + DescribeIn(table_.table, edit) + (range == nullptr ? "" : " (" + ToText(*range) + ")") + "\n";
    }
    return text;
  }

  // Only for a field inside a structure; the other lines name the table and its own fields.
  std::string Path() const {
    const bool is_inside = !finding_.edits.empty() && !EditAt(0).meta.empty() && EditAt(0).meta != table_.table;
    return is_inside ? "  path: " + OneLine(finding_.path) + "\n" : "";
  }

  std::string OtherSide() const {
    if (other_ == nullptr) return "";
    if (leads_old_) return "  missing in: " + ToText(*other_) + "\n";
    // Of a schema that is checked alone both sides are the same.
    if (lead_ != nullptr && BeginAlike(*lead_, *other_)) return "";
    const std::string value = OldValue();
    return "  was: " + ToText(*other_) + (value.empty() ? "" : "  " + value) + "\n";
  }

  std::string Also() const {
    const std::string text = Join(AlsoOf(report_, folded_), ", ");
    return text.empty() ? "" : "  also affected: " + text + "\n";
  }

  const FoldedReport& report_;
  const FoldedFinding& folded_;
  const TableResult& table_;
  const Finding& finding_;
  const TextRanges& ranges_;
  bool leads_old_;
  const TextRange* lead_;   // of the side that is reported
  const TextRange* other_;  // of the other side
};

}  // namespace

std::string InBrackets(const std::string& rule) { return rule.empty() ? "" : " [" + rule + "]"; }

std::string FindingText(const FoldedReport& report, const FoldedFinding& folded, const TextRanges& ranges, bool color) {
  return OneFinding(report, folded, ranges).Text(color);
}

std::string FaultText(const InputFault& fault, bool color) {
  const std::string location = fault.file.empty() ? "" : Colored(ToText(LocationOf(fault)), kBold, color) + ": ";
  std::string text =
      location + Colored("error", kRed, color) + InBrackets(RuleOf(fault.kind).id) + " " + OneLine(fault.text) + "\n";
  for (const std::string& line : DetailsOf(fault)) text += "  " + line + "\n";
  return text;
}

std::string ProjectFindingText(const ProjectFinding& finding, bool color) {
  return Colored(FileLineColumn(PathText(finding.file), finding.position), kBold, color) + ": " +
         Colored(WordOf(finding), ColorOf(finding), color) + InBrackets(finding.rule) + " " + OneLine(finding.text) + "\n" +
         EndOf(finding);
}

std::string KnownFindingText(const FoldedReport& report, const FoldedFinding& folded, const TextRanges& ranges, std::size_t step,
                             bool color) {
  return OneFinding(report, folded, ranges).Heading(color) + ": same as in step " + std::to_string(step) + "\n";
}

std::string RepeatedFindingsText(const FoldedReport& report, const SharedItems& items, const TextRanges& ranges) {
  const FoldedFinding& first = report.findings()[items.first];
  const TextRange* const lead = ranges.Find(LeadOf(*first.table, *first.finding));
  const std::string path = items.path + first.finding->path.substr(items.instead_of.size());
  return "  same as above:" + (lead == nullptr ? "" : " " + ToText(*lead)) + InBrackets(first.finding->verdict.rule) +
         (path.empty() ? "" : ", here at " + OneLine(path)) +
         (items.count == 1 ? "" : ", and " + NextOf(items) + " of table " + OneLine(items.table->table)) + "\n";
}

}  // namespace korvel
