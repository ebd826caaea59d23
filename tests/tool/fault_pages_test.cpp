// The example of each page about a fault is run as the page shows it.
#include <gtest/gtest.h>

#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "rule_docs/rule_docs.h"
#include "tool_test.h"

namespace korvel {

inline void PrintTo(const RuleDoc& doc, std::ostream* out) { *out << doc.row->id; }

}  // namespace korvel

namespace tool_test {
namespace {

using korvel::RuleDoc;

std::vector<std::string> Words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

std::string Id(const testing::TestParamInfo<RuleDoc>& info) {
  std::string name = info.param.row->id;
  for (char& c : name) c = c == '.' || c == '-' ? '_' : c;
  return name;
}

std::vector<RuleDoc> FaultsWithExample() {
  std::vector<RuleDoc> docs;
  for (const RuleDoc& doc : korvel::AllFaultDocs()) {
    if (doc.example) docs.push_back(doc);
  }
  return docs;
}

// The examples of faults.
class FaultExampleTest : public ToolTest, public testing::WithParamInterface<RuleDoc> {
 protected:
  // The rules of the faults that a check of these schemas reports.
  std::set<std::string> Reported(const std::string& new_schema, int exit_code) const {
    Write("old.xml", GetParam().example->old_schema);
    Write("new.xml", new_schema);
    const Outcome outcome = Korvelcheck(Words(GetParam().example->call.substr(12) + " --format json"));
    EXPECT_EQ(outcome.exit_code, exit_code) << outcome.out << outcome.err;
    std::set<std::string> rules;
    const nlohmann::json report = nlohmann::json::parse(outcome.out);
    for (const auto& fault : report.value("faults", nlohmann::json::array())) rules.insert(fault["rule"]);
    return rules;
  }
};

TEST_P(FaultExampleTest, IsReported) {
  EXPECT_EQ(Reported(GetParam().example->new_schema, 2), std::set<std::string>{GetParam().row->id});
}

TEST_P(FaultExampleTest, BetterSchemaIsAllowed) {
  EXPECT_EQ(Reported(GetParam().example->allowed_schema, 0), std::set<std::string>());
}

INSTANTIATE_TEST_SUITE_P(All, FaultExampleTest, testing::ValuesIn(FaultsWithExample()), Id);

}  // namespace
}  // namespace tool_test
