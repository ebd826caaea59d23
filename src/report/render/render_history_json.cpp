// The output of `history` as JSON; docs/history.schema.json describes it. Tested by tests/tool/history_test.cpp and
// history_git_test.cpp.
#include <string>

#include "report/render/json_stream.h"
#include "report/render/json_tables.h"
#include "report/render/json_values.h"
#include "report/render/render.h"
#include "report/result/words.h"
#include "rule_docs/advice.h"

namespace korvel {
namespace {

Json CauseToJson(const RefusalCause& cause) {
  return {{"description", cause.change},
          {"path", cause.path},
          {"old_location", NameOrNull(cause.old_location)},
          {"new_location", NameOrNull(cause.new_location)},
          {"fingerprint", NameOrNull(cause.fingerprint)}};
}

class HistoryJson {
 public:
  HistoryJson(const History& history, JsonStream& json) : history_(history), json_(json) {}

  void Write() {
    json_.Begin('{');
    json_.Add("file", NameOrNull(history_.file));
    json_.Add("verdict", WordOf(VerdictOf(history_)));
    json_.Add("notes", history_.notes);
    json_.Begin("versions", '[');
    for (const VersionInfo& version : history_.versions) {
      json_.Add({{"name", version.name}, {"removed", version.is_removed}, {"faults", LinesOf(version.faults)}});
    }
    json_.End();
    json_.Begin("steps", '[');
    for (const VersionStep& step : history_.steps) WriteStep(step);
    json_.End();
    json_.Begin("against_newest", '[');
    for (const NewestCheck& check : history_.against_newest) WriteCheck(check);
    json_.End();
    json_.Begin("reused_ids", '[');
    for (const ReusedId& reused : history_.reused_ids) json_.Add(ToJson(reused));
    json_.End();
    json_.End();
  }

 private:
  const std::string& Name(std::size_t version) const { return history_.versions[version].name; }

  void WriteStep(const VersionStep& step) {
    json_.Begin('{');
    json_.Add("from", Name(step.from));
    json_.Add("to", Name(step.to));
    json_.Add("verdict", VerdictText(step.Refused()));
    WriteJsonTables(step.report, json_);
    json_.Begin("causes", '[');
    for (const auto& [table, cause] : step.causes) {
      Json json = {{"table", table}};
      json.update(CauseToJson(cause));
      json_.Add(json);
    }
    json_.End();
    json_.End();
  }

  void WriteCheck(const NewestCheck& check) {
    json_.Begin('{');
    json_.Add("from", Name(check.from));
    json_.Add("to", Name(history_.steps.back().to));
    json_.Add("verdict", VerdictText(check.Refused()));
    json_.Begin("refused", '[');
    for (const NewestRefusal& refusal : check.refused) json_.Add(ToJson(refusal));
    json_.End();
    if (check.left_out > 0) json_.Add("left_out", check.left_out);
    json_.Begin("warnings", '[');
    WriteWarnings(check.warned);
    json_.End();
    json_.End();
  }

  void WriteWarnings(const Report& warned) {
    const FoldedReport folded(warned);
    const TextRanges ranges(LocationsOf(folded));
    for (const FoldedFinding& one : folded.findings()) {
      const Finding& finding = *one.finding;
      if (!IsAdvice(finding)) continue;
      const Edit& edit = one.table->EditsFor(finding)[finding.edits.front()];
      json_.Add({{"table", one.table->table}, {"warning", AdviceToJson(finding, edit, ranges)}, {"also", AlsoOf(folded, one)}});
    }
  }

  static Json ToJson(const NewestRefusal& refusal) {
    const TableResult& table = refusal.result;
    return {{"table", table.table},
            {"code", table.verdict.code},
            {"code_name", CodeNameOf(table.verdict.code)},
            {"rule", NameOrNull(table.verdict.rule)},
            {"summary", refusal.summary},
            {"text", table.verdict.text},
            {"removed", table.removed},
            {"waived", refusal.is_waived},
            {"cause", CauseToJson(refusal.cause)},
            {"step", refusal.step ? Json(*refusal.step + 1) : Json()},
            {"step_has_cause", refusal.has_cause}};
  }

  Json ToJson(const ReusedId& reused) const {
    const auto use = [&](const ReusedId::Use& one) {
      return Json{{"version", Name(one.version)}, {"field", one.field}, {"type", one.type}, {"location", one.location}};
    };
    return {{"level", WordOf(kIdReusedAdvice.level)},
            {"rule", kIdReusedAdvice.row.id},
            {"summary", kIdReusedAdvice.row.summary},
            {"meta", reused.meta},
            {"id", reused.id},
            {"before", use(reused.before)},
            {"after", use(reused.after)},
            {"table", reused.Path().table},
            {"path", reused.Path().path},
            {"change", reused.change},
            {"file", reused.file},
            {"suggestion", reused.suggestion},
            {"fingerprint", reused.fingerprint},
            {"waiver", korvel::ToJson(reused.waiver)}};
  }

  const History& history_;
  JsonStream& json_;
};

// Absent if there are none.
void WriteFaults(const std::vector<InputFault>& faults, JsonStream& json) {
  if (faults.empty()) return;
  json.Begin("faults", '[');
  for (const InputFault& fault : faults) json.Add(ToJson(fault));
  json.End();
}

}  // namespace

void WriteHistoryJson(const Histories& histories, const TextSink& sink) {
  JsonStream json(sink);
  json.Begin('{');
  json.AddMembers(HeaderToJson(kHistoryJsonVersion, "history"));
  json.Add("verdict", WordOf(VerdictOf(histories)));
  if (!histories.projects.empty()) {
    json.Begin("project_files", '[');
    for (const ReportProject& project : histories.projects) json.Add(ToJson(project));
    json.End();
  }
  json.Begin("files", '[');
  for (const History& history : histories.files) HistoryJson(history, json).Write();
  json.End();
  json.Begin("project", '[');
  for (const ProjectFinding& finding : histories.project) json.Add(ToJson(finding));
  json.End();
  WriteFaults(histories.Faults(), json);
  json.End();
}

}  // namespace korvel
