// man: the manual page contains every command and option of the program's help, and the formatters report no fault.
#include <gmock/gmock.h>

#include <regex>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class ManTest : public ToolTest {
 protected:
  // The output of a shell command that reads the page from standard input.
  Outcome Piped(const std::string& command) const {
    return Korvelcheck(Call{.arguments = {},
                            .launcher = {"/bin/sh", "-c", "\"$0\" man | " + command},
                            .environment = {"PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8", "MANROFFOPT=-c", "MANWIDTH=80"}});
  }
};

// As written in the source of the page.
std::string Troff(const std::string& text) { return std::regex_replace(text, std::regex("-"), "\\-"); }

TEST_F(ManTest, HasEveryCommandAndOption) {
  const std::string page = Korvelcheck({"man"}).out;
  const std::regex option("--[a-z-]+");
  for (const std::string& command : CommandNames()) {
    EXPECT_THAT(page, HasSubstr("\n\\fB" + Troff(command) + "\\fR"));
    const std::string help = Korvelcheck({command, "--help"}).out;
    for (std::sregex_iterator found(help.begin(), help.end(), option), end; found != end; ++found) {
      EXPECT_THAT(page, HasSubstr("\\fB" + Troff(found->str()) + "\\fR")) << command;
    }
  }
}

TEST_F(ManTest, ListsTheCommandsOfAnOption) {
  const std::string page = Korvelcheck({"man"}).out;
  EXPECT_THAT(page, HasSubstr("\n\\fB\\-h\\fR, \\fB\\-\\-help\\fR\nPrint this help message and exit.\n.TP"));
  EXPECT_THAT(page, HasSubstr("\n\\fB\\-\\-list\\-num\\fR \\fIN\\fR\n"));
  EXPECT_THAT(page,
              HasSubstr("\n\\fB\\-\\-dst\\-table\\fR \\fINAME\\fR\nName of the table in DST, with one \\-\\-table; default: "
                        "the same name.\nCommands: sortlist.\n"));
}

TEST_F(ManTest, MandocFindsNoFault) {
  if (!std::filesystem::exists("/usr/bin/mandoc")) GTEST_SKIP() << "mandoc is not installed";
  const Outcome outcome = Piped("mandoc -Tlint");
  EXPECT_EQ(outcome.out + outcome.err, "");
}

TEST_F(ManTest, ManShowsItWithoutWarnings) {
  if (!std::filesystem::exists("/usr/bin/man")) GTEST_SKIP() << "man is not installed";
  const Outcome outcome = Piped("man --warnings -l - | col -b");
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("korvelcheck - check schema changes of the Korvel table store\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\n       --list-num N\n"));
}

}  // namespace
}  // namespace tool_test
