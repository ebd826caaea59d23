// The limit on the work of a call: what is refused above it, and that the report says where it was reached.
#include "analysis/suggest/work_limit.h"

#include <gtest/gtest.h>

#include "report/render/render.h"
#include "shared_report.h"

namespace report_test {
namespace {

using korvel::SuggestionWork;
using korvel::WorkLimit;

TEST(WorkLimit, RefusesOnlyWhatIsAboveIt) {
  WorkLimit work(10);
  EXPECT_TRUE(work.Take(10));
  EXPECT_FALSE(work.is_reached());
  EXPECT_TRUE(work.Take(0));
  EXPECT_FALSE(work.Take(1));
  EXPECT_TRUE(work.is_reached());
  EXPECT_EQ(work.left(), 0u);
}

TEST(WorkLimit, SmallWorkIsDoneAfterLargeWorkWasRefused) {
  SuggestionWork work{WorkLimit(10), WorkLimit(10)};
  EXPECT_FALSE(work.fixes.Take(11));
  EXPECT_TRUE(work.is_reached());
  EXPECT_FALSE(work.search.is_reached());
  EXPECT_TRUE(work.fixes.Take(10));
}

std::size_t CountOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(WorkLimit, ReportSaysWhereItWasReached) {
  SharedReport made = MakeSharedReport(3, 2);
  const std::string line = "suggestions are incomplete from this table on";
  EXPECT_EQ(CountOf(korvel::RenderText(made.report, false), line), 0u);
  made.report.tables[1].changes->reached_work_limit = true;
  const std::string text = korvel::RenderText(made.report, false);
  EXPECT_EQ(CountOf(text, line), 1u) << text;
}

}  // namespace
}  // namespace report_test
