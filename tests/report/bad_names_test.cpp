// Tests that every bad name is found, with the checker's verdict about it.
#include "analysis/findings/run_checker.h"

#include <gmock/gmock.h>

namespace report_test {
namespace {

using korvel::BadName;
using korvel::FindBadNames;
using testing::ElementsAre;
using testing::IsEmpty;

// "position: code" for each name.
std::vector<std::string> Found(const std::vector<std::string>& names, std::size_t most = 1000) {
  std::vector<std::string> shown;
  for (const BadName& bad : FindBadNames("orders", names, most)) {
    shown.push_back(std::to_string(bad.position) + ": " + std::to_string(bad.verdict.code));
    EXPECT_EQ(bad.verdict.text, "CheckFieldNameValidate failed! table:'orders'");
    EXPECT_EQ(bad.verdict.rule, "field-name.invalid");
  }
  return shown;
}

TEST(BadNames, FindsAll) {
  EXPECT_THAT(Found({"uid", "9x", "zone", "a-b", "", std::string(32, 'n'), std::string(31, 'n')}),
              ElementsAre("1: -17", "3: -18", "4: -19", "5: -9"));
}

TEST(BadNames, IgnoresGoodNames) {
  EXPECT_THAT(Found({"uid", "_", "k", "K9"}), IsEmpty());
  EXPECT_THAT(Found({}), IsEmpty());
}

TEST(BadNames, ReportsRepeatedNameTwice) { EXPECT_THAT(Found({"9x", "9x", "x"}), ElementsAre("0: -17", "1: -17")); }

// The names are checked in tables of 1,000.
TEST(BadNames, FindsAllInLongLists) {
  std::vector<std::string> names;
  for (int i = 0; i < 2'500; ++i) names.push_back("field_" + std::to_string(i));
  for (const std::size_t bad : {0u, 999u, 1'000u, 2'499u}) names[bad] = "9x";
  EXPECT_THAT(Found(names), ElementsAre("0: -17", "999: -17", "1000: -17", "2499: -17"));
  EXPECT_THAT(Found(names, 3), ElementsAre("0: -17", "999: -17", "1000: -17"));
}

TEST(BadNames, StopsAtLimit) { EXPECT_THAT(Found({"a", "1", "2", "3"}, 2), ElementsAre("1: -17", "2: -17")); }

}  // namespace
}  // namespace report_test
