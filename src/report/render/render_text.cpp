// A report as text for people. Every line stays one line, whatever a name contains. Tested by tests/report/formats_test.cpp and
// tests/tool/text_report_test.cpp.
#include <algorithm>
#include <set>
#include <span>

#include "analysis/diff/same_table.h"
#include "base/text.h"
#include "report/render/finding_text.h"
#include "report/render/fix_hint.h"
#include "report/render/render.h"
#include "report/render/seen_findings.h"
#include "report/render/text_color.h"
#include "report/result/notes.h"
#include "report/result/words.h"
#include "rule_docs/rule_docs.h"

namespace korvel {
namespace {

constexpr std::size_t kMaxListed = 50;  // edits of one status; the JSON report has all

// Whether the version of the library is the only change that is allowed on its own: it is raised for the others.
bool AllowsOnlyLibraryVersion(const Changes& changes) {
  if (changes.allowed_together.Refused() || NumberOf(changes, EditStatus::kAllowed) != 1) return false;
  const auto allowed = std::ranges::find(changes.status, EditStatus::kAllowed) - changes.status.begin();
  return changes.edits[static_cast<std::size_t>(allowed)].kind == EditKind::kLibraryVersion;
}

class TextReport {
 public:
  TextReport(const Report& report, Detail detail, bool color, Dumps dumps)
      : report_(report),
        detail_(detail),
        color_(color),
        folded_(report),
        edits_(FoldEdits(folded_)),
        ranges_(LocationsOf(folded_), dumps) {}

  std::string Text() {
    const Summary summary = Summarize(folded_);
    const OverallVerdict verdict = VerdictOf(summary);
    text_ = "verdict: " + Colored(WordOf(verdict), ColorOf(verdict), color_) + RemarkOn(summary) + "\n";
    if (!IsQuiet()) AddNotes();
    for (const InputFault& fault : report_.faults) text_ += FaultText(fault, color_);
    AddTables();
    for (const ProjectFinding& finding : report_.project) {
      if (!IsQuiet() || Fails(report_, finding)) text_ += ProjectFindingText(finding, color_);
    }
    return IsQuiet() ? std::move(text_)
                     : text_ + ToDetailedText(summary) + "\n" + ExplainHint() + FixHint(folded_, folded_.findings());
  }

  std::string Tables(SeenFindings* seen, std::size_t step) {
    if (seen != nullptr) first_steps_ = seen->Add(folded_, step);
    AddTables();
    return std::move(text_);
  }

 private:
  bool IsQuiet() const { return detail_ == Detail::kQuiet; }

  bool IsShown(const TableResult& table) const {
    if (IsQuiet()) return Fails(report_, table);
    return detail_ == Detail::kVerbose || table.status != Status::kAllowed || !table.advice.findings.empty();
  }

  bool IsShown(const FoldedFinding& folded) const { return !IsQuiet() || Fails(report_, *folded.finding); }

  void AddNotes() {
    const bool is_short = detail_ != Detail::kVerbose;
    for (const std::string& note : is_short ? ShortNotesOf(report_) : NotesOf(report_)) text_ += note + "\n";
  }

  // The earlier step of a history that lists a finding; 0 for none.
  std::size_t FirstStepOf(const FoldedFinding& folded) const {
    return first_steps_.empty() ? 0 : first_steps_[static_cast<std::size_t>(&folded - folded_.findings().data())];
  }

  // Whether earlier tables or steps list everything about the table: its findings, and changes worth a line.
  bool IsRepeated(const FoldedTable& folded, const FoldedEdits& edits) const {
    const TableResult& table = *folded.table;
    const auto is_known = [&](const FoldedFinding& one) { return FirstStepOf(one) > 0; };
    if (folded.left_out > 0 || !std::ranges::all_of(folded.findings, is_known)) return false;
    const auto explains = [&](const FoldedFinding& one) {
      const Verdict& verdict = one.finding->verdict;
      return table.status == Status::kAllowed || (verdict.rule == table.verdict.rule && verdict.code == table.verdict.code);
    };
    const auto any_explains = [&](const SharedItems& items) {
      return std::ranges::any_of(std::span(folded_.findings()).subspan(items.first, items.count), explains);
    };
    if (std::ranges::none_of(folded.findings, explains) && std::ranges::none_of(folded.shared, any_explains)) return false;
    return !table.changes || (!table.changes->stopped && !table.changes->reached_work_limit && !ListsChanges(table, edits));
  }

