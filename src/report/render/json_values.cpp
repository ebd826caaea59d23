// Tested by tests/report/formats_test.cpp and tests/tool/json_report_test.cpp.
#include "report/render/json_values.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

#include "common/result_codes.h"
#include "report/result/words.h"
#include "rule_docs/fault_rules.h"
#include "schema/setting_values.h"

namespace korvel {
Json HeaderToJson(int version, const std::string& command) {
  return {{"version", version}, {"tool", {{"name", "korvelcheck"}, {"version", KORVEL_VERSION}}}, {"command", command}};
}

Json NameOrNull(const std::string& name) { return name.empty() ? Json() : Json(name); }

Json ToJson(const PartialSettings& settings) {
  Json json = Json::object();
  if (settings.type) json["type"] = NameOf(kTableTypes, *settings.type);
  if (settings.created_as) json["created_as"] = NameOf(kProtocols, *settings.created_as);
  if (settings.server_version) json["server_version"] = *settings.server_version;
  if (settings.whitelist) json["whitelist"] = *settings.whitelist;
  if (settings.list_num) json["list_num"] = *settings.list_num;
  return json;
}

Json ToJson(const TextRange& range) {
  const auto number = [&](std::size_t qmx::LineColumn::*part) { return range.begin ? Json((*range.begin).*part) : Json(); };
  return {{"file", range.file}, {"line", number(&qmx::LineColumn::line)}, {"column", number(&qmx::LineColumn::column)}};
}

Json LocationToJson(const std::string& file, const qmx::LineColumn& position) {
  return {{"file", file}, {"line", position.line}, {"column", position.column}};
}

namespace {

// With the end of the range; null for no location.
Json SpanToJson(const TextRange* range) {
  if (range == nullptr) return {};
  Json json = ToJson(*range);
  json["end_line"] = range->begin ? Json(range->end.line) : Json();
  json["end_column"] = range->begin ? Json(range->end.column) : Json();
  return json;
}

Json ToJson(const std::vector<Replacement>& fix) {
  Json json = Json::array();
  for (const auto& [span, text] : fix)
    json.push_back({{"offset", span.begin}, {"length", span.end - span.begin}, {"text", text}});
  return json;
}

// Positions in the listed edits.
Json PositionsOf(const std::vector<std::size_t>& edits, const FoldedEdits& listed) {
  Json json = Json::array();
  for (const std::size_t edit : edits) json.push_back(std::ranges::lower_bound(listed.listed, edit) - listed.listed.begin());
  return json;
}

}  // namespace

Json ToJson(const std::optional<Waiver>& waiver) {
  return waiver ? Json{{"reason", waiver->reason}, {"until", waiver->until}, {"wide", waiver->is_wide}} : Json();
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

Json AdviceToJson(const Finding& finding, const Edit& edit, const TextRanges& ranges) {
  return {{"level", WordOf(finding.level)},
          {"rule", finding.verdict.rule},
          {"summary", SummaryOf(finding.verdict)},
          {"kind", NameOf(edit.kind)},
          {"meta", edit.meta},
          {"item", edit.item},
          {"before", edit.before},
          {"after", edit.after},
          {"description", Describe(edit)},
          {"path", finding.path},
          {"old_location", SpanToJson(ranges.Find(finding.old_location))},
          {"new_location", SpanToJson(ranges.Find(finding.new_location))},
          {"suggestion", finding.suggestion},
          {"fingerprint", finding.fingerprint},
          {"waiver", ToJson(finding.waiver)}};
}

Json ToJson(const Finding& finding, const FoldedEdits& edits, const TextRanges& ranges) {
  Json json = {{"edits", PositionsOf(finding.edits, edits)}};
  json.update(ToJson(finding.verdict));
  json["path"] = finding.path;
  json["old_location"] = SpanToJson(ranges.Find(finding.old_location));
  json["new_location"] = SpanToJson(ranges.Find(finding.new_location));
  json["suggestion"] = finding.suggestion;
  json["has_fix"] = finding.has_fix;
  json["fix"] = ToJson(finding.fix);
  json["fingerprint"] = finding.fingerprint;
  json["waiver"] = ToJson(finding.waiver);
  return json;
}

Json ToJson(const Summary& summary) {
  Json json = {{"compared", summary.compared}, {"allowed", summary.allowed}};
  if (summary.unchanged) json["unchanged"] = *summary.unchanged;
  json.update(Json{{"refused", summary.refused},
                   {"new", summary.added},
                   {"removed", summary.removed},
                   {"failing", summary.failing},
                   {"findings", summary.findings},
                   {"waived", summary.waived},
                   {"files_added", summary.files_added},
                   {"files_deleted", summary.files_deleted},
                   {"files_moved", summary.files_moved}});
  if (summary.files_not_checked > 0) json["files_not_checked"] = summary.files_not_checked;
  if (summary.left_out > 0) json["left_out"] = summary.left_out;
  const auto add = [&](const char* name, const LevelCount& count) {
    if (count.all == 0) return;
    json[name] = {{"all", count.all}, {"waived", count.waived}};
    if (count.left_out > 0) json[name]["left_out"] = count.left_out;
  };
  add("warnings", summary.warnings);
  add("notes", summary.notes);
  return json;
}

Json ToJson(const FileNote& note) {
  constexpr const char* kKinds[] = {"added", "deleted", "moved", "older"};
  return {{"kind", kKinds[static_cast<std::size_t>(note.kind)]},
          {"old_file", NameOrNull(note.old_file)},
          {"new_file", NameOrNull(note.new_file)}};
}

Json ToJson(const InputFault& fault) {
  return {{"rule", RuleOf(fault.kind).id},
          {"location", fault.file.empty() ? Json() : ToJson(LocationOf(fault))},
          {"text", fault.text},
          {"allowed", NameOrNull(fault.allowed)},
          {"needed_by", NameOrNull(fault.needed_by)}};
}

Json ToJson(const ReportBaseline& baseline) {
  Json json = {{"name", baseline.name}};
  if (!baseline.origin.empty()) json["origin"] = baseline.origin;
  return json;
}

Json ToJson(const ReportProject& project) { return {{"file", project.file}, {"files", project.files}}; }

Json ToJson(const ProjectFinding& finding) {
  Json json = {{"rule", finding.rule},
               {"location", LocationToJson(finding.file, finding.position)},
               {"text", finding.text},
               {"suggestion", finding.suggestion},
               {"level", WordOf(finding.level)}};
  if (finding.fingerprint.empty()) return json;
  json["files"] = finding.files;
  json["fingerprint"] = finding.fingerprint;
  json["waiver"] = ToJson(finding.waiver);
  return json;
}

}  // namespace korvel
