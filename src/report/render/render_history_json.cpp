// A history as JSON; docs/command-line.md lists its members. Held by tests/tool/history_test.cpp.
#include <nlohmann/json.hpp>

#include "common/result_codes.h"
#include "report/render/render_history.h"

namespace korvel {
namespace {

using Json = nlohmann::ordered_json;

const char* Word(bool refused) { return refused ? "refused" : "allowed"; }

Json ToJson(const TableResult& result) {
  if (result.status == Status::kNew) return {{"table", result.table}, {"status", "new"}};
  const bool refused = result.status == Status::kRefused;
  Json json = {
      {"table", result.table}, {"status", Word(refused)}, {"code", result.code}, {"code_name", ResultCodeName(result.code)}};
  if (!refused) return json;
  json["rule"] = result.rule.empty() ? Json() : Json(result.rule);
  json["text"] = result.text;
  json["gone"] = result.removed;
  json["broken_by"] = CauseOf(result);
  return json;
}

Json ToJson(const VersionStep& passage, const History& history) {
  Json tables = Json::array();
  for (const TableResult& result : passage.tables) tables.push_back(ToJson(result));
  return {{"from", history.versions[passage.from]->name},
          {"to", history.versions[passage.to]->name},
          {"verdict", Word(passage.Refused())},
          {"tables", std::move(tables)}};
}

// With the step that broke each refused table, counted from 1.
Json WithSteps(const VersionStep& passage, const History& history) {
  Json json = ToJson(passage, history);
  for (std::size_t i = 0; i < passage.tables.size(); ++i) {
    if (passage.tables[i].status != Status::kRefused) continue;
    const VersionStep* const step = FirstRefusedStep(history, passage.from, passage.tables[i].table);
    json["tables"][i]["step"] = step == nullptr ? Json() : Json(step->to);
  }
  return json;
}

}  // namespace

std::string RenderHistoryJson(const History& history) {
  Json json = {
      {"tool", "korvelcheck"}, {"version", KORVEL_VERSION}, {"command", "history"}, {"verdict", Word(history.Refused())}};
  Json& versions = json["versions"] = Json::array();
  for (const Source* version : history.versions) versions.push_back(version->name);
  Json& steps = json["steps"] = Json::array();
  for (const VersionStep& step : history.steps) steps.push_back(ToJson(step, history));
  Json& against_newest = json["to_newest"] = Json::array();
  for (const VersionStep& passage : history.against_newest) against_newest.push_back(WithSteps(passage, history));
  against_newest.push_back(WithSteps(history.steps.back(), history));
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korvel
