// A report as text for people. Every line stays one line, whatever a name contains. Tested by tests/report/formats_test.cpp and
// tests/tool/text_report_test.cpp.
#include <algorithm>
#include <set>
#include <string_view>

#include "base/text.h"
#include "report/render/render.h"
#include "report/result/notes.h"
#include "report/result/words.h"
#include "rule_docs/rule_docs.h"

namespace korvel {
namespace {

constexpr std::size_t kMaxListed = 50;  // edits of one status; the JSON report has all
constexpr std::size_t kNumberWidth = 6;

// SGR colors of a terminal.
constexpr char kRed[] = "31", kGreen[] = "32", kYellow[] = "33", kCyan[] = "36";

const char* ColorOf(Status status) {
  constexpr const char* kColors[] = {kGreen, kRed, kCyan};
  return kColors[static_cast<std::size_t>(status)];
}

const char* ColorOf(OverallVerdict verdict) {
  constexpr const char* kColors[] = {kGreen, kRed, kYellow, kRed, kYellow};
  return kColors[static_cast<std::size_t>(verdict)];
}

const char* ColorOf(const Finding& finding) {
  if (finding.level == Level::kNote) return kCyan;
  return finding.waiver || finding.level == Level::kWarning ? kYellow : kRed;
}

std::string Colored(const char* text, const char* color, bool wanted) {
  return wanted ? std::string("\x1b[") + color + "m" + text + "\x1b[0m" : text;
}

std::string InBrackets(const std::string& rule) { return rule.empty() ? "" : " [" + rule + "]"; }

// --- One finding ---

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

class FindingText {
 public:
  FindingText(const FoldedReport& report, const FoldedFinding& folded, const TextRanges& ranges)
      : report_(report),
        folded_(folded),
        table_(*folded.table),
        finding_(*folded.finding),
        ranges_(ranges),
        leads_old_(&LeadOf(table_, finding_) == &finding_.old_location),
        lead_(ranges.Find(LeadOf(table_, finding_))),
        other_(ranges.Find(leads_old_ ? finding_.new_location : finding_.old_location)) {}

  std::string Text(bool color) const {
    std::string text = lead_ == nullptr ? "" : ToText(*lead_) + ": ";
    text += Colored(WordOf(finding_), ColorOf(finding_), color);
    text += InBrackets(finding_.verdict.rule) + " " + SummaryOf(finding_.verdict) + "\n" + SnippetLines(lead_);
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
    return has_both && edit.kind != EditKind::kEntryRenamed && TextAt(*lead_) == key + edit.after;
  }

