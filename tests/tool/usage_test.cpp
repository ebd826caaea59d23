// Commands and options as typed: help, version, and every kind of wrong usage.
#include <gmock/gmock.h>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class UsageTest : public ToolTest {};

TEST_F(UsageTest, HelpListsEveryCommand) {
  for (const char* option : {"--help", "-h"}) {
    const Outcome outcome = Korvelcheck({option});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, HasSubstr("\n  check       check a schema change\n"));
  }
  EXPECT_THAT(CommandNames(), testing::IsSupersetOf({"check", "compat", "values", "same", "sortlist", "lint"}));
}

TEST_F(UsageTest, EveryCommandHasHelp) {
  for (const std::string& command : CommandNames()) {
    const Outcome outcome = Korvelcheck({command, "--help"});
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, HasSubstr("Usage: korvelcheck " + command + " [OPTIONS]"));
    const bool writes_file = command != "lsp";
    EXPECT_EQ(outcome.out.find("--output FILE") != std::string::npos, writes_file);
  }
}

TEST_F(UsageTest, HelpIsAlsoACommand) {
  ExpectOutcome(Korvelcheck({"help"}), 0, Korvelcheck({"--help"}).out, "");
  for (const std::string& command : CommandNames()) {
    ExpectOutcome(Korvelcheck({"help", command}), 0, Korvelcheck({command, "--help"}).out, "");
  }
  ExpectInputError(Korvelcheck({"help", "chek"}),
                   "korvelcheck: unknown command 'chek' (did you mean 'check'?)\nTry 'korvelcheck --help'.\n");
}

TEST_F(UsageTest, HelpShowsOnlyTheOptionsThatACommandTakes) {
  EXPECT_THAT(Korvelcheck({"check", "--help"}).out, HasSubstr("--list-num N"));
  EXPECT_THAT(Korvelcheck({"compat", "--help"}).out, Not(HasSubstr("--list-num")));
  EXPECT_THAT(Korvelcheck({"values", "--help"}).out, HasSubstr("--created-as qmx|tlv"));
  EXPECT_THAT(Korvelcheck({"same", "--help"}).out, Not(HasSubstr("--created-as")));
  EXPECT_THAT(Korvelcheck({"sortlist", "--help"}).out, HasSubstr("--dst-table NAME"));
  EXPECT_THAT(Korvelcheck({"lint", "--help"}).out, Not(HasSubstr("--table")));
  EXPECT_THAT(Korvelcheck({"lint", "--help"}).out, HasSubstr("--format text|json"));
  EXPECT_THAT(Korvelcheck({"compile", "--help"}).out, Not(HasSubstr("--format")));
  EXPECT_THAT(Korvelcheck({"dump", "--help"}).out, Not(HasSubstr("--log")));
}

// As they are typed, so that it is visible whether a value is taken for an option.
TEST_F(UsageTest, HelpShowsValuesOfOptions) {
  const std::string check = Korvelcheck({"check", "--help"}).out;
  EXPECT_THAT(check, HasSubstr("\n  --project FILE              project file; "));
  EXPECT_THAT(check, HasSubstr("\n  --no-project                use no project file\n"));
  EXPECT_THAT(check, HasSubstr("\n  --log-format text|json      log format, with --log; "));
  EXPECT_THAT(check, HasSubstr("\n  FILES ...                   OLD and NEW, "));
  EXPECT_THAT(Korvelcheck({"waive", "--help"}).out, HasSubstr("\n  --until DAY REQUIRED        last day of the waiver"));
}

TEST_F(UsageTest, VersionIsOneLine) { ExpectOutcome(Korvelcheck({"--version"}), 0, "korvelcheck " KORVEL_VERSION "\n", ""); }

TEST_F(UsageTest, HelpThatCannotBeWrittenIsAnInternalError) {
  const Outcome outcome = Korvelcheck(Call{.arguments = {"--help"}, .output = Stream::kFull});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_EQ(outcome.err, "korvelcheck: cannot write standard output: No space left on device\n");
}

TEST_F(UsageTest, WrongCommandsAreRefused) {
  const std::string hint = "\nTry 'korvelcheck --help'.\n";
  ExpectInputError(Korvelcheck(std::vector<std::string>{}), "korvelcheck: a command is missing" + hint);
  ExpectInputError(Korvelcheck({"chek"}), "korvelcheck: unknown command 'chek' (did you mean 'check'?)" + hint);
  ExpectInputError(Korvelcheck({"frobnicate", "a"}), "korvelcheck: unknown command 'frobnicate'" + hint);
  ExpectInputError(Korvelcheck({""}), "korvelcheck: unknown command ''" + hint);
}

struct WrongUsage {
  std::vector<std::string> arguments;
  std::string text;  // after the command's name
};

