// The output of `history` as text and JSON; docs/command-line.md describes both. Tested by tests/tool/history_test.cpp.
#include <nlohmann/json.hpp>

#include "base/text.h"
#include "report/render/render.h"
#include "report/result/words.h"
#include "rule_docs/advice.h"

namespace korvel {
namespace {

using Json = nlohmann::ordered_json;

const char* VerdictText(bool refused) { return refused ? "refused" : "allowed"; }

// --- Text ---

class HistoryText {
 public:
  HistoryText(const History& history, bool color) : history_(history), color_(color) {}

  std::string Text() {
    text_ = "verdict: " + ColoredVerdict(history_.Refused()) + "\n";
    for (const VersionStep& step : history_.steps) Step(step);
    if (!history_.against_newest.empty())
      text_ += "each version against the newest, " + Name(history_.versions.size() - 1) + ":\n";
    for (const VersionStep& step : history_.against_newest) AgainstNewest(step);
    AddReusedIds();
    AddTotals();
    return text_;
  }

 private:
  std::string Name(std::size_t version) const { return OneLine(history_.versions[version]); }

  std::string ColoredVerdict(bool refused) const {
    const char* const word = VerdictText(refused);
    return color_ ? std::string("\x1b[") + (refused ? "31" : "32") + "m" + word + "\x1b[0m" : word;
  }

  std::string Heading(const VersionStep& step) const {
    return Name(step.from) + " -> " + Name(step.to) + ": " + ColoredVerdict(step.Refused()) + "\n";
  }

  void Step(const VersionStep& step) {
    text_ += "step " + std::to_string(step.to) + ": " + Heading(step);
    for (const StepTable& result : step.tables) {
      if (result.status == Status::kNew) text_ += "  table " + OneLine(result.table) + ": new\n";
      if (result.status == Status::kRefused) text_ += Refusal(result) + "\n";
      for (const StepAdvice& advice : result.advice) text_ += AdviceText(result, advice);
    }
  }

  static std::string AdviceText(const StepTable& result, const StepAdvice& advice) {
    std::string text = "  table " + OneLine(result.table) + ": " + WordOf(advice.level) + " [" + advice.rule + "] " +
                       advice.summary + "\n    change: " + advice.change + "\n";
    if (!advice.new_location.empty()) text += "    new: " + advice.new_location + "\n";
    if (!advice.old_location.empty()) text += "    was: " + advice.old_location + "\n";
    return text + "    suggestion: " + OneLine(advice.suggestion) + "\n";
  }

  void AddReusedIds() {
    for (const ReusedId& reused : history_.reused_ids) {
      const auto use = [&](const ReusedId::Use& one) {
        return OneLine(one.field) + ", " + OneLine(one.type) + ", in " + Name(one.version) +
               (one.location.empty() ? "" : " (" + one.location + ")") + "\n";
      };
      text_ += std::string(WordOf(kIdReusedAdvice.level)) + " [" + kIdReusedAdvice.row.id + "] " + kIdReusedAdvice.row.summary +
               ": id " + std::to_string(reused.id) + " of " + OneLine(reused.meta) + "\n  new: " + use(reused.after) +
               "  was: " + use(reused.before) + "  suggestion: " + reused.suggestion + "\n";
    }
  }

  static std::string Refusal(const StepTable& result) {
    const std::string rule = result.verdict.rule.empty() ? "" : " [" + result.verdict.rule + "]";
    return "  table " + OneLine(result.table) + ": refused" + rule + " " + result.summary + "\n    " +
           CheckerLine(result.verdict.text) + "\n    code: " + std::to_string(result.verdict.code) + " " +
           CodeNameOf(result.verdict.code) + "\n    caused by: " + result.cause;
  }

  void AgainstNewest(const VersionStep& step) {
    text_ += Heading(step);
    for (const StepTable& result : step.tables) {
      if (result.status != Status::kRefused) continue;
      const VersionStep* const first = FirstRefusedStep(history_, step.from, result.table);
      text_ +=
          Refusal(result) +
          (first == nullptr ? ", although each step alone is allowed"
                            : ", in step " + std::to_string(first->to) + ": " + Name(first->from) + " -> " + Name(first->to)) +
          "\n";
    }
  }

