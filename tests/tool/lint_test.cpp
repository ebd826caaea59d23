// lint: files that are not schemas, tables that are not acceptable, and valid files.
#include <gmock/gmock.h>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class LintTest : public ToolTest {};

TEST_F(LintTest, ReportsSeveralFilesTogether) {
  ExpectOutcome(Korvelcheck({"lint", "old.xml", "wide.xml", "-v"}), 0,
                "verdict: allowed\n"
                "old.xml:2:1: allowed: table orders\n"
                "old.xml:3:1: allowed: table users\n"
                "wide.xml:2:1: allowed: table orders\n"
                "wide.xml:3:1: allowed: table users\n"
                "0 tables refused, 4 allowed; 4 compared, 0 new, 0 removed\n",
                "");
}

TEST_F(LintTest, RefusedTableEndsWithOne) {
  Write("bad.xml", Library(5, {Table({.fields = "<entry name=\"a-b\" id=\"2\" type=\"int8\"/>"})}));
  ExpectVerdicts(Korvelcheck({"lint", "old.xml", "bad.xml", "-v"}), 1,
                 "verdict: refused\n"
                 "old.xml:2:1: allowed: table orders\n"
                 "old.xml:3:1: allowed: table users\n"
                 "bad.xml:2:1: refused: table orders: -18 ERROR_FIELD_NAME_HAS_ILLEGAL_CHAR\n"
                 "bad.xml:2:74: refused [field-name.invalid] a field name is not a valid identifier\n"
                 "  checker: CheckFieldNameValidate failed! table:'orders'\n"
                 "1 table refused, 2 allowed; 3 compared, 0 new, 0 removed; 1 finding, 0 waived\n");
}

// A table is checked as its attributes say: an index is allowed on a generic table and refused on a list.
TEST_F(LintTest, AttributesDecideHowATableIsChecked) {
  const std::string table = Table({.attributes = "TableType=LIST;ListNum=7"});
  const std::string index = "<index name=\"by_uid\"><column entry=\"uid\"/></index></meta>";
  Write("indexed.xml", Library(5, {table.substr(0, table.size() - 7) + index}));
  Write("plain.xml", Library(5, {table}));
  Write("generic.xml", Library(5, {Table().substr(0, Table().size() - 7) + index}));
  const Outcome outcome = Korvelcheck({"lint", "indexed.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr(" refused [index.list-table] "));
  EXPECT_EQ(Korvelcheck({"lint", "plain.xml"}).exit_code, 0);
  EXPECT_EQ(Korvelcheck({"lint", "generic.xml"}).exit_code, 0);
}

TEST_F(LintTest, SettingsAreThoseOfCheck) {
  Write("large.xml", Library(5, {Table({.fields = "<entry name=\"blob\" id=\"2\" type=\"bytes\" size=\"131073\"/>"})}));
  EXPECT_EQ(Korvelcheck({"lint", "large.xml"}).exit_code, 0);
  const Outcome outcome = Korvelcheck({"lint", "large.xml", "--server-version", "3.28.9"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(
      outcome.out,
      testing::AllOf(HasSubstr(" refused [length.limit] fields are larger than the servers allow and are not whitelisted\n"),
                     HasSubstr("  checker: ERR_ENTRY_LEN;blob|\n")));
  EXPECT_EQ(Korvelcheck({"lint", "large.xml", "--server-version", "3.29.0"}).exit_code, 0);
}

TEST_F(LintTest, AcceptsTlvSchema) {
  Write("tlv.xml", Library(5, {Table()}, "TLV"));
  EXPECT_EQ(Korvelcheck({"lint", "tlv.xml"}).exit_code, 0);
}

TEST_F(LintTest, MalformedAttributesAreRefusedWithTheirText) {
  Write("bad.xml", Library(5, {Table({.attributes = "TableType=LIST"})}));
  ExpectVerdicts(Korvelcheck({"lint", "bad.xml"}), 1,
                 "verdict: refused\n"
                 "bad.xml:2:1: refused: table orders: -1 CHECK_TABLE_ERROR_INVALID_PARAMETER\n"
                 "bad.xml:2:33: refused [table.attributes] the table attributes are invalid\n"
                 "  checker: Table attributes are invalid! table:'orders', ListNum is missing; a list table needs it\n"
                 "1 table refused, 0 allowed; 1 compared, 0 new, 0 removed; 1 finding, 0 waived\n");
}

TEST_F(LintTest, ErrorsOfEveryFileAreShown) {
  Write("one.xml", "<metalib");
  Write("two.xml", "<metalib name=\"m\" version=\"1\" colour=\"red\"/>");
  const Outcome outcome = Korvelcheck({"lint", "one.xml", "old.xml", "missing.xml", "two.xml", "-v"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.out, testing::StartsWith("verdict: incomplete (3 files were not checked)\none.xml:1:"));
  EXPECT_THAT(outcome.out, HasSubstr("old.xml:2:1: allowed: table orders\n"));
  EXPECT_THAT(outcome.err, testing::StartsWith("one.xml:1:"));
  EXPECT_THAT(outcome.err, HasSubstr("\nkorvelcheck: missing.xml: No such file or directory\ntwo.xml:1:"));
}

TEST_F(LintTest, FileWithoutTableIsAnError) {
  Write("plain.xml", Library(5, {"<meta name=\"item\"><entry name=\"a\" type=\"int8\"/></meta>"}));
  const std::string message = "korvelcheck: plain.xml: no table (a meta with a primary key)\n";
  ExpectInputError(Korvelcheck({"lint", "plain.xml", "plain.xml"}), message + message);
  const Outcome outcome = Korvelcheck({"lint", "plain.xml", "old.xml"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.err, message);
  EXPECT_THAT(outcome.out, HasSubstr("plain.xml: error [schema.no-table] no table (a meta with a primary key)\n"));
}

}  // namespace
}  // namespace tool_test