TEST_F(UsageTest, WrongOptionsAreRefusedBeforeAnyFileIsRead) {
  const WrongUsage kCases[] = {
      {{"check"}, "OLD and NEW are required, or --against"},
      {{"check", "no.xml"}, "NEW is required, or --against"},
      {{"check", "a", "b", "c"}, "unexpected argument 'c'"},
      {{"suggest"}, "OLD and NEW are required, or --against"},
      {{"suggest", "a", "b", "c"}, "unexpected argument 'c'"},
      {{"suggest", "a", "b", "--dry-run"}, "--dry-run requires --write"},
      {{"suggest", "a", "b", "--write", "--file"}, "--file excludes --write"},
      {{"check", "a", "b", "c", "--project", "none.toml"}, "unexpected argument 'c'"},
      {{"check", "-", "-", "--project", "none.toml"}, "'-' (standard input) is given twice; allowed: once"},
      {{"check", "--tabel", "x", "a", "b"}, "unknown option '--tabel' (did you mean '--table'?)"},
      {{"check", "--tabel=x", "a"}, "unknown option '--tabel' (did you mean '--table'?)"},
      {{"check", "a", "b", "-x"}, "unknown option '-x'"},
      {{"same", "a", "b", "--type", "list"}, "unknown option '--type'"},
      {{"check", "-", "-"}, "'-' (standard input) is given twice; allowed: once"},
      {{"lint", "-", "a", "-"}, "'-' (standard input) is given twice; allowed: once"},
      {{"check", "a", "b", "-o", ""}, "--output: '' is not allowed; allowed: a file, or '-' for standard output"},
      {{"check", "a", "b", "--type", "heap"}, "--type: 'heap' is not allowed; allowed: generic|list"},
      {{"check", "a", "b", "--created-as", "QMX"}, "--created-as: 'QMX' is not allowed; allowed: qmx|tlv"},
      {{"check", "a", "b", "--format", "xml"},
       "--format: 'xml' is not allowed; allowed: text|json|sarif|junit|github|gitlab|markdown|html|github-review|gitlab-review"},
      {{"check", "a", "b", "--list-num", "-1"}, "--list-num: '-1' is not allowed; allowed: 0 to 2147483647"},
      {{"check", "a", "b", "--list-num", "2147483648"}, "--list-num: '2147483648' is not allowed; allowed: 0 to 2147483647"},
      {{"check", "a", "b", "--list-num", "7x"}, "--list-num: '7x' is not allowed; allowed: 0 to 2147483647"},
      {{"check", "a", "b", "--max-findings", "0"}, "--max-findings: '0' is not allowed; allowed: 1 to 2147483647"},
      {{"lint", "a", "--max-findings", "all"}, "--max-findings: 'all' is not allowed; allowed: 1 to 2147483647"},
      {{"compat", "a", "b", "--max-findings", "1"}, "unknown option '--max-findings'"},
      {{"check", "a", "b", "--log-level", "warn"}, "--log-level requires --log"},
      {{"check", "a", "b", "--log-format", "json"}, "--log-format requires --log"},
      {{"check", "a", "b", "--log", "-", "--log-level", "all"}, "--log-level: 'all' is not allowed; allowed: error|warn|info"},
      {{"sortlist", "a", "b", "--dst-table", "x"}, "--dst-table requires --table"},
      {{"sortlist", "a", "b", "--dst-table", "x", "--table", "y", "--table", "z"}, "--dst-table requires exactly one --table"},
      {{"compile", "a"}, "--output is required"},
      {{"compile", "a", "b", "-o", "-"}, "several images are written to a directory; allowed: -o DIR"},
      {{"compile", "a", "-o", "c", "--format", "json"}, "unknown option '--format'"},
      {{"dump"}, "IMAGE is required"},
      {{"dump", "a", "b"}, "unexpected argument 'b'"},
  };
  for (const auto& [arguments, text] : kCases) {
    const std::string& command = arguments.front();
    ExpectInputError(Korvelcheck(arguments),
                     "korvelcheck: " + command + ": " + text + "\nTry 'korvelcheck " + command + " --help'.\n");
  }
}

TEST_F(UsageTest, ServerVersionsAreNumbersJoinedByDots) {
  for (const char* wrong : {"", ".", "3.", ".3", "3..2", "v3", "3.29.0 ", "3,29", "-3"}) {
    const Outcome outcome = Korvelcheck({"check", "old.xml", "same.xml", "--server-version", wrong});
    EXPECT_EQ(outcome.exit_code, 2) << wrong;
    EXPECT_THAT(outcome.err, StartsWith("korvelcheck: check: --server-version: '" + std::string(wrong) + "' is not allowed"));
  }
  for (const char* right : {"3", "3.29.0", "10.0.0.12345678901234567890"}) {
    EXPECT_EQ(Korvelcheck({"check", "old.xml", "same.xml", "--server-version", right}).exit_code, 0) << right;
  }
}

TEST_F(UsageTest, RefusesOptionGivenTwice) {
  ExpectInputError(Korvelcheck({"check", "old.xml", "same.xml", "--type", "list", "--type", "generic"}),
                   "korvelcheck: check: --type is given more than once; allowed: once\nTry 'korvelcheck check --help'.\n");
}

TEST_F(UsageTest, OptionsMayBeAnywhere) {
  const std::string out = Korvelcheck({"check", "old.xml", "same.xml", "--format", "json", "--table", "users"}).out;
  EXPECT_THAT(out, HasSubstr("\"users\""));
  EXPECT_EQ(Korvelcheck({"check", "--table", "users", "old.xml", "--format=json", "same.xml"}).out, out);
  EXPECT_EQ(Korvelcheck({"check", "--format", "json", "--table=users", "--", "old.xml", "same.xml"}).out, out);
}

// A terminal must not interpret control characters in a file name.
TEST_F(UsageTest, EscapesOddArguments) {
  ExpectInputError(Korvelcheck({"lint", ""}), "korvelcheck: '': No such file or directory\n");
  ExpectInputError(Korvelcheck({"lint", "a\nb\x1b[31m"}), "korvelcheck: a\\nb\\x1b[31m: No such file or directory\n");
  ExpectInputError(Korvelcheck({"lint", std::string("a\xe2\x80") + "\xaelmx"}),
                   "korvelcheck: a\\u202elmx: No such file or directory\n");
}

}  // namespace
}  // namespace tool_test
