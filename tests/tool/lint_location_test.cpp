// lint marks what a refusal is about, and says what is allowed instead. Its tables do not change, so neither do its texts.
#include <gmock/gmock.h>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

struct LintCase {
  const char* what;
  std::string attributes;
  std::string elements;
  std::vector<std::string> options;
  std::string location;  // "5:10 TEXT": line, column and the marked text, on one line of the file
  std::string rule;
  std::string suggestion;
};

// A file with the table `orders`: its attributes on line 3, the key field on line 4, `elements` from line 5 on.
std::string FileFor(const LintCase& test) {
  return "<metalib name=\"shop\" version=\"1\" protocol=\"QMX\">\n<meta name=\"orders\"\n customattr=\"" + test.attributes +
         "\">\n<entry name=\"uid\" type=\"uint32\"/>\n" + test.elements + "\n<primarykey entries=\"uid\"/>\n</meta></metalib>\n";
}

const std::string kMarks = "mark one to four integer fields with customattr2 sort=1, sort=2 and so on";

const LintCase kLintCases[] = {
    {"spaces",
     "TableType=LIST; ListNum = 10",
     "",
     {},
     "3:29  ListNum = 10",
     "table.attributes",
     "write 'ListNum=10', without spaces"},
    {"missing ListNum",
     "SortRule=DESC;TableType=LIST",
     "",
     {},
     "3:28 TableType=LIST",
     "table.attributes",
     "add the number of slots: ListNum=NUMBER"},
    {"sort field",
     "TableType=SORTLIST;ListNum=1",
     "<entry name=\"at\" type=\"double\" customattr2=\"sort=1\"/>",
     {},
     "5:45 sort=1",
     "table.attributes",
     kMarks},
    {"no sort field", "TableType=SORTLIST;ListNum=1", "", {}, "3:14 TableType=SORTLIST", "table.attributes", kMarks},
    {"index of a list",
     "TableType=LIST;ListNum=1",
     "<index name=\"i\"><column entry=\"uid\"/></index>",
     {},
     "5:1 <index name=\"i\">",
     "index.list-table",
     "Remove indexes from list tables. To find records by another field, use a generic table with an index."},
    {"field name",
     "TableType=GENERIC",
     "<entry name=\"2nd\" type=\"int8\"/>",
     {},
     "5:14 2nd",
     "field-name.invalid",
     "Use ASCII letters, digits and underscores, no digit at the beginning, and at most 31 bytes."},
    {"large field",
     "TableType=GENERIC",
     "<entry name=\"note\" type=\"int8\"/>\n<entry name=\"blob\" type=\"bytes\" size=\"131073\"/>",
     {"--server-version", "3.28.0"},
     "6:1 <entry name=\"blob\" type=\"bytes\" size=\"131073\"/>",
     "length.limit",
     "Use smaller fields, or split the value over several fields. For newer servers, pass their version with --server-version. "
     "To allow a known larger field, pass it with --whitelist."},
    {"protocol of the settings",
     "TableType=GENERIC",
     "",
     {"--created-as", "tlv"},
     "1:44 QMX",
     "library.protocols",
     "Use TLV libraries for a table that was created in TLV. If the table was created in the record format, pass --created-as "
     "qmx."},
    {"protocol of the attributes",
     "TableType=GENERIC;DataProtocol=TLV",
     "",
     {},
     "3:32 DataProtocol=TLV",
     "library.protocols",
     "Use TLV libraries for a table that was created in TLV. If the table was created in the record format, pass --created-as "
     "qmx."},
};

class LintLocationTest : public ToolTest {};

// "3:14 TEXT" of the first finding of a text report: its location, and the text above the caret.
std::string MarkedIn(const std::string& report, const std::string& rule) {
  const std::size_t finding = report.find(" refused [" + rule + "] ");
  if (finding == std::string::npos) return "no finding in:\n" + report;
  const std::size_t begin = report.rfind('\n', finding) + 1;
  const std::string location = report.substr(begin, finding - begin - 1);
  const std::size_t line = report.find('\n', finding) + 1;
  const std::size_t caret_line = report.find('\n', line) + 1;
  const std::size_t caret = report.find('^', caret_line) - caret_line;
  const std::size_t length = report.find('\n', caret_line) - caret_line - caret;
  return location.substr(location.find(':') + 1) + " " + report.substr(line + caret, length);
}

TEST_F(LintLocationTest, IsThatOfTheCause) {
  for (const LintCase& test : kLintCases) {
    SCOPED_TRACE(test.what);
    Write("bad.xml", FileFor(test));
    std::vector<std::string> arguments = {"lint", "bad.xml"};
    arguments.insert(arguments.end(), test.options.begin(), test.options.end());
    const Outcome outcome = Korvelcheck(arguments);
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_EQ(MarkedIn(outcome.out, test.rule), test.location);
    EXPECT_THAT(outcome.out, HasSubstr("\n  suggestion: " + test.suggestion + "\n"));
  }
}

TEST_F(LintLocationTest, TextsAreNotAboutChanges) {
  for (const LintCase& test : kLintCases) {
    Write("bad.xml", FileFor(test));
    for (const char* const format : {"text", "markdown", "github", "gitlab", "junit"}) {
      SCOPED_TRACE(std::string(test.what) + " as " + format);
      std::vector<std::string> arguments = {"lint", "bad.xml", "--format", format};
      arguments.insert(arguments.end(), test.options.begin(), test.options.end());
      EXPECT_THAT(Korvelcheck(arguments).out,
                  AllOf(HasSubstr("suggestion: "), Not(HasSubstr("was:")), Not(HasSubstr("was at")), Not(HasSubstr("changed")),
                        Not(HasSubstr("old schema")), Not(HasSubstr("keep ")), Not(HasSubstr("pre-existing")),
                        Not(HasSubstr("no allowed alternative"))));
    }
  }
}

// The fault of a schema that is compared is marked on both sides.
TEST_F(LintLocationTest, PreexistingFaultOfCheckIsMarked) {
  Write("old.xml", FileFor(kLintCases[0]));
  Write("new.xml", FileFor(kLintCases[0]) + "\n");
  EXPECT_EQ(MarkedIn(Korvelcheck({"check", "old.xml", "new.xml"}).out, "table.attributes"), "3:29  ListNum = 10");
}

// The warning about a new table is about the same place.
TEST_F(LintLocationTest, IsThatOfTheWarningAboutANewTable) {
  Write("old.xml", Library(1, {Table({.name = "users"})}));
  std::string both = FileFor(kLintCases[0]);
  both.replace(both.find("</metalib>"), std::string::npos, Table({.name = "users"}) + "</metalib>\n");
  Write("new.xml", both);
  const Outcome outcome = Korvelcheck({"check", "old.xml", "new.xml"});
  EXPECT_THAT(outcome.out,
              AllOf(HasSubstr("new.xml:3:29: warning [advice.new-table] "),
                    HasSubstr("\n  suggestion: change the table until 'korvelcheck lint' accepts it: write 'ListNum=10', "
                              "without spaces\n")));
}

}  // namespace
}  // namespace tool_test
