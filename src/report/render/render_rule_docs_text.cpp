// Rules and result codes for people at a terminal. Tested by tests/tool/explain_test.cpp.
#include <algorithm>

#include "base/text.h"
#include "report/render/rule_doc_format.h"
#include "rule_docs/rule_doc_files.h"

namespace korvel {
namespace {

constexpr std::size_t kWidth = 100;
constexpr std::size_t kRuleWidth = 26;

std::string Padded(const std::string& text, std::size_t width) {
  return text + std::string(std::max(width, text.size() + 1) - text.size(), ' ');
}

std::string CodesText(const std::vector<int>& codes) { return Join(codes, ", ", CodeWithName); }

std::string Section(const std::string& title, const std::string& text) {
  return "\n" + title + "\n" + Wrapped(text, kWidth, "  ");
}

std::string File(const std::string& title, const std::string& text) {
  std::string indented;
  for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
    indented += "  " + text.substr(at, text.find('\n', at) + 1 - at);
  }
  return "\n" + title + "\n" + indented;
}

std::string ExampleText(const RuleDocExample& example) {
  std::string text = File("old.xml", example.old_schema) + File("new.xml", example.new_schema) + "\n$ " + example.call + "\n  " +
                     CodeWithName(example.code) + "\n  " + example.answer + "\n";
  if (!example.allowed_schema.empty()) text += File("Allowed new.xml", example.allowed_schema);
  return text;
}

std::string WithLevel(const RuleDoc& doc) {
  const std::string level(doc.level);
  std::string text = std::string(doc.row->id) + ": " + doc.row->summary + "\n  level  " + level + "\n" +
                     Section("What goes wrong", doc.protects) + Section("What to do instead", doc.allowed);
  if (!doc.example) return text + Section("No example", doc.no_example_reason);
  const RuleDocExample& example = *doc.example;
  text += File("old.xml", example.old_schema) + File("new.xml", example.new_schema) + "\n$ " + example.call + "\n  " + level +
          " [" + doc.row->id + "]\n";
  return example.allowed_schema.empty() ? text : text + File("Better new.xml", example.allowed_schema);
}

std::string List(const std::vector<const RuleDoc*>& docs) {
  std::string text;
  for (const RuleDoc* doc : docs) {
    const std::string level = doc->level.empty() ? CodeNumbers(doc->codes) : std::string(doc->level);
    text += Padded(doc->row->id, kRuleWidth) + Padded(level, 9) + doc->row->summary + "\n";
  }
  return text;
}

std::string Rules() {
  std::string text;
  for (const RuleDoc& doc : AllRuleDocs()) {
    text += Padded(doc.row->id, kRuleWidth) + Padded(CodeNumbers(doc.codes), 9) + doc.row->summary + "\n";
  }
  text += "\n";
  for (const AdviceRule* advice : AllAdvice()) {
    text += Padded(advice->row.id, kRuleWidth) + Padded(WordOf(advice->level), 9) + advice->row.summary + "\n";
  }
  text += "\n";
  for (const RefusalRow& row : kFaultRules) text += Padded(row.id, kRuleWidth) + Padded(kFaultLevel, 9) + row.summary + "\n";
  text += "\n";
  for (const ProjectRule* rule : kProjectRules) {
    text += Padded(rule->row.id, kRuleWidth) + Padded(std::string(rule->level), 9) + rule->row.summary + "\n";
  }
  return text;
}

std::string Codes() {
  std::string text;
  for (const CodeDoc& doc : AllCodeDocs()) {
    text += Padded(std::to_string(doc.code), 5);
    text += doc.returned ? ResultCodeName(doc.code) : Padded(ResultCodeName(doc.code), 46) + "never returned by this checker";
    text += "\n";
  }
  return text;
}

std::string Rule(const RuleDoc& doc) {
  if (!doc.level.empty()) return WithLevel(doc);
  std::string text = std::string(doc.row->id) + ": " + doc.row->summary + "\n" + "  code  " + CodesText(doc.codes) + "\n" +
                     "  text  " + doc.row->text + "\n";
  if (!doc.replaced_by.empty()) text += "  Log only: callers get the text of " + doc.replaced_by + ".\n";
  text += Section("What it protects", doc.protects) + Section("Allowed instead", doc.allowed);
  return text + (doc.example ? ExampleText(*doc.example) : Section("No example", doc.no_example_reason));
}

std::string Code(const CodeDoc& doc) {
  std::string text = CodeWithName(doc.code) + "\n" + Wrapped(doc.meaning, kWidth, "  ");
  if (!doc.returned) return text + "  Never returned by this checker.\n";
  if (!doc.rules.empty()) text += "\nRules\n";
  for (const RefusalRow* row : doc.rules) text += "  " + Padded(row->id, kRuleWidth) + row->summary + "\n";
  return text;
}

}  // namespace

const RuleDocFormat kRuleDocText{"text", Rules, Codes, Rule, Code, List};

}  // namespace korvel
