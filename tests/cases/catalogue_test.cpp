// Every row of the catalogue that schema files can bring about has a case in which it fires; the others are named here.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "case_run.h"
#include "common/refusals.h"
#include "rule_docs/rule_docs.h"

namespace cases {
namespace {

// Rows that no pair of schema files brings about, and why.
const std::map<std::string, std::string> kNotFromFiles = {
    {"arguments.check", "files are there, and the table has a name"},
    {"arguments.compat", "files are there, and the table has a name"},
    {"arguments.table-type", "settings name generic or list, nothing else"},
    {"index.table-type", "settings name generic or list, nothing else"},
    {"arguments.protocol", "settings name qmx or tlv, nothing else"},
    {"arguments.name-meta", "names are checked after the table was found"},
    {"arguments.lookup", "names are always there, and ids in TLV files start at 0"},
    {"field.id-tlv", "ids in TLV files start at 0"},
    {"library.no-version", "versions in files start at 0"},
    {"library.no-source-version", "versions in files start at 0"},
    {"primary-key.none", "keys are looked at after both were found"},
    {"primary-key.name-tlv", "ids in TLV files are unique"},
    {"index.null", "an index is compared after it was found"},
    {"field.structure-missing", "a composite field's structure is always in its file"},
    {"table.new-field", "fields that are counted can be had"},
    {"table.new-field-name", "fields have names, if only empty ones"},
    {"table.old-field", "fields that are counted can be had"},
    {"table.old-field-name", "fields have names, if only empty ones"},
    {"length.field-missing", "fields that are counted can be had"},
};

// Rows that only an operation that is handed no structure says: it is asked so where a file lacks the table.
const std::set<std::string> kOnlyWithoutStructure = {"arguments.meta", "arguments.old-meta", "arguments.new-meta"};

void Collect(const std::string& text, std::set<std::string>& ids) {
  if (const korvel::RefusalRow* row = korvel::Identify(text)) ids.insert(row->id);
}

std::set<std::string> FiredIds() {
  std::set<std::string> ids;
  for (const std::string& name : Names()) {
    for (const Answer& answer : AskAll(Load(name))) {
      Collect(answer.text, ids);
      for (const std::string& text : answer.texts) Collect(text, ids);
    }
  }
  return ids;
}

TEST(Catalogue, EveryRowFiresInACaseOrIsNamed) {
  const std::set<std::string> fired = FiredIds();
  for (const korvel::RefusalRow* row : korvel::AllRefusals()) {
    EXPECT_NE(fired.contains(row->id), kNotFromFiles.contains(row->id))
        << row->id << (fired.contains(row->id) ? ": fires, yet is named as one that files cannot bring about" : ": has no case");
  }
}

TEST(Catalogue, PagesHaveAnExampleOfEveryRowThatFilesTrigger) {
  for (const korvel::RuleDoc& doc : korvel::AllRuleDocs()) {
    const bool from_files = !kNotFromFiles.contains(doc.row->id) && !kOnlyWithoutStructure.contains(doc.row->id);
    EXPECT_EQ(doc.example.has_value(), from_files) << doc.row->id;
  }
}

// Under every operation: the code that comes with a text is one that its page names, and the page of the code names the rule.
TEST(Catalogue, PagesNameTheCodesThatAreReturned) {
  for (const std::string& name : Names()) {
    for (const Answer& answer : AskAll(Load(name))) {
      const korvel::RefusalRow* row = korvel::Identify(answer.text);
      if (answer.code.value_or(0) == 0 || row == nullptr) continue;
      const std::vector<int> codes = korvel::FindRuleDoc(row->id)->codes;
      EXPECT_EQ(std::count(codes.begin(), codes.end(), *answer.code), 1)
          << name << ": " << answer.operation << " returns " << *answer.code << " with " << row->id;
    }
  }
}

TEST(Catalogue, NamedRowsExist) {
  std::set<std::string> ids;
  for (const korvel::RefusalRow* row : korvel::AllRefusals()) ids.insert(row->id);
  for (const auto& [id, reason] : kNotFromFiles) EXPECT_TRUE(ids.contains(id)) << id;
}

}  // namespace
}  // namespace cases
