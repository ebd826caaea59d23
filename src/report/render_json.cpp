// The report as JSON; docs/command-line.md lists its members. Held by tests/tool/json_report_test.cpp.
#include <nlohmann/json.hpp>

#include "common/result_codes.h"
#include "report/choice.h"
#include "report/places.h"
#include "report/render.h"

namespace korvel::report {
namespace {

using Json = nlohmann::ordered_json;

const char* Shown(Status status) {
  switch (status) {
    case Status::kAllowed:
      return "allowed";
    case Status::kRefused:
      return "refused";
    case Status::kNew:
      break;
  }
  return "new";
}

Json ToJson(const Settings& settings) {
  Json json = Json::object();
  if (settings.type) json["type"] = NameOf(kTableTypes, *settings.type);
  if (settings.created_as) json["created_as"] = NameOf(kProtocols, *settings.created_as);
  if (settings.server_version) json["server_version"] = *settings.server_version;
  if (settings.whitelist) json["whitelist"] = *settings.whitelist;
  if (settings.list_num) json["list_num"] = *settings.list_num;
  return json;
}

Json ToJson(const Mark& place) {
  const auto number = [&](std::size_t qmx::LineColumn::*part) { return place.begin ? Json((*place.begin).*part) : Json(); };
  return {{"file", place.file}, {"line", number(&qmx::LineColumn::line)}, {"column", number(&qmx::LineColumn::column)}};
}

Json ToJson(const TableResult& result, const Mark& place) {
  Json json = {{"table", result.table}, {"status", Shown(result.status)}};
  if (result.status != Status::kNew) {
    json["code"] = result.code;
    json["code_name"] = ResultCodeName(result.code);
  }
  if (result.status == Status::kRefused) {
    json["rule"] = result.rule.empty() ? Json() : Json(result.rule);
    json["text"] = result.text;
    json["gone"] = result.gone;
  }
  json["place"] = ToJson(place);
  json["settings"] = ToJson(result.settings);
  return json;
}

Json ToJson(const Summary& summary) {
  return {{"compared", summary.compared},
          {"allowed", summary.allowed},
          {"refused", summary.refused},
          {"new", summary.added},
          {"gone", summary.gone}};
}

}  // namespace

std::string RenderJson(const Report& report) {
  const Summary summary = Summarize(report);
  Json json = {{"tool", "korvelcheck"},
               {"version", KORVEL_VERSION},
               {"command", report.command},
               {"verdict", Shown(summary.refused == 0 ? Status::kAllowed : Status::kRefused)}};
  Json& inputs = json["inputs"] = Json::array();
  for (const auto& [role, source] : report.inputs) inputs.push_back({{"role", role}, {"file", source->name}});
  Json& tables = json["tables"] = Json::array();
  std::vector<Location> locations;
  for (const TableResult& table : report.tables) locations.push_back(table.declared);
  const Marks marks(std::move(locations));
  for (const TableResult& table : report.tables) tables.push_back(ToJson(table, *marks.Find(table.declared)));
  json["summary"] = ToJson(summary);
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korvel::report