  std::string Cause() const {
    const std::vector<std::string> edits = EditsOf(table_, finding_);
    if (edits.empty()) return IsPreexisting(table_) ? std::string("  ") + kPreexisting + "\n" : "";
    if (edits.size() == 1) return IsChangeVisible() ? "" : "  change: " + edits.front() + "\n";
    std::string text = "  refused in combination:\n";
    for (std::size_t i = 0; i < edits.size(); ++i) {
      const Edit& edit = EditAt(i);
      const TextRange* const range = ranges_.Find(edit.new_location ? edit.new_location : edit.old_location);
      text += "    " + edits[i] + (range == nullptr ? "" : " (" + ToText(*range) + ")") + "\n";
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

// One line for consecutive findings that are listed with an earlier table.
std::string RepeatedFindings(const FoldedReport& report, const SharedItems& items, const TextRanges& ranges) {
  const FoldedFinding& first = report.findings()[items.first];
  const TextRange* const lead = ranges.Find(LeadOf(*first.table, *first.finding));
  const std::string path = items.path + first.finding->path.substr(items.instead_of.size());
  return "  same as above:" + (lead == nullptr ? "" : " " + ToText(*lead)) + InBrackets(first.finding->verdict.rule) +
         (path.empty() ? "" : ", here at " + OneLine(path)) +
         (items.count == 1 ? "" : ", and " + NextOf(items) + " of table " + OneLine(items.table->table)) + "\n";
}

// --- The report ---

class TextReport {
 public:
  TextReport(const Report& report, bool color, Dumps dumps)
      : report_(report), color_(color), folded_(report), edits_(FoldEdits(folded_)), ranges_(LocationsOf(folded_), dumps) {}

  std::string Text() {
    const Summary summary = Summarize(folded_);
    const OverallVerdict verdict = VerdictOf(summary);
    text_ = "verdict: " + Colored(WordOf(verdict), ColorOf(verdict), color_) + RemarkOn(summary) + "\n";
    for (const std::string& note : NotesOf(report_)) text_ += note + "\n";
    for (const InputFault& fault : report_.faults) AddFault(fault);
    for (std::size_t i = 0; i < folded_.tables().size(); ++i) AddTable(folded_.tables()[i], edits_[i]);
    for (const ProjectFinding& finding : report_.project) AddProjectFinding(finding);
    return text_ + ToText(summary) + "\n" + ExplainHint();
  }

  // The blocks of the tables about which there is something to say.
  std::string Tables() {
    for (std::size_t i = 0; i < folded_.tables().size(); ++i) {
      const TableResult& table = *folded_.tables()[i].table;
      if (table.status != Status::kAllowed || !table.advice.findings.empty()) AddTable(folded_.tables()[i], edits_[i]);
    }
    return std::move(text_);
  }

 private:
  std::string Word(Status status) const { return Colored(WordOf(status), ColorOf(status), color_); }

  void AddFault(const InputFault& fault) {
    text_ += (fault.file.empty() ? "" : ToText(LocationOf(fault)) + ": ") + Colored("error", kRed, color_) + " [" +
             RuleOf(fault.kind).id + "] " + OneLine(fault.text) + "\n";
    for (const std::string& line : DetailsOf(fault)) text_ += "  " + line + "\n";
  }

  void AddTable(const FoldedTable& folded, const FoldedEdits& edits) {
    const TableResult& table = *folded.table;
    const std::span<const FoldedFinding> findings = folded.findings;
    const std::string name = TableAndBaseline(table);
    text_ += ToText(*ranges_.Find(table.declared)) + ": " + Word(table.status);
    if (table.status != Status::kRefused) {
      text_ += ": " + name + (table.status == Status::kNew ? " (not compared)" : "") + "\n";
      AddFindings(folded);
      return;
    }
    const std::string result = name + ": " + std::to_string(table.verdict.code) + " " + CodeNameOf(table.verdict.code) +
                               (table.removed ? " (removed)" : "") + "\n";
    // A history has listed the refusal of a table without changes above its warnings. The first finding usually has the same
    // text, with a more exact location.
    const bool is_listed = !table.changes && !table.advice.findings.empty();
    const bool has_text =
        !findings.empty() && findings.front().finding->verdict.text == table.verdict.text && !table.verdict.text.empty();
    const bool is_repeated = is_listed || has_text;
    text_ += is_repeated ? ": " + result
                         : InBrackets(table.verdict.rule) + " " + SummaryOf(table) + "\n  " + CheckerLine(table.verdict.text) +
                               "\n  " + result;
    AddFindings(folded);
    if (!table.changes) return;
    const bool has_unchecked = NumberOf(*table.changes, EditStatus::kNotChecked) > 0;
    if (table.changes->edits.size() > 1 || has_unchecked) AddChanges(*table.changes, edits);
  }

  void AddFindings(const FoldedTable& folded) {
    for (const FoldedFinding& finding : folded.findings) text_ += FindingText(folded_, finding, ranges_).Text(color_);
    for (const SharedItems& items : folded.shared) text_ += RepeatedFindings(folded_, items, ranges_);
    for (const std::string& limit : LimitsOf(folded)) text_ += "  " + limit + "\n";
  }

  void AddChanges(const Changes& changes, const FoldedEdits& edits) {
    text_ += "  " + AllowedPart(changes) + (NumberOf(changes, EditStatus::kAllowed) == 0 ? "\n" : ":\n");
    AddEdits(changes, edits, EditStatus::kAllowed);
    AddGroup(changes, edits, EditStatus::kRefused, "refused");
    AddGroup(changes, edits, EditStatus::kBlocked, "blocked by a refused change");
    AddGroup(changes, edits, EditStatus::kNotChecked, "not checked");
  }

  void AddGroup(const Changes& changes, const FoldedEdits& edits, EditStatus status, const char* what) {
    const std::size_t number = NumberOf(changes, status);
    if (number == 0) return;
    text_ += "  " + std::to_string(number) + (number == 1 ? " is " : " are ") + what + ":\n";
    AddEdits(changes, edits, status);
  }

  // Edits that were listed with an earlier table are only counted.
  void AddEdits(const Changes& changes, const FoldedEdits& edits, EditStatus status) {
    std::size_t listed = 0;
    for (const std::size_t i : edits.listed) {
      if (changes.status[i] != status) continue;
      if (++listed <= kMaxListed) text_ += "    " + OneLine(Describe(changes.edits[i])) + "\n";
    }
    if (listed > kMaxListed) text_ += "    ... and " + std::to_string(listed - kMaxListed) + " more (--format json lists all)\n";
    const std::size_t above = NumberOf(changes, status) - listed;
    if (above > 0) text_ += "    " + std::to_string(above) + " listed above, with another table\n";
  }

  void AddProjectFinding(const ProjectFinding& finding) {
    const bool is_error = finding.level == ProjectFinding::Level::kError && !finding.waiver;
    text_ += FileLineColumn(PathText(finding.file), finding.position) + ": " +
             Colored(WordOf(finding), is_error ? kRed : kYellow, color_) + " [" + finding.rule + "] " + OneLine(finding.text) +
             "\n" + EndOf(finding);
  }

  // Names the command that explains a refusal: a rule of the report, else a result code.
  std::string ExplainHint() const {
    std::set<std::string> rules;
    std::string first;
    const auto add = [&](const std::string& rule, int code) {
      const std::string id = FindRule(rule) == nullptr ? CodeNameOf(code) : rule;
      if (first.empty()) first = id;
      if (!id.empty()) rules.insert(id);
    };
    for (const InputFault& fault : report_.faults) add(RuleOf(fault.kind).id, 0);
    for (const FoldedFinding& folded : folded_.findings()) add(folded.finding->verdict.rule, folded.finding->verdict.code);
    for (const TableResult& table : report_.tables) {
      if (table.status == Status::kRefused && !table.changes) add(table.verdict.rule, table.verdict.code);
    }
    if (first.empty()) return "";
    const std::string command = "'korvelcheck explain " + first + "'";
    if (rules.size() == 1)
      return "Run " + command + (FindRule(first) == nullptr ? " for the result code.\n" : " for the rule.\n");
    return "Run 'korvelcheck explain ID' for a rule, for example " + command + ".\n";
  }

  const Report& report_;
  bool color_;
  FoldedReport folded_;
  std::vector<FoldedEdits> edits_;
  TextRanges ranges_;
  std::string text_;
};

}  // namespace

std::string RenderTablesText(const Report& report, bool color) { return TextReport(report, color, Dumps::kShown).Tables(); }

std::string RenderText(const Report& report, bool color) { return TextReport(report, color, Dumps::kHidden).Text(); }

}  // namespace korvel
