// A history as text. Held by tests/tool/history_test.cpp.
#include "report/render/render_history.h"
#include "base/one_line.h"
#include "common/result_codes.h"

namespace korvel {
namespace {

class Text {
 public:
  Text(const History& history, bool colour) : history_(history), colour_(colour) {}

  std::string Run() {
    text_ = "verdict: " + Shown(history_.Refused()) + "\n";
    for (const VersionStep& step : history_.steps) Step(step);
    if (!history_.against_newest.empty())
      text_ += "each version against the newest, " + Name(history_.versions.size() - 1) + ":\n";
    for (const VersionStep& passage : history_.against_newest) AgainstNewest(passage);
    Count();
    return text_;
  }

 private:
  std::string Name(std::size_t version) const { return OneLine(history_.versions[version]->name); }

  std::string Shown(bool refused) const {
    const char* const word = refused ? "refused" : "allowed";
    return colour_ ? std::string("\x1b[") + (refused ? "31" : "32") + "m" + word + "\x1b[0m" : word;
  }

  std::string Heading(const VersionStep& passage) const {
    return Name(passage.from) + " -> " + Name(passage.to) + ": " + Shown(passage.Refused()) + "\n";
  }

  void Step(const VersionStep& step) {
    text_ += "step " + std::to_string(step.to) + ": " + Heading(step);
    for (const TableResult& result : step.tables) {
      if (result.status == Status::kNew) text_ += "   table " + OneLine(result.table) + ": new\n";
      if (result.status == Status::kRefused) text_ += Refusal(result) + "\n";
    }
  }

  static std::string Refusal(const TableResult& result) {
    const std::string rule = result.rule.empty() ? "" : " [" + result.rule + "]";
    return "   table " + OneLine(result.table) + ": refused" + rule + " " + std::to_string(result.code) + " " +
           ResultCodeName(result.code) + "\n      " + (result.text.empty() ? "" : OneLine(result.text) + "\n      ") +
           "broken by: " + CauseOf(result);
  }

  void AgainstNewest(const VersionStep& passage) {
    text_ += Heading(passage);
    for (const TableResult& result : passage.tables) {
      if (result.status != Status::kRefused) continue;
      const VersionStep* const step = FirstRefusedStep(history_, passage.from, result.table);
      text_ += Refusal(result) +
               (step == nullptr ? ", though every step is allowed"
                                : ", in step " + std::to_string(step->to) + ": " + Name(step->from) + " -> " + Name(step->to)) +
               "\n";
    }
  }

  void Count() {
    std::size_t refused_steps = 0;
    std::size_t refused_versions = 0;
    for (const VersionStep& step : history_.steps) refused_steps += step.Refused() ? 1 : 0;
    for (const VersionStep& passage : history_.against_newest) refused_versions += passage.Refused() ? 1 : 0;
    refused_versions += history_.steps.back().Refused() ? 1 : 0;
    const std::size_t steps = history_.steps.size();
    text_ += std::to_string(refused_steps) + " of " + std::to_string(steps) + (steps == 1 ? " step" : " steps") +
             " refused; from " + std::to_string(refused_versions) + " of " + std::to_string(steps) +
             " older versions the newest is refused\n";
  }

  const History& history_;
  bool colour_;
  std::string text_;
};

}  // namespace

std::string RenderHistoryText(const History& history, bool colour) { return Text(history, colour).Run(); }

}  // namespace korvel
