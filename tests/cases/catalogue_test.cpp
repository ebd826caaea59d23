// Every row of the catalog has a case that triggers it, unless it is listed here with a reason.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "case_analysis.h"
#include "case_run.h"
#include "common/refusals.h"
#include "rule_docs/rule_docs.h"

namespace cases {
namespace {

// Rows that no pair of schema files triggers, and why.
const std::map<std::string, std::string> kNoCase = {
    {"arguments.check", "the libraries exist, and the table has a name"},
    {"arguments.compat", "the libraries exist, and the table has a name"},
    {"arguments.table-type", "settings name generic or list, nothing else"},
    {"index.table-type", "settings name generic or list, nothing else"},
    {"arguments.protocol", "settings name qmx or tlv, nothing else"},
    {"arguments.name-meta", "names are checked only after the table was found"},
    {"arguments.lookup", "fields always have a name, and ids in TLV files are 0 or more"},
    {"field.id-tlv", "ids in TLV files are 0 or more"},
    {"library.no-version", "versions in files are 0 or more"},
    {"library.no-source-version", "versions in files are 0 or more"},
    {"primary-key.none", "keys are compared only after both were found"},
    {"primary-key.name-tlv", "ids in TLV files are unique"},
    {"index.null", "an index is compared only after it was found"},
    {"field.structure-missing", "the structure of a composite field is always in its file"},
    {"table.new-field", "a library contains every field that it counts"},
    {"table.new-field-name", "fields always have a name, possibly an empty one"},
    {"table.old-field", "a library contains every field that it counts"},
    {"table.old-field-name", "fields always have a name, possibly an empty one"},
    {"length.field-missing", "a library contains every field that it counts"},
};

// Rows that only operations on structures report: they get none if a schema lacks the table.
const std::set<std::string> kStructureMissing = {"arguments.meta", "arguments.old-meta", "arguments.new-meta"};

void Collect(const std::string& text, std::set<std::string>& ids) {
  if (const korvel::RefusalRow* row = korvel::Identify(text)) ids.insert(row->id);
}

std::set<std::string> TriggeredIds() {
  std::set<std::string> ids;
  for (const std::string& name : Names()) {
    for (const OperationResult& result : RunOperations(Load(name))) {
      Collect(result.text, ids);
      for (const std::string& text : result.texts) Collect(text, ids);
    }
  }
  return ids;
}

TEST(Catalogue, EveryRowHasACaseOrReason) {
  const std::set<std::string> triggered = TriggeredIds();
  for (const korvel::RefusalRow* row : korvel::AllRefusals()) {
    EXPECT_NE(triggered.contains(row->id), kNoCase.contains(row->id))
        << row->id << (triggered.contains(row->id) ? ": has a case, but is listed as one that has none" : ": has no case");
  }
}

TEST(Catalogue, EveryRowThatFilesCanTriggerHasExample) {
  for (const korvel::RuleDoc& doc : korvel::AllRuleDocs()) {
    const bool from_files = !kNoCase.contains(doc.row->id) && !kStructureMissing.contains(doc.row->id);
    EXPECT_EQ(doc.example.has_value(), from_files) << doc.row->id;
  }
}

// The page of a rule lists every code that an operation returns with the text of the rule.
TEST(Catalogue, PagesListReturnedCodes) {
  for (const std::string& name : Names()) {
    for (const OperationResult& result : RunOperations(Load(name))) {
      const korvel::RefusalRow* row = korvel::Identify(result.text);
      if (result.code.value_or(0) == 0 || row == nullptr) continue;
      const std::vector<int> codes = korvel::FindRuleDoc(row->id)->codes;
      EXPECT_EQ(std::count(codes.begin(), codes.end(), *result.code), 1)
          << name << ": " << result.operation << " returns " << *result.code << " with " << row->id;
    }
  }
}

// Rules of advice that no two schemas trigger.
const std::set<std::string> kAdviceOfHistories = {"advice.id-reused"};

// Rules about tables that only the new schema has. The tables of cases are in both.
const std::set<std::string> kAdviceOfNewTables = {"advice.new-table"};

TEST(Catalogue, EveryAdviceHasACaseAndAPage) {
  std::set<std::string> found;
  for (const std::string& name : Names()) {
    const Analysis analysis = Analyze(name, Load(name).settings);
    for (const korvel::Finding& finding : analysis.advice.findings) found.insert(finding.verdict.rule);
  }
  for (const korvel::AdviceRule* rule : korvel::AllAdvice()) {
    const bool has_case = !kAdviceOfHistories.contains(rule->row.id) && !kAdviceOfNewTables.contains(rule->row.id);
    EXPECT_EQ(found.contains(rule->row.id), has_case) << rule->row.id;
    const korvel::RuleDoc* const doc = korvel::FindRuleDoc(rule->row.id);
    ASSERT_NE(doc, nullptr) << rule->row.id;
    EXPECT_EQ(doc->example.has_value(), !kAdviceOfHistories.contains(rule->row.id)) << rule->row.id;
  }
}

// The name of a case says whether there is a warning: "no-..." says that there is none.
TEST(Catalogue, NearMissesHaveNoAdvice) {
  std::size_t count = 0;
  for (const std::string& name : Names()) {
    if (!name.starts_with("warnings/")) continue;
    const bool is_near_miss = name.starts_with("warnings/no-");
    EXPECT_EQ(Analyze(name, Load(name).settings).advice.findings.empty(), is_near_miss) << name;
    count += is_near_miss ? 1 : 0;
  }
  EXPECT_GT(count, 10u);
}

TEST(Catalogue, ListedRowsExist) {
  std::set<std::string> ids;
  for (const korvel::RefusalRow* row : korvel::AllRefusals()) ids.insert(row->id);
  for (const auto& [id, reason] : kNoCase) EXPECT_TRUE(ids.contains(id)) << id;
}

}  // namespace
}  // namespace cases
