// Parses the embedded pages once and looks them up. Tested by tests/rule_docs/rule_docs_test.cpp.
#include "rule_docs/rule_docs.h"

#include <algorithm>
#include <utility>

#include "rule_docs/rule_doc_files.h"

namespace korvel {
namespace {

// A page that does not parse keeps what could be read; the tests fail on it.
void AddDoc(const RefusalRow& row, const AdviceRule* advice, std::string_view level, std::vector<RuleDoc>& docs) {
  const auto file = std::ranges::find(RuleDocFiles(), RuleDocFileName(row.id), &RuleDocFile::name);
  if (file == RuleDocFiles().end()) return;
  RuleDoc doc = ParseRuleDoc(*file).doc;
  doc.row = &row;
  doc.advice = advice;
  doc.level = level;
  docs.push_back(std::move(doc));
}

std::vector<RuleDoc> ParseRuleDocs() {
  std::vector<RuleDoc> docs;
  for (const RefusalRow* row : AllRefusals()) AddDoc(*row, nullptr, "", docs);
  return docs;
}

std::vector<RuleDoc> ParseAdviceDocs() {
  std::vector<RuleDoc> docs;
  for (const AdviceRule* advice : AllAdvice()) AddDoc(advice->row, advice, WordOf(advice->level), docs);
  return docs;
}

std::vector<RuleDoc> ParseFaultDocs() {
  std::vector<RuleDoc> docs;
  for (const RefusalRow& row : kFaultRules) AddDoc(row, nullptr, kFaultLevel, docs);
  return docs;
}

std::vector<RuleDoc> ParseProjectDocs() {
  std::vector<RuleDoc> docs;
  for (const ProjectRule* rule : kProjectRules) AddDoc(rule->row, nullptr, rule->level, docs);
  return docs;
}

std::vector<CodeDoc> ParseCodes() {
  std::vector<CodeDoc> codes = ParseCodeDocs(ResultCodesFile()).codes;
  for (const RuleDoc& doc : AllRuleDocs()) {
    for (const int code : doc.codes) codes[static_cast<std::size_t>(-code)].rules.push_back(doc.row);
  }
  return codes;
}

}  // namespace

const RefusalRow* FindRule(std::string_view id) {
  if (const RefusalRow* const row = FindRefusal(id)) return row;
  if (const AdviceRule* const advice = FindAdvice(id)) return &advice->row;
  const ProjectRule* const rule = FindProjectRule(id);
  return rule == nullptr ? FindFaultRule(id) : &rule->row;
}

std::span<const RuleDoc> AllRuleDocs() {
  static const std::vector<RuleDoc> docs = ParseRuleDocs();
  return docs;
}

std::span<const RuleDoc> AllAdviceDocs() {
  static const std::vector<RuleDoc> docs = ParseAdviceDocs();
  return docs;
}

std::span<const RuleDoc> AllFaultDocs() {
  static const std::vector<RuleDoc> docs = ParseFaultDocs();
  return docs;
}

std::span<const RuleDoc> AllProjectDocs() {
  static const std::vector<RuleDoc> docs = ParseProjectDocs();
  return docs;
}

namespace {

// Those among which the page of the rule is.
std::span<const RuleDoc> DocsWith(std::string_view rule_id) {
  if (FindAdvice(rule_id) != nullptr) return AllAdviceDocs();
  if (FindFaultRule(rule_id) != nullptr) return AllFaultDocs();
  return FindProjectRule(rule_id) != nullptr ? AllProjectDocs() : AllRuleDocs();
}

}  // namespace

const RuleDoc* FindRuleDoc(std::string_view rule_id) {
  const std::span<const RuleDoc> docs = DocsWith(rule_id);
  const auto found = std::ranges::find_if(docs, [&](const RuleDoc& doc) { return rule_id == doc.row->id; });
  return found == docs.end() ? nullptr : &*found;
}

std::string RulePagesUrl() { return KORVEL_HOMEPAGE "/blob/main/docs/rules/"; }

std::string RulePageUrl(std::string_view rule_id) { return RulePagesUrl() + RuleDocFileName(rule_id); }

std::span<const CodeDoc> AllCodeDocs() {
  static const std::vector<CodeDoc> codes = ParseCodes();
  return codes;
}

const CodeDoc& FindCodeDoc(int code) { return AllCodeDocs()[static_cast<std::size_t>(-code)]; }

std::string RuleDocFileName(std::string_view rule_id) {
  std::string file(rule_id);
  std::ranges::replace(file, '.', '-');
  return file + ".md";
}

std::string CodeWithName(int code) { return std::to_string(code) + " " + ResultCodeName(code); }

std::string SentenceOf(std::string_view summary) {
  std::string sentence = std::string(summary) + ".";
  if (sentence.front() >= 'a' && sentence.front() <= 'z') sentence.front() = static_cast<char>(sentence.front() - 'a' + 'A');
  return sentence;
}

std::string LinkToRule(std::string_view rule_id) { return "[" + std::string(rule_id) + "](" + RuleDocFileName(rule_id) + ")"; }

}  // namespace korvel
