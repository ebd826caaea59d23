// A report as JSON. docs/report.schema.json lists all members, docs/command-line.md describes them. Tested by
// tests/report/formats_test.cpp and tests/tool/json_report_test.cpp.
#include <algorithm>

#include "common/result_codes.h"
#include "report/render/json_stream.h"
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

// Positions in the listed edits.
Json PositionsOf(const std::vector<std::size_t>& edits, const FoldedEdits& listed) {
  Json json = Json::array();
  for (const std::size_t edit : edits) json.push_back(std::ranges::lower_bound(listed.listed, edit) - listed.listed.begin());
  return json;
}

Json ToJson(const Waiver& waiver) { return {{"reason", waiver.reason}, {"until", waiver.until}, {"wide", waiver.is_wide}}; }

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
  json["waiver"] = finding.waiver ? ToJson(*finding.waiver) : Json();
  return json;
}

Json ToJson(const Summary& summary) {
  Json json = {{"compared", summary.compared},       {"allowed", summary.allowed},
               {"refused", summary.refused},         {"new", summary.added},
               {"removed", summary.removed},         {"failing", summary.failing},
               {"findings", summary.findings},       {"waived", summary.waived},
               {"files_added", summary.files_added}, {"files_deleted", summary.files_deleted},
               {"files_moved", summary.files_moved}};
  if (summary.left_out > 0) json["left_out"] = summary.left_out;
  return json;
}

Json ToJson(const FileNote& note) {
  constexpr const char* kKinds[] = {"added", "deleted", "moved"};
  return {{"kind", kKinds[static_cast<std::size_t>(note.kind)]},
          {"old_file", NameOrNull(note.old_file)},
          {"new_file", NameOrNull(note.new_file)}};
}

Json ToJson(const ReportBaseline& baseline) {
  Json json = {{"name", baseline.name}};
  if (!baseline.origin.empty()) json["origin"] = baseline.origin;
  return json;
}

Json ToJson(const ProjectFinding& finding) {
  return {{"rule", finding.rule},
          {"location", {{"file", finding.file}, {"line", finding.position.line}, {"column", finding.position.column}}},
          {"text", finding.text},
          {"suggestion", finding.suggestion},
          {"level", WordOf(finding.level)}};
}

Json List(const auto& values) {
  Json json = Json::array();
  for (const auto& value : values) json.push_back(ToJson(value));
  return json;
}

class JsonReport {
 public:
  JsonReport(const Report& report, const TextSink& sink)
      : report_(report), folded_(report), edits_(FoldEdits(folded_)), ranges_(LocationsOf(folded_, edits_)), json_(sink) {}

  void Write() {
    const Summary summary = Summarize(folded_);
    json_.Begin('{');
    json_.Add("version", kReportJsonVersion);
    json_.Add("tool", {{"name", "korvelcheck"}, {"version", KORVEL_VERSION}});
    json_.Add("command", report_.command);
    json_.Add("verdict", WordOf(VerdictOf(summary)));
    json_.Begin("inputs", '[');
    for (const auto& [role, source] : report_.inputs) json_.Add({{"role", role}, {"file", source->name}});
    json_.End();
    if (!report_.baselines.empty()) json_.Add("baselines", List(report_.baselines));
    json_.Begin("tables", '[');
    for (std::size_t i = 0; i < folded_.tables().size(); ++i) WriteTable(folded_.tables()[i], edits_[i]);
    json_.End();
    json_.Begin("findings", '[');
    for (const FoldedFinding& folded : folded_.findings()) json_.Add(ToJson(folded));
    json_.End();
    json_.Add("files", List(report_.files));
    json_.Add("project", List(report_.project));
    json_.Add("summary", korvel::ToJson(summary));
    json_.End();
  }

 private:
  void WriteTable(const FoldedTable& table, const FoldedEdits& edits) {
    json_.Begin('{');
    json_.AddMembers(HeadOf(*table.table));
    if (table.table->changes) WriteChanges(table, edits);
    json_.End();
  }

  // All members before the changes.
  Json HeadOf(const TableResult& result) const {
    Json json = {{"table", result.table}, {"status", WordOf(result.status)}};
    if (!result.baseline.empty()) json["baseline"] = result.baseline;
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
    json["location"] = korvel::ToJson(*ranges_.Find(result.declared));
    json["settings"] = korvel::ToJson(result.settings);
    return json;
  }

  void WriteChanges(const FoldedTable& table, const FoldedEdits& edits) {
    const Changes& changes = *table.table->changes;
    json_.Begin("changes", '{');
    json_.Begin("edits", '[');
    for (const std::size_t i : edits.listed) json_.Add(korvel::ToJson(changes.edits[i], changes.status[i], ranges_));
    json_.End();
    json_.Begin("findings", '[');
    for (const FoldedFinding& folded : table.findings) json_.Add(korvel::ToJson(*folded.finding, edits, ranges_));
    json_.End();
    WriteSharedEdits(edits.shared);
    WriteSharedFindings(table.shared);
    json_.Add("allowed_together", korvel::ToJson(changes.allowed_together));
    json_.Add("stopped", changes.stopped);
    if (table.left_out > 0) json_.Add("left_out", table.left_out);
    if (changes.reached_work_limit) json_.Add("reached_work_limit", true);
    json_.End();
  }

  // `first` is the position in the edits or findings of the earlier table.
  Json PartToJson(const SharedItems& items, std::size_t first) const {
    return {{"table", PositionOf(items.table)},
            {"first", first},
            {"count", items.count},
            {"path", items.path},
            {"instead_of", items.instead_of}};
  }

  void WriteSharedEdits(const std::vector<SharedItems>& parts) {
    if (parts.empty()) return;
    json_.Begin("shared_edits", '[');
    for (const SharedItems& items : parts) json_.Add(PartToJson(items, items.first));
    json_.End();
  }

  void WriteSharedFindings(const std::vector<SharedItems>& parts) {
    if (parts.empty()) return;
    json_.Begin("shared_findings", '[');
    for (const SharedItems& items : parts) json_.Add(PartToJson(items, PositionInTable(folded_.findings()[items.first])));
    json_.End();
  }

  // As positions in "tables" and in the "findings" of the table.
  Json ToJson(const FoldedFinding& folded) const {
    Json json = {{"table", PositionOf(folded.table)}, {"finding", PositionInTable(folded)}};
    if (folded.also_as) {
      json["also_as"] = *folded.also_as;
      return json;
    }
    Json& also = json["also"] = Json::array();
    for (const auto& [table, path] : folded.also) also.push_back({{"table", PositionOf(table)}, {"path", path}});
    return json;
  }

  std::size_t PositionOf(const TableResult* table) const { return static_cast<std::size_t>(table - report_.tables.data()); }
  std::size_t PositionInTable(const FoldedFinding& folded) const {
    return static_cast<std::size_t>(&folded - folded_.tables()[PositionOf(folded.table)].findings.data());
  }

  const Report& report_;
  FoldedReport folded_;
  std::vector<FoldedEdits> edits_;
  TextRanges ranges_;
  JsonStream json_;
};

}  // namespace

void WriteJson(const Report& report, const TextSink& sink) { JsonReport(report, sink).Write(); }

}  // namespace korvel
