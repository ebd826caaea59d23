// Tested by tests/report/review_test.cpp and formats_test.cpp.
#include "report/render/review_text.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "report/render/markdown_items.h"
#include "report/result/notes.h"

namespace korvel {
namespace {

// Limits of a summary: GitHub refuses comments of more than 65,536 characters, and people do not read long ones.
constexpr std::size_t kMaxSummary = 50'000;  // bytes
constexpr std::size_t kMaxDetails = 4'000;   // bytes of the details of one finding
constexpr std::size_t kMaxHead = 4'000;      // bytes of its location and summary
constexpr std::size_t kMaxCommand = 1'500;   // bytes of the command that waives it
constexpr std::size_t kMaxDetailed = 20;     // findings with details
constexpr std::size_t kMaxRules = 20;        // rules with their number of findings
constexpr std::size_t kMaxNotes = 10;        // files that were added, and others

// A text to which only pieces are added that fit.
class LimitedText {
 public:
  LimitedText(std::string begin, std::size_t limit) : text_(std::move(begin)), limit_(limit) {}

  bool Add(const std::string& piece) {
    const bool fits = text_.size() + piece.size() <= limit_;
    if (fits) text_ += piece;
    return fits;
  }
  // Adds the first pieces, at most `max`, and says how many `what` are left out.
  template <class Items, class PieceOf>
  void AddFirst(const Items& items, std::size_t max, const char* what, PieceOf piece_of) {
    std::size_t shown = 0;
    while (shown < std::min(items.size(), max) && Add(piece_of(items[shown]))) ++shown;
    text_ += More(items.size(), shown, what);
  }
  std::string Take() && { return std::move(text_); }

 private:
  std::string text_;
  std::size_t limit_;
};

int RankOf(const Issue& issue) { return issue.waived ? 3 : static_cast<int>(issue.level); }

// The fingerprint in waivers; "" for an issue that cannot be waived, or is. That of the issue may have a number appended.
std::string WaivableFingerprint(const Issue& issue) {
  if (issue.waived) return "";
  if (issue.project != nullptr) return issue.project->fingerprint;
  return issue.folded == nullptr ? "" : issue.folded->finding->fingerprint;
}

// The command that waives the issue, to complete and to copy; "" for one that cannot be waived, and if there are
// very many baselines.
std::string WaiveBlock(const Report& report, const Issue& issue) {
  const std::string fingerprint = WaivableFingerprint(issue);
  if (fingerprint.empty()) return "";
  std::string command = "korvelcheck waive " + fingerprint;
  for (const ReportBaseline& baseline : report.baselines) command += " --against " + ShellWord(baseline.name);
  if (report.baselines.empty() && issue.table != nullptr) {
    const Source* const second = issue.table->second;
    const Source* const first = issue.table->first == nullptr ? second : issue.table->first;
    command += " " + ShellWord(first->name) + " " + ShellWord(second->name);
  }
  const std::string block = MarkdownBlock("sh", command + " --reason 'REASON' --until YYYY-MM-DD\n");
  return block.size() > kMaxCommand ? "" : "\nTo waive it:\n\n" + block;
}

// The details as a list, as far as they fit, and how to waive the issue.
std::string DetailsWithWaiver(const Report& report, const Issue& issue, const ServicePaths& paths) {
  LimitedText list("", kMaxDetails);
  list.AddFirst(DetailsOf(issue, paths), kMaxDetails, "lines of details",
                [](const std::string& line) { return "- " + MarkdownText(line) + "\n"; });
  return std::move(list).Take() + WaiveBlock(report, issue);
}

// The location is left out if it is too long.
std::string Head(const Issue& issue, const std::string& location) {
  const std::string head = std::string("<b>") + StatusOf(issue) + "</b> " + MarkdownCode(issue.rule) + " ";
  const std::string summary = MarkdownText(issue.summary);
  const bool fits = location.size() + summary.size() <= kMaxHead;
  return head + (fits ? location + (location.empty() ? "" : " ") + summary : "(its names are too long to be shown)");
}

std::string FindingBlock(const Report& report, const Issue& issue, const ServicePaths& paths) {
  return "\n<details>\n<summary>" + Head(issue, LocationCode(issue, paths)) + "</summary>\n\n" +
         DetailsWithWaiver(report, issue, paths) + "\n</details>\n";
}

// --- Findings of each rule ---

struct RuleCount {
  std::string status;
  std::string rule;
  std::size_t findings = 0;
};

// In the order in which they first occur.
std::vector<RuleCount> CountRules(const std::vector<const Issue*>& issues) {
  std::vector<RuleCount> counts;
  for (const Issue* issue : issues) {
    const std::string status = StatusOf(*issue);
    auto found =
        std::ranges::find_if(counts, [&](const RuleCount& one) { return one.rule == issue->rule && one.status == status; });
    if (found == counts.end()) found = counts.insert(found, {status, issue->rule});
    ++found->findings;
  }
  return counts;
}

std::string RuleRow(const RuleCount& count) {
  return "| " + std::to_string(count.findings) + " | " + count.status + " | " + MarkdownCode(count.rule) + " |\n";
}

}  // namespace

std::vector<const Issue*> ReviewOrder(const std::vector<Issue>& issues) {
  std::vector<const Issue*> order;
  order.reserve(issues.size());
  for (const Issue& issue : issues) order.push_back(&issue);
  std::ranges::stable_sort(order, {}, [](const Issue* issue) { return RankOf(*issue); });
  return order;
}

std::string ReviewSummary(const FoldedReport& folded, const Issues& issues) {
  const Summary summary = Summarize(folded);
  LimitedText text(std::string("<!-- korvelcheck -->\n### korvelcheck: ") + WordOf(VerdictOf(summary)) + RemarkOn(summary) +
                       "\n\n" + MarkdownText(ToText(summary)) + "\n\n",
                   kMaxSummary);
  const ServicePaths& paths = issues.paths();
  text.AddFirst(NotesOf(folded.report(), &paths), kMaxNotes, "notes about files",
                [](const std::string& note) { return "- " + MarkdownText(note) + "\n"; });
  const std::vector<const Issue*> order = ReviewOrder(issues.all());
  if (order.empty()) return std::move(text).Take();
  text.Add("\n| findings | | rule |\n|---|---|---|\n");
  text.AddFirst(CountRules(order), kMaxRules, "rules", RuleRow);
  text.AddFirst(order, kMaxDetailed, "findings are not shown here; the output of the check lists them",
                [&](const Issue* issue) { return FindingBlock(folded.report(), *issue, paths); });
  return std::move(text).Take();
}

std::string ReviewComment(const FoldedReport& folded, const Issue& issue, const ServicePaths& paths) {
  return "<!-- korvelcheck " + issue.fingerprint + " -->\n" + Head(issue, "") + "\n\n" +
         DetailsWithWaiver(folded.report(), issue, paths);
}

}  // namespace korvel
