// The text report: one line stays one line, colors on request. Its contents are tested with each command.
#include <gmock/gmock.h>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class TextReportTest : public ToolTest {
 protected:
  Outcome OnTerminal(const std::vector<std::string>& environment) const {
    return Korvelcheck(
        Call{.arguments = {"check", "old.xml", "wide.xml", "-v"}, .output = Stream::kTerminal, .environment = environment});
  }
};

constexpr char kEscape[] = "\x1b";

// The name of a table may contain any character, by a character reference.
TEST_F(TextReportTest, NamesDoNotBreakLines) {
  const std::string name = "a&#10;b&#9;c&#13;d&#x85;e&#x7f;f&#x2028;g\xc3\xa9";
  Write("odd.xml", Library(5, {Table({.name = name})}));
  Write("refused.xml", Library(5, {Table({.name = name, .fields = "<entry name=\"&#10;\" type=\"int8\"/>"})}));
  const std::string shown = "a\\nb\\tc\\rd\\u0085e\\x7ff\\u2028g\xc3\xa9";
  ExpectOutcome(
      Korvelcheck({"lint", "odd.xml", "-v"}), 0,
      "verdict: allowed\nodd.xml:2:1: allowed: table " + shown + "\n0 tables refused, 1 allowed; 1 compared, 0 new, 0 removed\n",
      "");
  ExpectVerdicts(Korvelcheck({"lint", "refused.xml"}), 1,
                 "verdict: refused\nrefused.xml:2:1: refused: table " + shown +
                     ": -18 ERROR_FIELD_NAME_HAS_ILLEGAL_CHAR\nrefused.xml:2:110: refused [field-name.invalid] "
                     "a field name is not a valid identifier\n  checker: CheckFieldNameValidate failed! table:'" +
                     shown + "'\n1 table refused, 0 allowed; 1 compared, 0 new, 0 removed; 1 finding, 0 waived\n");
}

TEST_F(TextReportTest, PathsDoNotBreakLines) {
  Write("a\nb.xml", Read("old.xml"));
  EXPECT_THAT(Korvelcheck({"lint", "a\nb.xml", "-v"}).out, HasSubstr("\na\\nb.xml:2:1: allowed: table orders\n"));
}

// Regression: a field that moved to the front is not preceded by another one, so it was taken for a removed field and reported at
// its old location.
TEST_F(TextReportTest, LocatesMovedItemsInTheNewFile) {
  const std::string note = "<entry name=\"note\" type=\"int8\"/>";
  Write("old.xml", Library(5, {Table({.fields = "<entry name=\"zone\" type=\"int8\"/>" + note})}));
  std::string moved = Read("old.xml");
  moved.erase(moved.find(note), note.size());
  moved.insert(moved.find("<entry"), note);
  Write("new.xml", moved);
  EXPECT_THAT(Korvelcheck({"check", "old.xml", "new.xml"}).out,
              AllOf(HasSubstr("\nnew.xml:2:21: refused [field.order]"), HasSubstr("\n  was: old.xml:2:")));
}

// Percent signs in names are not changed by the checker's format strings.
TEST_F(TextReportTest, PercentSignsAreKept) {
  Write("old.xml", Library(5, {Table({.name = "%s%n%d"})}));
  Write("new.xml", Library(5, {Table({.name = "%s%n%d", .key_type = "uint8"})}));
  EXPECT_THAT(Korvelcheck({"check", "old.xml", "new.xml"}).out,
              AllOf(HasSubstr("entry:'uid' metaname:'%s%n%d'\n"), HasSubstr(": table %s%n%d: -3 ")));
}

TEST_F(TextReportTest, ColorsStatusWordsOnATerminal) {
  const Outcome outcome = OnTerminal({"TERM=xterm"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("verdict: \x1b[31mrefused\x1b[0m\r\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\x1b[1mwide.xml:2:52\x1b[0m: \x1b[31mrefused\x1b[0m [primary-key.size]"));
  EXPECT_THAT(outcome.out, HasSubstr("\x1b[1mwide.xml:3:1\x1b[0m: \x1b[32munchanged\x1b[0m: table users"));
}

TEST_F(TextReportTest, DisablesColorOnRequest) {
  EXPECT_THAT(OnTerminal({"TERM=xterm", "NO_COLOR=1"}).out, Not(HasSubstr(kEscape)));
  EXPECT_THAT(OnTerminal({"TERM=dumb"}).out, Not(HasSubstr(kEscape)));
  EXPECT_THAT(OnTerminal({}).out, Not(HasSubstr(kEscape)));
  EXPECT_THAT(OnTerminal({"TERM=xterm", "NO_COLOR="}).out, HasSubstr(kEscape)) << "an empty NO_COLOR has no effect";
}

TEST_F(TextReportTest, DoesNotColorFilesAndPipes) {
  EXPECT_EQ(Verdicts(Korvelcheck(Call{.arguments = {"check", "old.xml", "wide.xml"}, .environment = {"TERM=xterm"}}).out),
            kWideFinding);
  Korvelcheck(Call{.arguments = {"check", "old.xml", "wide.xml", "-o", "report"},

                   .output = Stream::kTerminal,
                   .environment = {"TERM=xterm"}});
  EXPECT_EQ(Verdicts(Read("report")), kWideFinding);
}

}  // namespace
}  // namespace tool_test
