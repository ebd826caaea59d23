// A report as JSON. docs/report.schema.json lists all members, docs/command-line.md describes them. Tested by
// tests/report/formats_test.cpp and tests/tool/json_report_test.cpp.
#include <algorithm>
#include <span>

#include "analysis/diff/same_table.h"
#include "report/render/json_stream.h"
#include "report/render/json_tables.h"
#include "report/render/json_values.h"
#include "report/render/render.h"
#include "report/result/words.h"

namespace korvel {
namespace {

Json List(const auto& values) {
  Json json = Json::array();
  for (const auto& value : values) json.push_back(ToJson(value));
  return json;
}

class JsonReport {
 public:
  JsonReport(const Report& report, JsonStream& json)
      : report_(report),
        folded_(report),
        edits_(FoldEdits(folded_)),
        ranges_(LocationsOf(folded_, edits_), Dumps::kHidden),
        json_(json) {
    std::size_t numbers[2] = {};
    for (const FoldedFinding& folded : folded_.findings()) listed_as_.push_back(numbers[IsRefusal(folded) ? 1 : 0]++);
  }

  void Write() {
    const Summary summary = Summarize(folded_);
    json_.Begin('{');
    json_.AddMembers(HeaderToJson(kReportJsonVersion, report_.command));
    json_.Add("verdict", WordOf(VerdictOf(summary)));
    json_.Begin("inputs", '[');
    for (const auto& [role, source] : report_.inputs) json_.Add({{"role", role}, {"file", source->name}});
    json_.End();
    if (!report_.baselines.empty()) json_.Add("baselines", List(report_.baselines));
    if (!report_.projects.empty()) json_.Add("project_files", List(report_.projects));
    WriteTables();
    json_.Add("files", List(report_.files));
    json_.Add("project", List(report_.project));
    if (!report_.faults.empty()) json_.Add("faults", List(report_.faults));
    json_.Add("summary", korvel::ToJson(summary));
    json_.End();
  }

  void WriteTables() {
    json_.Begin("tables", '[');
    for (std::size_t i = 0; i < folded_.tables().size(); ++i) WriteTable(folded_.tables()[i], edits_[i]);
    json_.End();
    WriteFindings();
  }

 private:
  // Where each finding is listed, those that share it included. Without warnings and notes there is no list of them.
  void WriteFindings() {
    json_.Begin("findings", '[');
    for (const FoldedFinding& folded : folded_.findings()) {
      if (!IsAdvice(*folded.finding)) json_.Add(ToJson(folded));
    }
    json_.End();
    if (std::ranges::none_of(folded_.findings(), [](const FoldedFinding& one) { return IsAdvice(*one.finding); })) return;
    json_.Begin("warnings", '[');
    for (const FoldedFinding& folded : folded_.findings()) {
      if (IsAdvice(*folded.finding)) json_.Add(ToJson(folded));
    }
    json_.End();
  }

  void WriteTable(const FoldedTable& table, const FoldedEdits& edits) {
    json_.Begin('{');
    json_.AddMembers(HeadOf(*table.table));
    if (table.table->changes) WriteChanges(table, edits);
    WriteAdvice(table);
    json_.End();
  }

  // Warnings and notes, if there are any.
  void WriteAdvice(const FoldedTable& table) {
    if (AdviceOf(table).empty() && SharedOf(table, true).empty()) return;
    json_.Begin("warnings", '[');
    for (const FoldedFinding& folded : AdviceOf(table)) {
      const Finding& finding = *folded.finding;
      json_.Add(AdviceToJson(finding, table.table->EditsFor(finding)[finding.edits.front()], ranges_));
    }
    json_.End();
    WriteShared("shared_warnings", SharedOf(table, true));
  }

  static bool IsRefusal(const FoldedFinding& folded) { return !IsAdvice(*folded.finding); }

  // The refusals of a table come first.
  static std::span<const FoldedFinding> RefusalsOf(const FoldedTable& table) {
    const auto end = std::ranges::partition_point(table.findings, IsRefusal);
    return table.findings.first(static_cast<std::size_t>(end - table.findings.begin()));
  }
  static std::span<const FoldedFinding> AdviceOf(const FoldedTable& table) {
    return table.findings.subspan(RefusalsOf(table).size());
  }

  std::vector<SharedItems> SharedOf(const FoldedTable& table, bool is_advice) const {
    std::vector<SharedItems> shared = table.shared;
    std::erase_if(shared, [&](const SharedItems& one) { return IsRefusal(folded_.findings()[one.first]) == is_advice; });
    return shared;
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
    json_.Add("count", CountOwnEdits(changes.edits));
    json_.Begin("edits", '[');
    for (const std::size_t i : edits.listed) json_.Add(korvel::ToJson(changes.edits[i], changes.status[i], ranges_));
    json_.End();
    json_.Begin("findings", '[');
    for (const FoldedFinding& folded : RefusalsOf(table)) json_.Add(korvel::ToJson(*folded.finding, edits, ranges_));
    json_.End();
    WriteSharedEdits(edits.shared);
    WriteShared("shared_findings", SharedOf(table, false));
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

  void WriteShared(const char* name, const std::vector<SharedItems>& parts) {
    if (parts.empty()) return;
    json_.Begin(name, '[');
    for (const SharedItems& items : parts) json_.Add(PartToJson(items, PositionInTable(folded_.findings()[items.first])));
    json_.End();
  }

  // As positions in "tables" and in the "findings" or "warnings" of the table.
  Json ToJson(const FoldedFinding& folded) const {
    const bool is_refusal = IsRefusal(folded);
    Json json = {{"table", PositionOf(folded.table)}, {is_refusal ? "finding" : "warning", PositionInTable(folded)}};
    if (folded.also_as) {
      json["also_as"] = listed_as_[*folded.also_as];
      return json;
    }
    Json& also = json["also"] = Json::array();
    for (const auto& [table, path] : folded.also) also.push_back({{"table", PositionOf(table)}, {"path", path}});
    return json;
  }

  std::size_t PositionOf(const TableResult* table) const { return static_cast<std::size_t>(table - report_.tables.data()); }
  std::size_t PositionInTable(const FoldedFinding& folded) const {
    const FoldedTable& table = folded_.tables()[PositionOf(folded.table)];
    const std::span<const FoldedFinding> list = IsRefusal(folded) ? RefusalsOf(table) : AdviceOf(table);
    return static_cast<std::size_t>(&folded - list.data());
  }

  const Report& report_;
  FoldedReport folded_;
  std::vector<FoldedEdits> edits_;
  TextRanges ranges_;
  std::vector<std::size_t> listed_as_;  // of each folded finding, its position in the document's "findings" or "warnings"
  JsonStream& json_;
};

}  // namespace

void WriteJson(const Report& report, const TextSink& sink) {
  JsonStream json(sink);
  JsonReport(report, json).Write();
}

void WriteJsonTables(const Report& report, JsonStream& json) { JsonReport(report, json).WriteTables(); }

}  // namespace korvel