  void AddTotals() {
    std::size_t refused_steps = 0;
    std::size_t refused_versions = 0;
    for (const VersionStep& step : history_.steps) refused_steps += step.Refused() ? 1 : 0;
    for (const VersionStep& step : history_.against_newest) refused_versions += step.Refused() ? 1 : 0;
    refused_versions += history_.steps.back().Refused() ? 1 : 0;
    const std::size_t steps = history_.steps.size();
    text_ += std::to_string(refused_steps) + " of " + std::to_string(steps) + (steps == 1 ? " step" : " steps") +
             " refused; the newest version is refused from " + std::to_string(refused_versions) + " of " + std::to_string(steps) +
             (steps == 1 ? " older version" : " older versions");
    for (const Level level : {Level::kWarning, Level::kNote}) {
      if (const std::size_t count = history_.Count(level); count > 0) text_ += "; " + Counted(count, WordOf(level));
    }
    text_ += "\n";
  }

  const History& history_;
  bool color_;
  std::string text_;
};

// --- JSON ---

Json ToJson(const StepAdvice& advice) {
  const auto or_null = [](const std::string& text) { return text.empty() ? Json() : Json(text); };
  return {{"level", WordOf(advice.level)},
          {"rule", advice.rule},
          {"summary", advice.summary},
          {"description", advice.change},
          {"path", advice.path},
          {"old_location", or_null(advice.old_location)},
          {"new_location", or_null(advice.new_location)},
          {"suggestion", advice.suggestion},
          {"fingerprint", advice.fingerprint}};
}

Json ToJson(const ReusedId& reused, const History& history) {
  const auto use = [&](const ReusedId::Use& one) {
    return Json{{"version", history.versions[one.version]}, {"field", one.field}, {"type", one.type}, {"location", one.location}};
  };
  return {{"level", WordOf(kIdReusedAdvice.level)},
          {"rule", kIdReusedAdvice.row.id},
          {"summary", kIdReusedAdvice.row.summary},
          {"meta", reused.meta},
          {"id", reused.id},
          {"before", use(reused.before)},
          {"after", use(reused.after)},
          {"suggestion", reused.suggestion},
          {"fingerprint", reused.fingerprint}};
}

Json StepTableToJson(const StepTable& result) {
  if (result.status == Status::kNew) return {{"table", result.table}, {"status", "new"}};
  const bool refused = result.status == Status::kRefused;
  Json json = {{"table", result.table},
               {"status", VerdictText(refused)},
               {"code", result.verdict.code},
               {"code_name", CodeNameOf(result.verdict.code)}};
  if (!refused) return json;
  json["rule"] = result.verdict.rule.empty() ? Json() : Json(result.verdict.rule);
  json["summary"] = result.summary;
  json["text"] = result.verdict.text;
  json["removed"] = result.removed;
  json["cause"] = result.cause;
  return json;
}

Json ToJson(const VersionStep& step, const History& history) {
  Json tables = Json::array();
  for (const StepTable& result : step.tables) {
    tables.push_back(StepTableToJson(result));
    for (const StepAdvice& advice : result.advice) tables.back()["warnings"].push_back(ToJson(advice));
  }
  return {{"from", history.versions[step.from]},
          {"to", history.versions[step.to]},
          {"verdict", VerdictText(step.Refused())},
          {"tables", std::move(tables)}};
}

// Adds to each refused table the number of the first refused step, from 1.
Json WithSteps(const VersionStep& step, const History& history) {
  Json json = ToJson(step, history);
  for (std::size_t i = 0; i < step.tables.size(); ++i) {
    if (step.tables[i].status != Status::kRefused) continue;
    const VersionStep* const first = FirstRefusedStep(history, step.from, step.tables[i].table);
    json["tables"][i]["step"] = first == nullptr ? Json() : Json(first->to);
  }
  return json;
}

}  // namespace

std::string RenderHistoryText(const History& history, bool color) { return HistoryText(history, color).Text(); }

std::string RenderHistoryJson(const History& history) {
  Json json = {{"version", kJsonVersion},
               {"tool", {{"name", "korvelcheck"}, {"version", KORVEL_VERSION}}},
               {"command", "history"},
               {"verdict", VerdictText(history.Refused())}};
  json["versions"] = history.versions;
  Json& steps = json["steps"] = Json::array();
  for (const VersionStep& step : history.steps) steps.push_back(ToJson(step, history));
  Json& against_newest = json["against_newest"] = Json::array();
  for (const VersionStep& step : history.against_newest) against_newest.push_back(WithSteps(step, history));
  against_newest.push_back(WithSteps(history.steps.back(), history));
  for (const ReusedId& reused : history.reused_ids) json["reused_ids"].push_back(ToJson(reused, history));
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korvel
