// The warning about attributes that the checker ignores: where the tables do not change, and in new tables.
#include <gmock/gmock.h>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class IgnoredAttributeTest : public ToolTest {};

TEST_F(IgnoredAttributeTest, LintWarnsAboutEachAttributeWithoutTableType) {
  Write("list.xml",
        "<metalib name=\"m\" version=\"1\">\n<meta name=\"orders\" customattr=\"ListNum=8;SortRule=DESC\">\n"
        "<entry name=\"uid\" type=\"int32\"/>\n<primarykey entries=\"uid\"/>\n</meta></metalib>\n");
  const Outcome outcome = Korvelcheck({"lint", "list.xml"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_EQ(outcome.out,
            "verdict: allowed (with warnings)\n"
            "list.xml:2:1: allowed: table orders\n"
            "list.xml:2:33: warning [advice.attribute-ignored] the checker ignores an attribute of a table\n"
            "     2 | <meta name=\"orders\" customattr=\"ListNum=8;SortRule=DESC\">\n"
            "       |                                 ^~~~~~~~~\n"
            "  suggestion: add TableType to the attributes of table orders, or remove ListNum\n"
            "  fingerprint: efbda3cdd30548a5\n"
            "list.xml:2:43: warning [advice.attribute-ignored] the checker ignores an attribute of a table\n"
            "     2 | <meta name=\"orders\" customattr=\"ListNum=8;SortRule=DESC\">\n"
            "       |                                           ^~~~~~~~~~~~~\n"
            "  suggestion: add TableType to the attributes of table orders, or remove SortRule\n"
            "  fingerprint: a727575c6ff6b159\n"
            "0 tables refused, 1 allowed; 1 compared, 0 new, 0 removed; 2 warnings\n"
            "Run 'korvelcheck explain advice.attribute-ignored' for the rule.\n");
  EXPECT_EQ(Korvelcheck({"lint", "list.xml", "--fail-on", "warning"}).exit_code, 1);
  EXPECT_THAT(Korvelcheck({"lint", "list.xml", "--format", "json"}).out,
              AllOf(HasSubstr("\"description\": \"attribute ListNum of orders: 8\""), Not(HasSubstr("8 -> 8"))));
}

TEST_F(IgnoredAttributeTest, LintWarnsAboutMisspelledSortMarks) {
  Write("sorted.xml", Library(1, {Table({.attributes = "TableType=SORTLIST;ListNum=8",
                                         .fields = "<entry name=\"at\" type=\"int32\" customattr2=\"sort=1\"/>"
                                                   "<entry name=\"day\" type=\"int32\" customattr2=\" SORT = 2\"/>"})}));
  const Outcome outcome = Korvelcheck({"lint", "sorted.xml"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr(": warning [advice.attribute-ignored] "), HasSubstr("\n  suggestion: write 'sort=2'\n")));
}

// Also where the list is refused, because no other field is marked.
TEST_F(IgnoredAttributeTest, LintWarnsBesidesARefusal) {
  Write("sorted.xml", Library(1, {Table({.attributes = "TableType=SORTLIST;ListNum=8",
                                         .fields = "<entry name=\"at\" type=\"int32\" customattr2=\"Sort=1\"/>"})}));
  EXPECT_THAT(Korvelcheck({"lint", "sorted.xml"}).out,
              AllOf(HasSubstr(" refused [table.attributes] "), HasSubstr("\n  suggestion: write 'sort=1'\n")));
}

TEST_F(IgnoredAttributeTest, NoWarningAboutAttributesThatTheCheckerReads) {
  Write("good.xml", Library(1, {Table({.attributes = "TableType=GENERIC;ListNum=8"}), Table({.name = "users"})}));
  EXPECT_THAT(Korvelcheck({"lint", "good.xml"}).out, Not(HasSubstr("warning")));
}

TEST_F(IgnoredAttributeTest, CheckWarnsAboutANewTable) {
  Write("a.xml", Library(1, {Table({.name = "users"})}));
  Write("b.xml", Library(2, {Table({.attributes = "ListNum=8"}), Table({.name = "users"})}));
  const Outcome outcome = Korvelcheck({"check", "a.xml", "b.xml"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr(": warning [advice.attribute-ignored] "),
                                 HasSubstr("\n  change: attribute ListNum of orders: none -> 8\n"), Not(HasSubstr("was:"))));
}

// An attribute that was ignored before is not a change.
TEST_F(IgnoredAttributeTest, CheckDoesNotWarnAboutUnchangedAttributes) {
  Write("a.xml", Library(1, {Table({.attributes = "ListNum=8"})}));
  Write("b.xml", Library(2, {Table({.attributes = "ListNum=8"})}));
  EXPECT_THAT(Korvelcheck({"check", "a.xml", "b.xml"}).out, Not(HasSubstr("warning")));
  EXPECT_THAT(Korvelcheck({"check", "a.xml", "a.xml"}).out, Not(HasSubstr("warning")));
}

}  // namespace
}  // namespace tool_test
