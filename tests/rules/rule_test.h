// Table-driven tests on schema libraries: a row makes one call and lists its complete outcome.
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

// A call for two libraries. Fails the test if the libraries were modified.
using Compare = std::function<int(ModifyTable&, const Schema& old_schema, const Schema& new_schema, LPVESKCATEGORYINST)>;
Call Between(Library old_library, Library new_library, Compare compare);

struct Row {
  std::string name;
  Call call;
  Outcome expected;
  bool quiet = true;  // false if the result depends on whether there is a log category
};

void PrintTo(const Row& row, std::ostream* out);

// Runs every row as it is, and again with table names too long for the buffer. For each family:
//   INSTANTIATE_TEST_SUITE_P(PrimaryKey, RuleTest, testing::ValuesIn(Rows()), RowName);
class RuleTest : public testing::TestWithParam<Row> {};
std::string RowName(const testing::TestParamInfo<Row>& info);

}  // namespace rules
