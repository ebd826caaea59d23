// Laws about the findings of every case. The findings themselves are listed in the file `expected` of each case
// (tests/cases/cases_test.cpp).
#include <gtest/gtest.h>

#include "cases/case_files.h"
#include "change_check.h"
#include "checked.h"
#include "read_source.h"

namespace report_test {
namespace {

using korvel::Changes;
using korvel::PartialSettings;
using korvel::Source;

class FindingsCaseTest : public testing::TestWithParam<std::string> {
 protected:
  FindingsCaseTest() {
    const cases::Settings given = cases::Load(GetParam()).settings;
    table_ = given.table;
    given_ = ToCheckerSettings(given);
  }

  Source Read(const std::string& file) const { return ReadSource(file, cases::ReadFile(cases::Folder(GetParam()) / file)); }

  std::string table_;
  PartialSettings given_;
};

TEST_P(FindingsCaseTest, FindingsFollowLaws) {
  const Source old_source = Read("old.xml");
  const Source new_source = Read("new.xml");
  const ChangeCheck check = MakeCheck(old_source, new_source, table_, given_);
  const Changes changes = check.Find();
  EXPECT_FALSE(changes.stopped);
  if (check.IsOnBothSides()) {
    ExpectLaws(check, changes);
  } else {
    EXPECT_EQ(changes.findings.size(), 1u);
  }
}

// A schema compared with itself is allowed, or refused as before.
TEST_P(FindingsCaseTest, SchemaAgainstItselfHasNoEdits) {
  for (const char* file : {"old.xml", "new.xml"}) {
    const Source source = Read(file);
    if (!source.HasMeta(table_)) continue;
    const ChangeCheck check = MakeCheck(source, source, table_, given_);
    const Changes changes = check.Find();
    ExpectLaws(check, changes);
    EXPECT_TRUE(changes.edits.empty());
  }
}

std::string TestName(const testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  for (char& c : name) c = c == '/' || c == '-' ? '_' : c;
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, FindingsCaseTest, testing::ValuesIn(cases::Names()), TestName);

}  // namespace
}  // namespace report_test