  // Whether an edit of the table is listed that belongs to no finding.
  static bool ListsChanges(const TableResult& table, const FoldedEdits& edits) {
    return std::ranges::any_of(edits.listed, [&](std::size_t i) {
      return table.changes->status[i] != EditStatus::kRefused && table.changes->edits[i].kind != EditKind::kLibraryVersion;
    });
  }

  void AddTables() {
    std::vector<std::string> repeated;
    std::set<std::size_t> steps;  // that list the findings of these tables
    for (std::size_t i = 0; i < folded_.tables().size(); ++i) {
      const FoldedTable& table = folded_.tables()[i];
      if (!IsShown(*table.table)) continue;
      if (detail_ != Detail::kVerbose && IsRepeated(table, edits_[i])) {
        repeated.push_back(OneLine(table.table->table));
        for (const FoldedFinding& one : table.findings) steps.insert(FirstStepOf(one));
      } else {
        AddTable(table, edits_[i]);
      }
    }
    if (!repeated.empty()) AddRepeated(repeated, steps);
  }

  void AddRepeated(std::vector<std::string>& tables, const std::set<std::size_t>& steps) {
    const std::string numbers = Join(steps, ", ", [](std::size_t step) { return std::to_string(step); });
    const std::size_t number = tables.size();
    tables.resize(std::min(number, kMaxAlso));
    text_ += Counted(number, "more table") + (number == 1 ? " has" : " have") + " only findings that are listed above" +
             (steps.empty() ? "" : ", in step " + numbers) + ": " + Join(tables, ", ") + (number > kMaxAlso ? ", ...\n" : "\n");
  }

  std::string Word(Status status) const { return Colored(WordOf(status), ColorOf(status), color_); }

  void AddTable(const FoldedTable& folded, const FoldedEdits& edits) {
    const TableResult& table = *folded.table;
    text_ += Colored(ToText(*ranges_.Find(table.declared)), kBold, color_) + ": ";
    table.status == Status::kRefused ? AddRefused(folded) : AddOther(table);
    AddFindings(folded);
    if (table.changes && table.status == Status::kRefused && !IsQuiet()) AddChanges(table, edits);
  }

  // The heading of a table that is allowed or new.
  void AddOther(const TableResult& table) {
    const bool is_unchanged = table.is_unchanged.value_or(false) && !table.is_alone;
    text_ += (is_unchanged ? Colored("unchanged", kGreen, color_) : Word(table.status)) + ": " + TableAndBaseline(table);
    if (table.status == Status::kNew) text_ += " (not compared)";
    if (!is_unchanged && table.changes) text_ += ", " + Counted(CountOwnEdits(table.changes->edits), "change");
    text_ += "\n";
  }

  void AddRefused(const FoldedTable& folded) {
    const TableResult& table = *folded.table;
    const std::string result = TableAndBaseline(table) + ": " + std::to_string(table.verdict.code) + " " +
                               CodeNameOf(table.verdict.code) + (table.removed ? " (removed)" : "") + "\n";
    // A history has listed the refusal of a table without changes above its warnings. The first finding usually has the same
    // text, with a more exact location.
    const bool is_listed = !table.changes && !table.advice.findings.empty();
    const auto first = std::ranges::find_if(folded.findings, [&](const FoldedFinding& one) { return IsShown(one); });
    const bool has_text = first != folded.findings.end() && first->finding->verdict.text == table.verdict.text;
    const bool is_repeated = is_listed || (has_text && !table.verdict.text.empty());
    text_ += Word(table.status);
    text_ += is_repeated ? ": " + result
                         : InBrackets(table.verdict.rule) + " " + SummaryOf(table) + "\n  " + CheckerLine(table.verdict.text) +
                               "\n  " + result;
  }

