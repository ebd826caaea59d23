// Rules and result codes for programs; docs/rules.schema.json lists the members, docs/command-line.md describes them. Tested by
// tests/rule_docs/rule_docs_test.cpp and tests/tool/explain_test.cpp.
#include "report/render/json_stream.h"
#include "report/render/json_values.h"
#include "report/render/render.h"
#include "report/render/rule_doc_format.h"

namespace korvel {
namespace {

Json CodeJson(int code) { return {{"code", code}, {"code_name", ResultCodeName(code)}}; }

Json RowJson(const RuleDoc& doc) {
  Json codes = Json::array();
  for (const int code : doc.codes) codes.push_back(CodeJson(code));
  return {{"rule", doc.row->id}, {"codes", codes}, {"summary", doc.row->summary}, {"text", doc.row->text}};
}

Json RowJson(const RefusalRow& row, std::string_view level) {
  return {{"rule", row.id}, {"level", level}, {"summary", row.summary}};
}

Json ToJson(const CodeDoc& doc) {
  Json json = CodeJson(doc.code);
  json["meaning"] = doc.meaning;
  json["returned"] = doc.returned;
  Json& rules = json["rules"] = Json::array();
  for (const RefusalRow* row : doc.rules) rules.push_back(row->id);
  return json;
}

Json ExampleJson(const RuleDocExample& example) {
  Json json = {{"call", example.call}, {"old", example.old_schema}, {"new", example.new_schema}};
  json.update(CodeJson(example.code));
  json["answer"] = example.answer;
  json["instead"] = NameOrNull(example.allowed_schema);
  return json;
}

std::string ToText(const Json& json) { return JsonText(json) + "\n"; }

Json Header(const char* command) { return HeaderToJson(kJsonVersion, command); }

std::string List(const std::vector<const RuleDoc*>& docs) {
  Json json = Header("explain");
  Json& matches = json["matches"] = Json::array();
  for (const RuleDoc* doc : docs) matches.push_back(doc->level.empty() ? RowJson(*doc) : RowJson(*doc->row, doc->level));
  return ToText(json);
}

std::string Rules() {
  Json json = Header("rules");
  Json& rules = json["rules"] = Json::array();
  for (const RuleDoc& doc : AllRuleDocs()) rules.push_back(RowJson(doc));
  Json& advice = json["advice"] = Json::array();
  for (const AdviceRule* rule : AllAdvice()) advice.push_back(RowJson(rule->row, WordOf(rule->level)));
  Json& faults = json["faults"] = Json::array();
  for (const RefusalRow& row : kFaultRules) faults.push_back(RowJson(row, kFaultLevel));
  Json& project = json["project"] = Json::array();
  for (const ProjectRule* rule : kProjectRules) project.push_back(RowJson(rule->row, rule->level));
  return ToText(json);
}

std::string Codes() {
  Json json = Header("rules");
  Json& codes = json["codes"] = Json::array();
  for (const CodeDoc& doc : AllCodeDocs()) codes.push_back(ToJson(doc));
  return ToText(json);
}

std::string WithLevel(const RuleDoc& doc) {
  Json json = Header("explain");
  json.update(RowJson(*doc.row, doc.level));
  json["problem"] = doc.protects;
  json["instead"] = doc.allowed;
  json["no_example_reason"] = NameOrNull(doc.no_example_reason);
  Json& example = json["example"] = Json();
  if (!doc.example) return ToText(json);
  example = {{"call", doc.example->call},
             {"old", doc.example->old_schema},
             {"new", doc.example->new_schema},
             {"instead", NameOrNull(doc.example->allowed_schema)}};
  return ToText(json);
}

std::string Rule(const RuleDoc& doc) {
  if (!doc.level.empty()) return WithLevel(doc);
  Json json = Header("explain");
  json.update(RowJson(doc));
  json["protects"] = doc.protects;
  json["allowed"] = doc.allowed;
  json["replaced_by"] = NameOrNull(doc.replaced_by);
  json["no_example_reason"] = NameOrNull(doc.no_example_reason);
  json["example"] = doc.example ? ExampleJson(*doc.example) : Json();
  return ToText(json);
}

std::string Code(const CodeDoc& doc) {
  Json json = Header("explain");
  json.update(ToJson(doc));
  return ToText(json);
}

}  // namespace

const RuleDocFormat kRuleDocJson{"json", Rules, Codes, Rule, Code, List};

}  // namespace korvel
