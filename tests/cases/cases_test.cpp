// Compares every result of every case with its file `expected`. KORVEL_UPDATE_GOLDENS=1 writes the files instead ("make
// goldens"); review the difference.
#include <gtest/gtest.h>

#include <filesystem>
#include <string_view>

#include "case_run.h"
#include "expected_text.h"
#include "support/golden.h"

namespace cases {
namespace {

class CaseTest : public testing::TestWithParam<std::string> {};

TEST_P(CaseTest, HasExpectedResults) { test_support::ExpectGolden(Folder(GetParam()) / "expected", ExpectedText(GetParam())); }

// The name of a case ends in "-allowed" if and only if the main check allows it.
TEST_P(CaseTest, NameMatchesVerdict) {
  const Case input = Load(GetParam());
  const bool allowed = RunMainCheck(input.old_lib.get(), input.new_lib.get(), input.settings).code == 0;
  EXPECT_EQ(allowed, GetParam().ends_with("-allowed"));
}

TEST_P(CaseTest, HasNoUnknownFile) {
  test_support::ExpectNoOtherGoldens(Folder(GetParam()), {"old.xml", "new.xml", "settings", "expected"});
}

std::string TestName(const testing::TestParamInfo<std::string>& info) {
  constexpr std::string_view kAllowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  std::string name = info.param;
  for (char& c : name) c = kAllowed.find(c) == std::string_view::npos ? '_' : c;
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, CaseTest, testing::ValuesIn(Names()), TestName);

TEST(Cases, FamiliesContainDirectoriesOnly) {
  for (const std::string& name : Names()) EXPECT_TRUE(std::filesystem::is_directory(Folder(name))) << name;
}

}  // namespace
}  // namespace cases