  void AddFindings(const FoldedTable& folded) {
    for (const FoldedFinding& finding : folded.findings) {
      if (!IsShown(finding)) continue;
      const std::size_t step = FirstStepOf(finding);
      text_ +=
          step == 0 ? FindingText(folded_, finding, ranges_, color_) : KnownFindingText(folded_, finding, ranges_, step, color_);
    }
    for (const SharedItems& items : folded.shared) AddShared(items);
    for (const std::string& limit : LimitsOf(folded)) text_ += "  " + limit + "\n";
  }

  // Those that are shown: one line for consecutive ones.
  void AddShared(const SharedItems& items) {
    SharedItems shown = items;
    shown.count = 0;
    for (std::size_t i = items.first; i <= items.first + items.count; ++i) {
      if (i < items.first + items.count && IsShown(folded_.findings()[i])) {
        if (shown.count++ == 0) shown.first = i;
      } else if (shown.count > 0) {
        text_ += RepeatedFindingsText(folded_, shown, ranges_);
        shown.count = 0;
      }
    }
  }

  // Unless the findings say everything.
  void AddChanges(const TableResult& table, const FoldedEdits& edits) {
    const Changes& changes = *table.changes;
    const bool leaves_out_allowed = AllowsOnlyLibraryVersion(changes);
    const std::size_t shown = changes.edits.size() - (leaves_out_allowed ? 1 : 0);
    if (shown <= 1 && NumberOf(changes, EditStatus::kNotChecked) == 0) return;
    if (!leaves_out_allowed) {
      text_ += "  " + AllowedPart(changes) + (NumberOf(changes, EditStatus::kAllowed) == 0 ? "\n" : ":\n");
      AddEdits(table, edits, EditStatus::kAllowed);
    }
    AddGroup(table, edits, EditStatus::kRefused, "refused");
    AddGroup(table, edits, EditStatus::kBlocked, "blocked by a refused change");
    AddGroup(table, edits, EditStatus::kNotChecked, "not checked");
  }

  void AddGroup(const TableResult& table, const FoldedEdits& edits, EditStatus status, const char* what) {
    const std::size_t number = NumberOf(*table.changes, status);
    if (number == 0) return;
    text_ += "  " + std::to_string(number) + (number == 1 ? " is " : " are ") + what + ":\n";
    AddEdits(table, edits, status);
  }

  // Edits that were listed with an earlier table are only counted.
  void AddEdits(const TableResult& table, const FoldedEdits& edits, EditStatus status) {
    const Changes& changes = *table.changes;
    std::size_t listed = 0;
    for (const std::size_t i : edits.listed) {
      if (changes.status[i] != status) continue;
      if (++listed <= kMaxListed) text_ += "    " + DescribeIn(table.table, changes.edits[i]) + "\n";
    }
    if (listed > kMaxListed) text_ += "    ... and " + std::to_string(listed - kMaxListed) + " more (--format json lists all)\n";
    const std::size_t above = NumberOf(changes, status) - listed;
    if (above > 0) text_ += "    " + std::to_string(above) + " listed above, with another table\n";
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
  Detail detail_;
  bool color_;
  FoldedReport folded_;
  std::vector<FoldedEdits> edits_;
  TextRanges ranges_;
  std::vector<std::size_t> first_steps_;  // see SeenFindings; empty unless it is a step of a history
  std::string text_;
};

}  // namespace

std::string RenderTablesText(const Report& report, Detail detail, bool color, SeenFindings* seen, std::size_t step) {
  return TextReport(report, detail, color, Dumps::kShown).Tables(seen, step);
}

std::string RenderText(const Report& report, bool color) {
  return TextReport(report, report.detail, color, Dumps::kHidden).Text();
}

}  // namespace korvel
