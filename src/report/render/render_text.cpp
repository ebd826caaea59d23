// The report as text: its frame, one block a table. Every line stays one line, whatever a name holds. Findings are laid out by
// text_findings.cpp. Held by tests/report/formats_test.cpp and tests/tool/text_report_test.cpp.
#include <set>

#include "base/one_line.h"
#include "report/render/render.h"
#include "report/render/text_findings.h"
#include "report/result/words.h"

namespace korvel {
namespace {

// Most edits of one kind that are listed; the JSON report has all.
constexpr std::size_t kMaxListed = 50;

const char* ColourOf(Status status) {
  constexpr const char* kColours[] = {"32", "31", "36"};
  return kColours[static_cast<std::size_t>(status)];
}

class TextReport {
 public:
  TextReport(const Report& report, bool colour)
      : report_(report), colour_(colour), marks_(LocationsOf(report, false)), folded_(Fold(report)) {}

  std::string Text() {
    const Summary summary = Summarize(report_);
    const Status verdict = VerdictOf(summary);
    text_ = "verdict: " + Word(verdict) + RemarkOn(summary) + "\n";
    for (const FileNote& note : report_.files) text_ += ToText(note) + "\n";
    auto next = folded_.cbegin();
    for (const TableResult& table : report_.tables) {
      auto end = next;
      while (end != folded_.cend() && end->table == &table) ++end;
      AddTable(table, {next, end});
      next = end;
    }
    for (const ProjectFinding& finding : report_.project) AddProjectFinding(finding);
    return text_ + ToText(summary) + "\n";
  }

 private:
  std::string Word(Status status) const { return Coloured(WordOf(status), ColourOf(status), colour_); }
  std::string Place(const TableResult& table) const { return ToText(*marks_.Find(table.declared)) + ":"; }

  void AddTable(const TableResult& table, std::span<const FoldedFinding> findings) {
    const std::string name = "table " + OneLine(table.table);
    text_ += Place(table) + " " + Word(table.status);
    if (table.status != Status::kRefused) {
      text_ += ": " + name + (table.status == Status::kNew ? " (not compared)" : "") + "\n";
      return;
    }
    // The first finding says it again, at the very place.
    const bool is_said_next = !findings.empty() && findings.front().finding->verdict.text == table.text && !table.text.empty();
    const std::string answer =
        name + ": " + std::to_string(table.code) + " " + CodeNameOf(table.code) + (table.removed ? " (gone)" : "");
    if (is_said_next) {
      text_ += ": " + answer + "\n";
    } else {
      text_ += (table.rule.empty() ? "" : " [" + table.rule + "]") + " " + TextOf(table.text) + "\n   " + answer + "\n";
    }
    if (table.changes) AddChanges(table, findings);
  }

  void AddChanges(const TableResult& table, std::span<const FoldedFinding> findings) {
    std::set<const Finding*> told;
    for (const FoldedFinding& folded : findings) {
      text_ += TextOfFinding(folded, marks_, colour_);
      told.insert(folded.finding);
    }
    for (const Finding& finding : table.changes->findings) {
      if (!told.contains(&finding)) text_ += TextOfRepeated(table, finding, marks_);
    }
    const Changes& changes = *table.changes;
    if (changes.stopped) {
      text_ += "   stopped at " + Counted(changes.findings.size(), "finding") +
               "; changes that were not looked at count as waiting; --max-findings looks for more\n";
    }
    if (changes.edits.size() > 1) AddParts(changes);
  }

  // What may go, what not, what waits.
  void AddParts(const Changes& changes) {
    text_ += "   " + AllowedPart(changes) + (NumberOf(changes, EditStatus::kAllowed) == 0 ? "\n" : ":\n");
    AddEdits(changes, EditStatus::kAllowed);
    if (const std::size_t refused = NumberOf(changes, EditStatus::kRefused); refused > 0) {
      text_ += "   " + std::to_string(refused) + (refused == 1 ? " is refused:\n" : " are refused:\n");
      AddEdits(changes, EditStatus::kRefused);
    }
    if (const std::size_t blocked = NumberOf(changes, EditStatus::kBlocked); blocked > 0) {
      text_ += "   " + std::to_string(blocked) + (blocked == 1 ? " waits for others:\n" : " wait for others:\n");
      AddEdits(changes, EditStatus::kBlocked);
    }
  }

  void AddEdits(const Changes& changes, EditStatus status) {
    std::size_t left = kMaxListed;
    for (std::size_t i = 0; i < changes.edits.size() && left > 0; ++i) {
      if (changes.status[i] != status) continue;
      text_ += "      " + OneLine(Describe(changes.edits[i])) + "\n";
      --left;
    }
    const std::size_t all = NumberOf(changes, status);
    if (all > kMaxListed) text_ += "      ... and " + std::to_string(all - kMaxListed) + " more (--format json lists all)\n";
  }

  void AddProjectFinding(const ProjectFinding& finding) {
    text_ += OneLine(finding.file) + ":" + std::to_string(finding.position.line) + ":" + std::to_string(finding.position.column) +
             ": " + Coloured("error", "31", colour_) + " [" + finding.rule + "] " + OneLine(finding.text) + "\n";
    if (!finding.suggestion.empty()) text_ += "   way out: " + OneLine(finding.suggestion) + "\n";
  }

  const Report& report_;
  bool colour_;
  TextRanges marks_;
  std::vector<FoldedFinding> folded_;
  std::string text_;
};

}  // namespace

std::string RenderText(const Report& report, bool colour) { return TextReport(report, colour).Text(); }

}  // namespace korvel
