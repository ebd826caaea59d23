// The limit on the search for suggestions is that of a whole call: tables use it up in the order of the report.
#include "project/check_tables.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <string>
#include <vector>

#include "analysis/suggest/suggest.h"
#include "analysis/suggest/work_limit.h"
#include "read_source.h"
#include "vesk/closed_category.h"

namespace report_test {
namespace {

using namespace korvel;
using testing::Each;
using testing::IsEmpty;
using testing::Not;

constexpr std::size_t kTables = 6;
constexpr std::size_t kFields = 40;

// Every fourth field of each table gets a wider type in the new schema, which is refused. Padding makes the library large enough
// for several threads.
std::string Schema(bool is_new, std::size_t padding) {
  std::string text = "<metalib name=\"mall\" version=\"" + std::string(is_new ? "2" : "1") + "\">\n";
  for (std::size_t t = 0; t < kTables; ++t) {
    text += "<meta name=\"t" + std::to_string(t) + "\"><entry name=\"k\" type=\"int32\"/>\n";
    for (std::size_t f = 0; f < kFields; ++f) {
      text += "<entry name=\"f" + std::to_string(f) + "\" type=\"" + (is_new && f % 4 == 0 ? "int64" : "int32") + "\"/>\n";
    }
    text += "<primarykey entries=\"k\"/></meta>\n";
  }
  text += "<meta name=\"padding\"><entry name=\"p\" type=\"int8\"/>\n";
  for (std::size_t f = 0; f < padding; ++f) text += "<entry name=\"p" + std::to_string(f) + "\" type=\"int8\"/>\n";
  return text + "</meta>\n</metalib>\n";
}

class SharedLimitTest : public testing::TestWithParam<std::size_t> {
 protected:
  SharedLimitTest()
      : old_source_(ReadSource("old.xml", Schema(false, GetParam()))),
        new_source_(ReadSource("new.xml", Schema(true, GetParam()))) {}

  Report ReportWith(std::size_t limit) const {
    Report report;
    report.command = "check";
    report.inputs = {{"old", &old_source_}, {"new", &new_source_}};
    vesk::ClosedCategory log;
    CheckOptions options;
    options.log = log.handle();
    std::vector<std::string> tables;
    for (std::size_t t = 0; t < kTables; ++t) tables.push_back("t" + std::to_string(t));
    CheckEachTable(report, PairOf(report), tables, options);
    AddSuggestions(report, true, {WorkLimit(limit), WorkLimit(limit)});
    return report;
  }

  Source old_source_;
  Source new_source_;
};

std::vector<std::string> SuggestionsOf(const TableResult& table) {
  std::vector<std::string> suggestions;
  for (const Finding& finding : table.changes->findings) suggestions.push_back(finding.suggestion);
  return suggestions;
}

// The table at which the limit was reached; kTables if it was not. At most one says so.
std::size_t LimitedTable(const Report& report) {
  std::size_t limited = kTables;
  for (std::size_t t = 0; t < kTables; ++t) {
    if (!report.tables[t].changes->reached_work_limit) continue;
    EXPECT_EQ(limited, kTables) << "t" << t;
    limited = t;
  }
  return limited;
}

TEST_P(SharedLimitTest, TablesBeforeTheLimitAreAsWithoutOne) {
  const Report whole = ReportWith(kMaxWork);
  ASSERT_EQ(LimitedTable(whole), kTables);
  std::vector<bool> seen(kTables + 1);
  for (std::size_t limit = 0; !seen[kTables]; limit = limit * 9 / 8 + 50) {
    SCOPED_TRACE(limit);
    const Report report = ReportWith(limit);
    const std::size_t limited = LimitedTable(report);
    seen[limited] = true;
    for (std::size_t t = 0; t < limited; ++t) EXPECT_EQ(SuggestionsOf(report.tables[t]), SuggestionsOf(whole.tables[t])) << t;
    for (std::size_t t = 0; t < kTables; ++t) EXPECT_THAT(SuggestionsOf(report.tables[t]), Each(Not(IsEmpty()))) << t;
  }
  EXPECT_THAT(seen, Each(true)) << "the limits do not reach every table";
}

INSTANTIATE_TEST_SUITE_P(OneThreadAndSeveral, SharedLimitTest, testing::Values(0, 8'000));

TEST(SuggestedSchema, SaysThatTheSearchEndedEarly) {
  const Source old_source = ReadSource("old.xml", Schema(false, 0));
  const Source new_source = ReadSource("new.xml", Schema(true, 0));
  const std::vector<TableQuestion> questions = {{"t0", ResolveSettings({}, old_source, "t0")}};
  EXPECT_FALSE(SuggestSchema(old_source, new_source, questions).reached_work_limit);
  EXPECT_TRUE(SuggestSchema(old_source, new_source, questions, {WorkLimit(0), WorkLimit(0)}).reached_work_limit);
}

}  // namespace
}  // namespace report_test
