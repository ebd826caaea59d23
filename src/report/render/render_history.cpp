// The output of `history` as text. Tested by tests/tool/history_test.cpp and history_git_test.cpp.
#include <algorithm>

#include "base/text.h"
#include "report/render/finding_text.h"
#include "report/render/newest_text.h"
#include "report/render/render.h"
#include "report/render/seen_findings.h"
#include "report/render/text_color.h"
#include "report/result/notes.h"
#include "report/result/summary.h"
#include "report/result/words.h"
#include "rule_docs/advice.h"

namespace korvel {
namespace {

std::string ColoredVerdict(OverallVerdict verdict, bool color) { return Colored(WordOf(verdict), ColorOf(verdict), color); }

std::string ColoredVerdict(bool refused, bool color) {
  return ColoredVerdict(refused ? OverallVerdict::kRefused : OverallVerdict::kAllowed, color);
}

// Every line with two spaces in front.
std::string Indented(const std::string& lines) {
  std::string text;
  for (std::size_t begin = 0; begin < lines.size();) {
    const std::size_t end = lines.find('\n', begin) + 1;
    text += "  " + lines.substr(begin, end - begin);
    begin = end;
  }
  return text;
}

// The history of one file.
class HistoryText {
 public:
  HistoryText(const History& history, const Histories& all, bool color)
      : history_(history),
        detail_(all.detail),
        color_(color),
        fails_on_warnings_(all.fails_on_warnings),
        newest_(history, all.detail == Detail::kQuiet, color) {}

  std::string Text() {
    if (!history_.file.empty()) AddFile();
    for (const VersionStep& step : history_.steps) {
      if (!IsQuiet() || Fails(step)) AddStep(step);
    }
    if (!history_.against_newest.empty() && !IsQuiet()) {
      text_ += "each version against the newest, " + Name(history_.steps.back().to) + ":\n";
    }
    for (const NewestCheck& check : history_.against_newest) {
      if (!IsQuiet() || Fails(check)) AddAgainstNewest(check);
    }
    AddReusedIds();
    if (!history_.steps.empty() && !IsQuiet()) AddTotals();
    return std::move(text_);
  }

 private:
  std::string Name(std::size_t version) const { return OneLine(history_.versions[version].name); }

  bool IsQuiet() const { return detail_ == Detail::kQuiet; }

  void AddFile() {
    text_ += "history of " + OneLine(history_.file) + ": " + Counted(history_.versions.size(), "version") + "\n";
    for (const std::string& note : history_.notes) text_ += IsQuiet() ? "" : "  " + note + "\n";
    for (const VersionInfo& version : history_.versions) {
      if (!version.faults.empty()) text_ += "  cannot be read: " + OneLine(version.name) + "\n";
    }
    if (history_.steps.empty()) text_ += "  nothing was compared: there are fewer than two versions\n";
  }

  std::string Heading(std::size_t from, std::size_t to, bool refused) const {
    return Name(from) + " -> " + Name(to) + ": " + ColoredVerdict(refused, color_) + "\n";
  }

  void AddStep(const VersionStep& step) {
    const std::size_t number = NumberOf(history_, step);
    text_ += "step " + std::to_string(number) + ": " + Heading(step.from, step.to, step.Refused());
    text_ += Indented(RenderTablesText(step.report, detail_, color_, &seen_, number));
  }

  void AddAgainstNewest(const NewestCheck& check) {
    text_ += Heading(check.from, history_.steps.back().to, check.Refused());
    text_ += newest_.Refusals(check);
    if (check.left_out > 0) {
      text_ += "  " + Counted(check.left_out, "refused table") + (check.left_out == 1 ? " is" : " are") +
               " not listed: the report has as many as --max-findings allows\n";
    }
    text_ += Indented(RenderTablesText(check.warned, detail_, color_));
  }

  void AddReusedIds() {
    for (const ReusedId& reused : history_.reused_ids) {
      if (IsQuiet() && (reused.waiver || !fails_on_warnings_)) continue;
      const auto use = [&](const ReusedId::Use& one) {
        return OneLine(one.field) + ", " + OneLine(one.type) + ", in " + Name(one.version) +
               (one.location.empty() ? "" : " (" + one.location + ")") + "\n";
      };
      const std::string word = Colored(reused.waiver ? "waived" : WordOf(kIdReusedAdvice.level), kYellow, color_);
      text_ += word + " [" + kIdReusedAdvice.row.id + "] " + kIdReusedAdvice.row.summary + ": id " + std::to_string(reused.id) +
               " of " + OneLine(reused.meta) + "\n  new: " + use(reused.after) + "  was: " + use(reused.before) +
               "  path: " + OneLine(reused.Path().path) + "\n  change: " + reused.change + "\n" +
               (reused.waiver ? "  " + ToText(*reused.waiver) + "\n" : "") + "  suggestion: " + reused.suggestion +
               "\n  fingerprint: " + reused.fingerprint + "\n";
      if (!reused.waiver)
        text_ += "  to waive it, add this to the project file:\n    " + Join(reused.waiver_entry, "\n    ") + "\n";
    }
  }

  void AddTotals() {
    std::size_t refused_steps = 0;
    std::size_t refused_versions = history_.steps.back().Refused() ? 1 : 0;
    for (const VersionStep& step : history_.steps) refused_steps += step.Refused() ? 1 : 0;
    for (const NewestCheck& check : history_.against_newest) refused_versions += check.Refused() ? 1 : 0;
    const std::size_t steps = history_.steps.size();
    text_ += std::to_string(refused_steps) + " of " + Counted(steps, "step") + " refused; the newest version is refused from " +
             std::to_string(refused_versions) + " of " + Counted(steps, "older version");
    for (const Level level : {Level::kWarning, Level::kNote}) {
      if (const std::size_t count = CountAdvice(history_, level); count > 0) text_ += "; " + Counted(count, WordOf(level));
    }
    text_ += "\n";
  }

  const History& history_;
  Detail detail_;
  bool color_;
  bool fails_on_warnings_;
  SeenFindings seen_;
  NewestText newest_;
  std::string text_;
};

bool IsError(const ProjectFinding& finding) { return finding.level == ProjectFinding::Level::kError && !finding.waiver; }

// "1 of 3 files refused; 1 with a single version, not compared"
std::string FilesText(const Histories& histories) {
  const auto refused = std::ranges::count_if(histories.files, &History::Refused);
  const auto is_single = [](const History& history) { return VerdictOf(history) == OverallVerdict::kNothingCompared; };
  const auto single = std::ranges::count_if(histories.files, is_single);
  return std::to_string(refused) + " of " + Counted(histories.files.size(), "file") + " refused" +
         (single == 0 ? "" : "; " + std::to_string(single) + " with a single version, not compared") + "\n";
}

}  // namespace

std::string RenderHistoryText(const Histories& histories, bool color) {
  std::string text = "verdict: " + ColoredVerdict(VerdictOf(histories), color) + RemarkOn(histories) + "\n";
  const bool is_quiet = histories.detail == Detail::kQuiet;
  for (const std::string& project : ProjectsOf(histories.projects)) text += is_quiet ? "" : project + "\n";
  for (const InputFault& fault : histories.faults) text += FaultText(fault, color);
  for (const History& history : histories.files) {
    if (!is_quiet || histories.Fails(history) || !history.IsComplete()) text += HistoryText(history, histories, color).Text();
  }
  for (const ProjectFinding& finding : histories.project) {
    if (!is_quiet || IsError(finding)) text += ProjectFindingText(finding, color);
  }
  return histories.files.size() > 1 && !is_quiet ? text + FilesText(histories) : text;
}

}  // namespace korvel
