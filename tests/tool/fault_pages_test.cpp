// The example of each page about a fault is run as the page shows it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <set>

#include "rule_docs/rule_docs.h"
#include "rule_examples.h"
#include "tool_test.h"

namespace tool_test {
namespace {

using korvel::RuleDoc;

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

INSTANTIATE_TEST_SUITE_P(All, FaultExampleTest, testing::ValuesIn(WithExample(korvel::AllFaultDocs())), Id);

}  // namespace
}  // namespace tool_test
