// The rule book for programs; docs/command-line.md lists the members. Held by tests/tool/explain_test.cpp.
#include <nlohmann/json.hpp>

#include "rule_docs/book_format.h"

namespace korvel {
namespace {

using Json = nlohmann::ordered_json;

Json OrNull(const char* text) { return text == nullptr ? Json() : Json(text); }

Json ToJson(int code) { return {{"code", code}, {"code_name", ResultCodeName(code)}}; }

Json ToJson(const RefusalRow& row) {
  Json codes = Json::array();
  for (const int code : CodesOf(*FindPage(row.id))) codes.push_back(ToJson(code));
  return {{"rule", row.id}, {"codes", codes}, {"summary", row.summary}, {"text", row.text}};
}

Json ToJson(const CodePage& page) {
  Json json = ToJson(page.code);
  json["meaning"] = page.meaning;
  json["returned"] = page.returned;
  Json& rules = json["rules"] = Json::array();
  for (const RefusalRow* row : page.rules) rules.push_back(row->id);
  return json;
}

Json ExampleJson(const RulePage& page) {
  if (!HasExample(page)) return {};
  const RuleExample& example = page.example;
  Json json = {{"call", CallOf(example)}, {"old", OldText(example)}, {"new", NewText(example)}};
  json.update(ToJson(example.code));
  json["answer"] = example.answer;
  json["instead"] = HasInstead(page) ? Json(InsteadText(example)) : Json();
  return json;
}

std::string Whole(const Json& json) { return json.dump(2) + "\n"; }

Json Header() { return {{"tool", "korvelcheck"}, {"version", KORVEL_VERSION}}; }

std::string Rules() {
  Json json = Header();
  Json& rules = json["rules"] = Json::array();
  for (const RefusalRow* row : AllRefusals()) rules.push_back(ToJson(*row));
  return Whole(json);
}

std::string Codes() {
  Json json = Header();
  Json& codes = json["codes"] = Json::array();
  for (const CodePage& page : AllCodes()) codes.push_back(ToJson(page));
  return Whole(json);
}

std::string Rule(const RulePage& page) {
  Json json = Header();
  json.update(ToJson(*FindRow(page.id)));
  json["protects"] = page.protects;
  json["allowed"] = page.allowed;
  json["replaced_by"] = OrNull(page.replaced_by);
  json["unheard"] = OrNull(page.unheard);
  json["example"] = ExampleJson(page);
  return Whole(json);
}

std::string Code(const CodePage& page) {
  Json json = Header();
  json.update(ToJson(page));
  return Whole(json);
}

}  // namespace

const BookFormat kBookJson{"json", Rules, Codes, Rule, Code};

}  // namespace korvel
