// The catalog and docs/rules agree: one well-formed page for every rule, one meaning for every result code. Whether the examples
// are true is tested in tests/tool/explain_test.cpp.
#include "rule_docs/rule_docs.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "report/render/rule_doc_format.h"
#include "rule_docs/rule_doc_files.h"

namespace rule_docs_test {
namespace {

namespace fs = std::filesystem;
using namespace korvel;
using testing::Contains;
using testing::ElementsAre;

TEST(RuleDocs, EveryRuleHasAPage) {
  for (const RefusalRow* row : AllRefusals()) {
    EXPECT_NE(FindRuleDoc(row->id), nullptr) << "docs/rules/" << RuleDocFileName(row->id) << " is missing";
  }
}

TEST(RuleDocs, EveryAdviceHasAPage) {
  for (const AdviceRule* rule : AllAdvice()) {
    const RuleDoc* const doc = FindRuleDoc(rule->row.id);
    ASSERT_NE(doc, nullptr) << "docs/rules/" << RuleDocFileName(rule->row.id) << " is missing";
    EXPECT_EQ(doc->advice, rule);
    EXPECT_EQ(doc->row, &rule->row);
    EXPECT_NE(doc->example.has_value(), !doc->no_example_reason.empty()) << rule->row.id;
  }
  EXPECT_EQ(AllAdviceDocs().size(), AllAdvice().size());
}

TEST(RuleDocs, EveryFaultHasAPage) {
  for (const RefusalRow& row : kFaultRules) {
    const RuleDoc* const doc = FindRuleDoc(row.id);
    ASSERT_NE(doc, nullptr) << "docs/rules/" << RuleDocFileName(row.id) << " is missing";
    EXPECT_EQ(doc->row, &row);
    EXPECT_EQ(doc->level, kFaultLevel);
    EXPECT_NE(doc->example.has_value(), !doc->no_example_reason.empty()) << row.id;
    EXPECT_EQ(FindRefusal(row.id), nullptr) << row.id;
    EXPECT_EQ(FindAdvice(row.id), nullptr) << row.id;
  }
  EXPECT_EQ(AllFaultDocs().size(), kFaultRules.size());
  EXPECT_STREQ(RuleOf(FaultKind::kSyntax).id, "schema.syntax");
  EXPECT_STREQ(RuleOf(FaultKind::kCall).id, "check.failed");
  EXPECT_EQ(FindFaultRule("schema"), nullptr);
}

TEST(RuleDocs, EveryProjectRuleHasAPage) {
  for (const ProjectRule* rule : kProjectRules) {
    const RuleDoc* const doc = FindRuleDoc(rule->row.id);
    ASSERT_NE(doc, nullptr) << "docs/rules/" << RuleDocFileName(rule->row.id) << " is missing";
    EXPECT_EQ(doc->row, &rule->row);
    EXPECT_EQ(doc->level, rule->level);
    EXPECT_NE(doc->no_example_reason, "");
    EXPECT_EQ(FindRule(rule->row.id), &rule->row);
    EXPECT_EQ(FindRefusal(rule->row.id), nullptr) << rule->row.id;
  }
  EXPECT_EQ(AllProjectDocs().size(), kProjectRules.size());
  EXPECT_TRUE(FindProjectRule("waiver.unused")->IsWarning());
  EXPECT_FALSE(FindProjectRule("waiver.expired")->IsWarning());
  EXPECT_EQ(FindProjectRule("waiver"), nullptr);
}

// Reports list warnings first, and no id is that of a refusal.
TEST(Advice, RowsAreWellFormed) {
  Level last = Level::kWarning;
  for (const AdviceRule* rule : AllAdvice()) {
    EXPECT_TRUE(std::string(rule->row.id).starts_with("advice.")) << rule->row.id;
    EXPECT_EQ(FindRefusal(rule->row.id), nullptr) << rule->row.id;
    EXPECT_EQ(FindAdvice(rule->row.id), rule);
    EXPECT_EQ(rule->row.code, 0) << rule->row.id;
    EXPECT_GE(rule->level, last) << rule->row.id;
    last = rule->level;
  }
  EXPECT_EQ(FindAdvice("advice.key"), nullptr);
  EXPECT_EQ(FindAdvice(""), nullptr);
}

TEST(RuleDocs, EveryRuleHasAFileOfItsOwn) {
  std::set<std::string> files;
  for (const AdviceRule* rule : AllAdvice()) EXPECT_TRUE(files.insert(RuleDocFileName(rule->row.id)).second) << rule->row.id;
  for (const RefusalRow& row : kFaultRules) EXPECT_TRUE(files.insert(RuleDocFileName(row.id)).second) << row.id;
  for (const ProjectRule* rule : kProjectRules) EXPECT_TRUE(files.insert(RuleDocFileName(rule->row.id)).second) << rule->row.id;
  for (const RefusalRow* row : AllRefusals()) EXPECT_TRUE(files.insert(RuleDocFileName(row->id)).second) << row->id;
}

// A failure names file and line, also of a page without a rule.
TEST(RuleDocs, EveryPageIsWellFormed) {
  for (const RuleDocFile& file : RuleDocFiles()) EXPECT_EQ(ParseRuleDoc(file).fault, "");
  EXPECT_EQ(ParseCodeDocs(ResultCodesFile()).fault, "");
}

TEST(RuleDocs, EveryPageHasAnExampleOrAReason) {
  for (const RuleDoc& doc : AllRuleDocs()) EXPECT_NE(doc.example.has_value(), !doc.no_example_reason.empty()) << doc.row->id;
}

TEST(RuleDocs, ReplacedTextsRedirectToThoseThatCallersGet) {
  for (const RuleDoc& doc : AllRuleDocs()) {
    if (doc.replaced_by.empty()) continue;
    const RuleDoc* reported = FindRuleDoc(doc.replaced_by);
    ASSERT_NE(reported, nullptr) << doc.row->id;
    EXPECT_EQ(reported->replaced_by, "") << doc.row->id;
    for (const int code : doc.codes) EXPECT_THAT(reported->codes, Contains(code)) << doc.row->id;
  }
}

TEST(RuleDocs, FindsPagesAndRowsByTheWholeId) {
  EXPECT_STREQ(FindRuleDoc("primary-key.size")->row->id, "primary-key.size");
  EXPECT_EQ(FindRuleDoc("primary-key.siz"), nullptr);
  EXPECT_STREQ(FindRefusal("primary-key.size-tlv")->id, "primary-key.size-tlv");
  EXPECT_EQ(FindRefusal(""), nullptr);
}

TEST(RuleDocs, CodesAreThoseThatCallersGet) {
  EXPECT_THAT(FindRuleDoc("primary-key.size")->codes, ElementsAre(-3));
  EXPECT_THAT(FindRuleDoc("primary-key.member")->codes, ElementsAre(-4));  // its own, -7, is not returned
  EXPECT_THAT(FindRuleDoc("table.list-num")->codes, ElementsAre(-5, -1));  // of the rule, of the whole check
  EXPECT_THAT(FindRuleDoc("length.whitelist")->codes, ElementsAre(-35));
}

TEST(RuleDocs, EveryExampleReportsACodeOfItsPage) {
  for (const RuleDoc& doc : AllRuleDocs()) {
    if (!doc.example) continue;
    EXPECT_THAT(doc.codes, Contains(doc.example->code)) << doc.row->id;
  }
}

TEST(CodeDocs, IsReturnedIfARuleReturnsIt) {
  for (const CodeDoc& doc : AllCodeDocs()) EXPECT_EQ(doc.returned, doc.code == 0 || !doc.rules.empty()) << doc.code;
}

TEST(CodeDocs, ListsTheReturnedCodes) {
  std::vector<int> returned;
  for (const CodeDoc& doc : AllCodeDocs()) {
    if (doc.returned) returned.push_back(doc.code);
  }
  EXPECT_THAT(returned, ElementsAre(0, -1, -2, -3, -4, -5, -6, -7, -8, -9, -10, -11, -15, -16, -17, -18, -19, -33, -34, -35));
}

TEST(CodeDocs, ListsTheRulesOfACode) {
  std::vector<std::string> rules;
  for (const RefusalRow* row : FindCodeDoc(-9).rules) rules.emplace_back(row->id);
  EXPECT_THAT(rules, ElementsAre("field-name.invalid", "field-name.length", "table.old-field"));
}

TEST(RuleDocFormat, JsonFollowsItsSchema) {
  const fs::path directory = fs::temp_directory_path() / ("korvel_rules." + std::to_string(::getpid()));
  fs::create_directory(directory);
  int number = 0;
  const auto write = [&](const std::string& json) { std::ofstream(directory / (std::to_string(++number) + ".json")) << json; };
  write(kRuleDocJson.rules());
  write(kRuleDocJson.codes());
  write(
      kRuleDocJson.list({&AllRuleDocs().front(), &AllAdviceDocs().front(), &AllFaultDocs().front(), &AllProjectDocs().front()}));
  for (const RuleDoc& doc : AllRuleDocs()) write(kRuleDocJson.rule(doc));
  for (const RuleDoc& doc : AllAdviceDocs()) write(kRuleDocJson.rule(doc));
  for (const RuleDoc& doc : AllFaultDocs()) write(kRuleDocJson.rule(doc));
  for (const RuleDoc& doc : AllProjectDocs()) write(kRuleDocJson.rule(doc));
  for (const CodeDoc& doc : AllCodeDocs()) write(kRuleDocJson.code(doc));
  const std::string source = KORVEL_SOURCE_DIR;
  const std::string command = KORVEL_PYTHON " '" + source + "/tests/report/validate.py' '" + source +
                              "/docs/rules.schema.json' '" + directory.string() + "'/*.json";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  fs::remove_all(directory);
}

}  // namespace
}  // namespace rule_docs_test
