// compat, values, same and sortlist: an allowed and a refused result of each, and how they differ from check.
#include <gmock/gmock.h>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class PairCommandsTest : public ToolTest {
 protected:
  void WriteSortLists(const std::string& source_table, int source_fields, const std::string& destination_table,
                      int destination_fields) const {
    Write("src.xml", Library(5, {SortList(source_table, source_fields)}));
    Write("dst.xml", Library(5, {SortList(destination_table, destination_fields)}));
  }

 private:
  static std::string SortList(const std::string& name, int sort_fields) {
    std::string fields;
    for (int i = 1; i <= sort_fields; ++i) {
      const std::string number = std::to_string(i);
      fields += "<entry name=\"f" + number + "\" type=\"int32\" customattr2=\"sort=" + number + "\"/>";
    }
    return Table({.name = name, .attributes = "TableType=SORTLIST;ListNum=10", .fields = fields});
  }
};

TEST_F(PairCommandsTest, CompatReportsResults) {
  ExpectOutcome(Korvelcheck({"compat", "old.xml", "same.xml"}), 0, kAllowedPairReport, "");
  ExpectOutcome(Korvelcheck({"compat", "old.xml", "wide.xml"}), 1, kWideReport, "");
  EXPECT_EQ(Korvelcheck({"compat", "old.xml", "wide.xml", "--table", "users"}).exit_code, 0);
}

// A lower library version, a changed splittable key and index are not compared.
TEST_F(PairCommandsTest, CompatChecksOnlyReadability) {
  const std::string index = "<index name=\"by_uid\"><column entry=\"uid\"/></index></meta>";
  const std::string table = Table();
  Write("new.xml", Library(4, {table.substr(0, table.size() - 7) + "<splittablekey entries=\"uid\"/>" + index}));
  EXPECT_EQ(Korvelcheck({"compat", "old.xml", "new.xml", "--table", "orders"}).exit_code, 0);
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "new.xml", "--table", "orders"}).exit_code, 1);
}

TEST_F(PairCommandsTest, ReportsRefusalWithoutText) {
  Write("new.xml", Library(5, {Table()}));
  ExpectOutcome(Korvelcheck({"compat", "old.xml", "new.xml", "--table", "users"}), 1,
                "verdict: refused\n"
                "old.xml:3:1: refused the table was removed\n"
                "  checker: (no text)\n"
                "  table users: -2 CHECK_TABLE_ERROR_SYSTEM_ERROR (removed)\n"
                "1 table refused, 0 allowed; 1 compared, 0 new, 1 removed\n"
                "Run 'korvelcheck explain CHECK_TABLE_ERROR_SYSTEM_ERROR' for the result code.\n",
                "");
}

TEST_F(PairCommandsTest, ValuesReportsResults) {
  ExpectOutcome(Korvelcheck({"values", "old.xml", "same.xml"}), 0, kAllowedPairReport, "");
  ExpectOutcome(Korvelcheck({"values", "old.xml", "wide.xml"}), 1, kWideReport, "");
}

// Nothing is compared for a table created in TLV whose source is in the record format.
TEST_F(PairCommandsTest, ValuesDependOnTheProtocolOfCreation) {
  EXPECT_EQ(Korvelcheck({"values", "old.xml", "wide.xml", "--created-as", "tlv"}).exit_code, 0);
  EXPECT_EQ(Korvelcheck({"values", "old.xml", "wide.xml", "--created-as", "qmx"}).exit_code, 1);
}

TEST_F(PairCommandsTest, SameReportsResults) {
  ExpectOutcome(Korvelcheck({"same", "old.xml", "same.xml"}), 0, kAllowedPairReport, "");
  const Outcome outcome = Korvelcheck({"same", "old.xml", "wide.xml", "--table", "orders"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("wide.xml:2:1: refused [field-set.shape] a field has a different type, count or size\n"
                                     "  checker: orders value_entry:uid type(9) != orders"));
  EXPECT_THAT(outcome.out, HasSubstr("\n  table orders: -34 ERROR_VALUE_ENTRY_NOT_EQUAL\n"));
}

TEST_F(PairCommandsTest, SortlistReportsResults) {
  WriteSortLists("ranks", 2, "ranks", 3);
  EXPECT_EQ(Korvelcheck({"sortlist", "src.xml", "dst.xml"}).exit_code, 0);
  ExpectOutcome(Korvelcheck({"sortlist", "dst.xml", "src.xml"}), 1,
                "verdict: refused\n"
                "src.xml:2:1: refused [table.sort-fields] the number of sort fields changed\n"
                "  checker: Can't change sort_field_num from 3 to 2\n"
                "  table ranks: -6 ERROR_INDEX_FIELD\n"
                "1 table refused, 0 allowed; 1 compared, 0 new, 0 removed\n"
                "Run 'korvelcheck explain table.sort-fields' for the rule.\n",
                "");
}

TEST_F(PairCommandsTest, DestinationOfSortlistMayHaveAnotherName) {
  WriteSortLists("ranks", 3, "ranks_new", 2);
  ExpectOutcome(Korvelcheck({"sortlist", "src.xml", "dst.xml", "--table", "ranks", "--dst-table", "ranks_new"}), 1,
                "verdict: refused\n"
                "dst.xml:2:1: refused [table.sort-fields] the number of sort fields changed\n"
                "  checker: Can't change sort_field_num from 3 to 2\n"
                "  table ranks: -6 ERROR_INDEX_FIELD\n"
                "1 table refused, 0 allowed; 1 compared, 0 new, 0 removed\n"
                "Run 'korvelcheck explain table.sort-fields' for the rule.\n",
                "");
  EXPECT_EQ(Korvelcheck({"sortlist", "src.xml", "dst.xml", "--table", "ranks", "--dst-table", ""}).exit_code, 2);
  ExpectInputError(Korvelcheck({"sortlist", "src.xml", "dst.xml", "--table", "ranks", "--dst-table", "rank_new"}),
                   "korvelcheck: table 'rank_new' is not in dst.xml (did you mean 'ranks_new'?)\n");
}

// These two take metas, not names: without the table they cannot be called.
TEST_F(PairCommandsTest, ValuesAndSameNeedTheTableOnBothSides) {
  Write("new.xml", Library(5, {Table()}));
  for (const char* command : {"values", "same"}) {
    ExpectInputError(Korvelcheck({command, "old.xml", "new.xml"}), "korvelcheck: table 'users' is not in new.xml\n");
    EXPECT_EQ(Korvelcheck({command, "old.xml", "new.xml", "--table", "orders"}).exit_code, 0);
    EXPECT_EQ(Korvelcheck({command, "new.xml", "old.xml"}).exit_code, 0) << "tables only in the second file are skipped";
  }
}

TEST_F(PairCommandsTest, RefusesTablesOnlyInTheSecondFile) {
  Write("new.xml", Library(5, {Table()}));
  for (const char* command : {"compat", "values", "same", "sortlist"}) {
    ExpectInputError(Korvelcheck({command, "new.xml", "old.xml", "--table", "orders", "--table", "users"}),
                     "korvelcheck: table 'users' is not in new.xml\n");
    ExpectInputError(Korvelcheck({command, "new.xml", "old.xml", "--table", "users"}),
                     "korvelcheck: nothing was compared: new.xml has none of the requested tables\n");
    ExpectInputError(Korvelcheck({command, "new.xml", "old.xml", "--table", "oders"}),
                     "korvelcheck: table 'oders' is neither in new.xml nor in old.xml (did you mean 'orders'?)\n");
  }
}

}  // namespace
}  // namespace tool_test
