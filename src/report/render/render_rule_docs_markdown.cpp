// The pages of docs/rules as they are, and the index that `make docs` writes to docs/rules/README.md. Tested by
// tests/tool/explain_test.cpp.
#include "base/text.h"
#include "report/render/rule_doc_format.h"
#include "rule_docs/rule_doc_files.h"

namespace korvel {
namespace {

constexpr std::size_t kWidth = 130;
constexpr char kIndexHead[] =
    "<!-- Written by `make docs`. -->\n"
    "\n"
    "# Rules\n"
    "\n"
    "Every refusal of the checker, in the order of the catalog. Each page says what the rule protects and what is allowed "
    "instead, and "
    "shows a\n"
    "minimal example. `korvelcheck explain RULE` prints the same.\n"
    "\n"
    "| Rule | Result code | Refused because |\n"
    "|---|---|---|\n";
constexpr char kAdviceHead[] =
    "\n"
    "## Warnings and notes\n"
    "\n"
    "These rules are about changes that the checker allows, about new tables, which it has nothing to compare with, and about\n"
    "attributes that it ignores. Their ids begin with `advice.`; they do not change the verdict. After a change with a warning,\n"
    "records might not read back. With `--fail-on warning`, a warning makes `check` fail.\n"
    "\n"
    "| Rule | Level | Reported because |\n"
    "|---|---|---|\n";
constexpr char kFaultsHead[] =
    "\n"
    "## Faults\n"
    "\n"
    "These rules are about files that could not be checked and calls that could not be carried out. The verdict is then\n"
    "`incomplete` and the exit code is 2. Faults cannot be waived.\n"
    "\n"
    "| Rule | Level | Reported because |\n"
    "|---|---|---|\n";
constexpr char kProjectHead[] =
    "\n"
    "## Project files, waivers and limits\n"
    "\n"
    "About `korvelcheck.toml`, and about what a report leaves out.\n"
    "\n"
    "| Rule | Level | Reported because |\n"
    "|---|---|---|\n";
constexpr char kCodesHead[] =
    "\n"
    "## Rules by result code\n"
    "\n"
    "[Result codes](result-codes.md) says what each code means.\n"
    "\n"
    "| Result code | Rules |\n"
    "|---|---|\n";

std::string Links(const CodeDoc& doc) {
  return Join(doc.rules, ", ", [](const RefusalRow* row) { return LinkToRule(row->id); });
}

std::string Rules() {
  std::string text = kIndexHead;
  for (const RuleDoc& doc : AllRuleDocs()) {
    text += "| " + LinkToRule(doc.row->id) + " | " + CodeNumbers(doc.codes) + " | " + doc.row->summary + " |\n";
  }
  text += kAdviceHead;
  for (const AdviceRule* advice : AllAdvice()) {
    text += "| " + LinkToRule(advice->row.id) + " | " + WordOf(advice->level) + " | " + advice->row.summary + " |\n";
  }
  text += kFaultsHead;
  for (const RefusalRow& row : kFaultRules)
    text += "| " + LinkToRule(row.id) + " | " + kFaultLevel + " | " + row.summary + " |\n";
  text += kProjectHead;
  for (const ProjectRule* rule : kProjectRules) {
    text += "| " + LinkToRule(rule->row.id) + " | " + std::string(rule->level) + " | " + rule->row.summary + " |\n";
  }
  text += kCodesHead;
  for (const CodeDoc& doc : AllCodeDocs()) {
    if (!doc.rules.empty()) text += "| `" + CodeWithName(doc.code) + "` | " + Links(doc) + " |\n";
  }
  return text;
}

std::string List(const std::vector<const RuleDoc*>& docs) {
  std::string text = "| Rule | Code or level | Reported because |\n|---|---|---|\n";
  for (const RuleDoc* doc : docs) {
    const std::string level = doc->level.empty() ? CodeNumbers(doc->codes) : std::string(doc->level);
    text += "| " + LinkToRule(doc->row->id) + " | " + level + " | " + doc->row->summary + " |\n";
  }
  return text;
}

std::string Codes() { return std::string(ResultCodesFile().text); }

std::string Rule(const RuleDoc& doc) { return std::string(doc.page); }

std::string Code(const CodeDoc& doc) {
  std::string text = "# " + CodeWithName(doc.code) + "\n\n" + Wrapped(doc.meaning, kWidth);
  if (!doc.returned) text += "\nNever returned by this checker.\n";
  if (!doc.rules.empty()) text += "\n" + Wrapped("Rules: " + Links(doc), kWidth);
  return text;
}

}  // namespace

const RuleDocFormat kRuleDocMarkdown{"markdown", Rules, Codes, Rule, Code, List};

}  // namespace korvel
