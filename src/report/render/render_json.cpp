// A report as JSON. docs/report.schema.json lists all members, docs/command-line.md describes them. Tested by
// tests/report/formats_test.cpp and tests/tool/json_report_test.cpp.
#include <nlohmann/json.hpp>

#include "common/result_codes.h"
#include "report/render/render.h"
#include "report/result/words.h"
#include "schema/setting_values.h"

namespace korvel {
namespace {

using Json = nlohmann::ordered_json;

Json ToJson(const PartialSettings& settings) {
  Json json = Json::object();
  if (settings.type) json["type"] = NameOf(kTableTypes, *settings.type);
  if (settings.created_as) json["created_as"] = NameOf(kProtocols, *settings.created_as);
  if (settings.server_version) json["server_version"] = *settings.server_version;
  if (settings.whitelist) json["whitelist"] = *settings.whitelist;
  if (settings.list_num) json["list_num"] = *settings.list_num;
  return json;
}

Json NameOrNull(const std::string& name) { return name.empty() ? Json() : Json(name); }

Json ToJson(const TextRange& range) {
  const auto number = [&](std::size_t qmx::LineColumn::*part) { return range.begin ? Json((*range.begin).*part) : Json(); };
  return {{"file", range.file}, {"line", number(&qmx::LineColumn::line)}, {"column", number(&qmx::LineColumn::column)}};
}

// With the end of the range; null for no location.
Json SpanToJson(const TextRange* range) {
  if (range == nullptr) return {};
  Json json = ToJson(*range);
  json["end_line"] = range->begin ? Json(range->end.line) : Json();
  json["end_column"] = range->begin ? Json(range->end.column) : Json();
  return json;
}

Json ToJson(const Verdict& verdict) {
  return {{"code", verdict.code},
          {"code_name", NameOrNull(CodeNameOf(verdict.code))},
          {"rule", NameOrNull(verdict.rule)},
          {"summary", verdict.Refused() ? Json(SummaryOf(verdict)) : Json()},
          {"text", verdict.text}};
}

Json ToJson(const Edit& edit, EditStatus status, const TextRanges& ranges) {
  return {{"kind", NameOf(edit.kind)},
          {"meta", edit.meta},
          {"item", edit.item},
          {"before", edit.before},
          {"after", edit.after},
          {"description", Describe(edit)},
          {"status", WordOf(status)},
          {"paths", edit.paths},
          {"path_count", edit.path_count},
          {"old_location", SpanToJson(ranges.Find(edit.old_location))},
          {"new_location", SpanToJson(ranges.Find(edit.new_location))}};
}

Json ToJson(const std::vector<Replacement>& fix) {
  Json json = Json::array();
  for (const auto& [span, text] : fix)
    json.push_back({{"offset", span.begin}, {"length", span.end - span.begin}, {"text", text}});
  return json;
}

Json ToJson(const Finding& finding, const TextRanges& ranges) {
  Json json = {{"edits", finding.edits}};
  json.update(ToJson(finding.verdict));
  json["path"] = finding.path;
  json["old_location"] = SpanToJson(ranges.Find(finding.old_location));
  json["new_location"] = SpanToJson(ranges.Find(finding.new_location));
  json["suggestion"] = finding.suggestion;
  json["has_fix"] = finding.has_fix;
  json["fix"] = ToJson(finding.fix);
  json["fingerprint"] = finding.fingerprint;
  json["waiver"] = finding.waiver ? Json{{"reason", finding.waiver->reason}, {"until", finding.waiver->until}} : Json();
  return json;
}

Json ToJson(const Changes& changes, const TextRanges& ranges) {
  Json edits = Json::array();
  for (std::size_t i = 0; i < changes.edits.size(); ++i) edits.push_back(ToJson(changes.edits[i], changes.status[i], ranges));
  Json findings = Json::array();
  for (const Finding& finding : changes.findings) findings.push_back(ToJson(finding, ranges));
  return {{"edits", std::move(edits)},
          {"findings", std::move(findings)},
          {"allowed_together", ToJson(changes.allowed_together)},
          {"stopped", changes.stopped}};
}

Json ToJson(const TableResult& result, const TextRanges& ranges) {
  Json json = {{"table", result.table}, {"status", WordOf(result.status)}};
  if (result.status != Status::kNew) {
    json["code"] = result.verdict.code;
    json["code_name"] = CodeNameOf(result.verdict.code);
  }
  if (result.status == Status::kRefused) {
    json["rule"] = NameOrNull(result.verdict.rule);
    json["summary"] = SummaryOf(result);
    json["text"] = result.verdict.text;
    json["removed"] = result.removed;
  }
  json["location"] = ToJson(*ranges.Find(result.declared));
  json["settings"] = ToJson(result.settings);
  if (result.changes) json["changes"] = ToJson(*result.changes, ranges);
  return json;
}

// Each finding once, also those that several tables share, as positions in "tables" and in the "findings" of the table.
Json FoldedToJson(const Report& report) {
  Json json = Json::array();
  for (const FoldedFinding& folded : Fold(report)) {
    const auto position = [&](const TableResult* table) { return table - report.tables.data(); };
    Json also = Json::array();
    for (const auto& [table, path] : folded.also) also.push_back({{"table", position(table)}, {"path", path}});
    json.push_back({{"table", position(folded.table)},
                    {"finding", folded.finding - folded.table->changes->findings.data()},
                    {"also", std::move(also)}});
  }
  return json;
}

Json ToJson(const FileNote& note) {
  constexpr const char* kKinds[] = {"added", "deleted", "moved"};
  return {{"kind", kKinds[static_cast<std::size_t>(note.kind)]},
          {"old_file", NameOrNull(note.old_file)},
          {"new_file", NameOrNull(note.new_file)}};
}

Json ToJson(const ProjectFinding& finding) {
  return {{"rule", finding.rule},
          {"location", {{"file", finding.file}, {"line", finding.position.line}, {"column", finding.position.column}}},
          {"text", finding.text},
          {"suggestion", finding.suggestion}};
}

Json ToJson(const Summary& summary) {
  return {{"compared", summary.compared},       {"allowed", summary.allowed},
          {"refused", summary.refused},         {"new", summary.added},
          {"removed", summary.removed},         {"failing", summary.failing},
          {"findings", summary.findings},       {"waived", summary.waived},
          {"files_added", summary.files_added}, {"files_deleted", summary.files_deleted},
          {"files_moved", summary.files_moved}};
}

Json List(const auto& values) {
  Json json = Json::array();
  for (const auto& value : values) json.push_back(ToJson(value));
  return json;
}

}  // namespace

std::string RenderJson(const Report& report) {
  const Summary summary = Summarize(report);
  const TextRanges ranges(LocationsOf(report, true));
  Json json = {{"version", kJsonVersion},
               {"tool", {{"name", "korvelcheck"}, {"version", KORVEL_VERSION}}},
               {"command", report.command},
               {"verdict", WordOf(OverallStatus(summary))}};
  Json& inputs = json["inputs"] = Json::array();
  for (const auto& [role, source] : report.inputs) inputs.push_back({{"role", role}, {"file", source->name}});
  Json& tables = json["tables"] = Json::array();
  for (const TableResult& table : report.tables) tables.push_back(ToJson(table, ranges));
  json["findings"] = FoldedToJson(report);
  json["files"] = List(report.files);
  json["project"] = List(report.project);
  json["summary"] = ToJson(summary);
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korvel
