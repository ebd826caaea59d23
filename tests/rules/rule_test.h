// Table-driven tests over schema libraries: a row asks one question and lists everything that may come of it.
#pragma once

#include "rules/outcome.h"
#include "support/schema.h"

namespace rules {

using support::Absent;
using support::Field;
using support::Index;
using support::Library;
using support::Of;
using support::Schema;
using support::Table;

// A question about two libraries. Fails the test if the libraries are not the same bytes afterwards.
using Compare = std::function<int(ModifyTable&, const Schema& old_schema, const Schema& new_schema, LPVESKCATEGORYINST)>;
Ask Between(Library old_library, Library new_library, Compare compare);

struct Row {
  std::string name;
  Ask ask;
  Outcome expected;
  bool quiet = true;  // false where the answer depends on there being a log category
};

void PrintTo(const Row& row, std::ostream* out);

// Runs every row as it stands, and again with table names too long for the buffer. For each family:
//   INSTANTIATE_TEST_SUITE_P(PrimaryKey, RuleTest, testing::ValuesIn(Rows()), RowName);
class RuleTest : public testing::TestWithParam<Row> {};
std::string RowName(const testing::TestParamInfo<Row>& info);

}  // namespace rules
