// korvelcheck.toml: where it is found, what it sets, and all its faults.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class ProjectFileTest : public ToolTest {
 protected:
  Outcome Check(const std::vector<std::string>& more = {}, const std::string& directory = "") const {
    return RunProgram(Call{.arguments = Joined({"check", PathOf("old.xml"), PathOf("same.xml"), "--format", "json"}, more),
                           .directory = PathOf(directory)});
  }
  // The errors about the file in a check that uses it.
  void ExpectFaults(const std::string& text, const std::string& faults) const {
    Write("korvelcheck.toml", text);
    ExpectInputError(Check(), faults);
  }
};

constexpr char kList[] = "[defaults]\nlist-num = 77\n";

TEST_F(ProjectFileTest, UsesTheNearestFileAbove) {
  std::filesystem::create_directories(PathOf("a/b/c"));
  Write("korvelcheck.toml", kList);
  Write("a/korvelcheck.toml", "[defaults]\nlist-num = 78\n");
  EXPECT_THAT(Check().out, HasSubstr("\"list_num\": 77"));
  EXPECT_THAT(Check({}, "a/b/c").out, HasSubstr("\"list_num\": 78"));
}

TEST_F(ProjectFileTest, CanBeNamedOrDisabled) {
  Write("korvelcheck.toml", kList);
  Write("other.toml", "[defaults]\nlist-num = 5\n");
  EXPECT_THAT(Check({"--project", "other.toml"}).out, HasSubstr("\"list_num\": 5"));
  EXPECT_THAT(Check({"--no-project"}).out, HasSubstr("\"list_num\": 0"));
  ExpectInputError(Check({"--project", "no.toml"}), "korvelcheck: no.toml: No such file or directory\n");
  EXPECT_EQ(Check({"--project", "other.toml", "--no-project"}).exit_code, 2);
}

// Opening it would wait for a writer.
TEST_F(ProjectFileTest, MustBeARegularFile) {
  ASSERT_EQ(::mkfifo(PathOf("pipe.toml").c_str(), 0600), 0);
  for (const char* file : {"pipe.toml", "/dev/zero"}) {
    ExpectInputError(Check({"--project", file}),
                     std::string("korvelcheck: ") + file + ": is not a regular file; allowed: a file\n");
  }
  ASSERT_EQ(::mkfifo(PathOf("korvelcheck.toml").c_str(), 0600), 0);
  ExpectInputError(Check({}), "korvelcheck: korvelcheck.toml: is not a regular file; allowed: a file\n");
}

TEST_F(ProjectFileTest, OptionsPrecedeTableDefaultsAndSchema) {
  Write("old.xml", Library(5, {Table({.attributes = "TableType=LIST;ListNum=9"}), Table({.name = "users"})}));
  Write("same.xml", Read("old.xml"));
  EXPECT_THAT(Check({"--table", "orders"}).out, HasSubstr("\"list_num\": 9"));
  Write("korvelcheck.toml", "[defaults]\nlist-num = 10\ntype = \"list\"\n[tables.orders]\nlist-num = 11\n");
  EXPECT_THAT(Check({"--table", "orders"}).out, HasSubstr("\"list_num\": 11"));
  EXPECT_THAT(Check({"--table", "orders"}).out, HasSubstr("\"type\": \"list\""));
  EXPECT_THAT(Check({"--table", "users"}).out, HasSubstr("\"list_num\": 10"));
  EXPECT_THAT(Check({"--table", "orders", "--list-num", "12"}).out, HasSubstr("\"list_num\": 12"));
}

TEST_F(ProjectFileTest, EverySettingIsRead) {
  Write("korvelcheck.toml",
        "[tables.\"orders\"]\ntype = \"generic\"\ncreated-as = \"tlv\"\nserver-version = \"3.29.0\"\n"
        "whitelist = [\"note\", \"mail\"]\nlist-num = 3\n");
  const std::string out = Check({"--table", "orders"}).out;
  for (const char* setting : {"\"type\": \"generic\"", "\"created_as\": \"tlv\"", "\"server_version\": \"3.29.0\"",
                              "\"whitelist\": \"note;mail\"", "\"list_num\": 3"}) {
    EXPECT_THAT(out, HasSubstr(setting));
  }
  Write("korvelcheck.toml", "[defaults]\nwhitelist = \"a;b\"\n");
  EXPECT_THAT(Check().out, HasSubstr("\"whitelist\": \"a;b\""));
}

TEST_F(ProjectFileTest, EmptyFileSetsNothing) {
  Write("korvelcheck.toml", "");
  EXPECT_EQ(Check().exit_code, 0);
}

TEST_F(ProjectFileTest, ExampleIsValid) {
  const Outcome outcome = Check({"--project", KORVEL_SOURCE_DIR "/examples/korvelcheck.toml"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\"server_version\": \"3.29.0\""));
}

TEST_F(ProjectFileTest, OtherCommandsIgnoreIt) {
  Write("korvelcheck.toml", "not TOML");
  EXPECT_EQ(Korvelcheck({"same", "old.xml", "same.xml"}).exit_code, 0);
  EXPECT_EQ(Korvelcheck({"lint", "old.xml"}).exit_code, 2);
}

TEST_F(ProjectFileTest, ReportsUnknownKeys) {
  ExpectFaults("[schema]\n",
               "korvelcheck.toml:1:2: error: unknown key 'schema' (did you mean 'schemas'?); allowed: schemas, "
               "defaults, tables, report, waivers\n");
  ExpectFaults("[schemas]\npaths = []\n  path = []\n",
               "korvelcheck.toml:3:3: error: unknown key 'path' in [schemas] (did you mean 'paths'?); allowed: paths, exclude, "
               "against\n");
  ExpectFaults("[tables.'a b']\ncreated_as = 'qmx'\n",
               "korvelcheck.toml:2:1: error: unknown key 'created_as' in [tables.'a b'] (did you mean 'created-as'?); allowed: "
               "type, created-as, server-version, whitelist, list-num\n");
}

TEST_F(ProjectFileTest, ReportsWrongTypesAndValues) {
  struct Wrong {
    const char* text;
    const char* fault;
  };
  const Wrong kCases[] = {
      {"schemas = 1", "1:11: error: [schemas] is a number; allowed: a table"},
      {"[schemas]\npaths = 'a'",
       "2:9: error: paths is a string; allowed: a list of paths below the project file, with '*', '?' and '**'"},
      {"[schemas]\npaths = ['a', 2]",
       "2:15: error: paths[1] is a number; allowed: paths below the project file, with '*', '?' and '**'"},
      {"[schemas]\npaths = ['../a']",
       "2:10: error: paths has '../a'; allowed: paths below the project file, with '*', '?' and '**'"},
      {"[schemas]\nexclude = ['/a']",
       "2:12: error: exclude has '/a'; allowed: paths below the project file, with '*', '?' and '**'"},
      {"[schemas]\npaths = ['']", "2:10: error: paths has ''; allowed: paths below the project file, with '*', '?' and '**'"},
      {"[schemas]\nagainst = true",
       "2:11: error: against is a boolean; allowed: git:REV, git:REV..., git-tag:PATTERN or a directory"},
      {"[schemas]\nagainst = ''", "2:11: error: against is empty; allowed: git:REV, git:REV..., git-tag:PATTERN or a directory"},
      {"[defaults]\ntype = 'heap'", "2:8: error: type is 'heap'; allowed: generic|list"},
      {"[defaults]\ntype = 1.5", "2:8: error: type is a number; allowed: generic|list"},
      {"[defaults]\ncreated-as = 'QMX'", "2:14: error: created-as is 'QMX'; allowed: qmx|tlv"},
      {"[defaults]\nserver-version = 3",
       "2:18: error: server-version is a number; allowed: a string of numbers joined by dots, like 3.29.0"},
      {"[defaults]\nserver-version = 'v3'", "2:18: error: server-version is 'v3'; allowed: numbers joined by dots, like 3.29.0"},
      {"[defaults]\nwhitelist = 3", "2:13: error: whitelist is a number; allowed: a list of names of fields"},
      {"[defaults]\nwhitelist = ['a;b']", "2:14: error: whitelist has 'a;b'; allowed: names of fields without ';'"},
      {"[defaults]\nlist-num = '3'", "2:12: error: list-num is a string; allowed: 0 to 2147483647"},
      {"[defaults]\nlist-num = -1", "2:12: error: list-num is -1; allowed: 0 to 2147483647"},
      {"[defaults]\nlist-num = 2147483648", "2:12: error: list-num is 2147483648; allowed: 0 to 2147483647"},
      {"tables = []", "1:10: error: tables is a list; allowed: tables like [tables.\"NAME\"]"},
      {"[tables]\na = 1", "2:5: error: [tables.'a'] is a number; allowed: a table"},
      {"waivers = 2026-01-01", "1:11: error: waivers is a date; allowed: tables like [[waivers]]"},
      {"[[waivers]]\nreason = 5", "2:10: error: reason is a number; allowed: a string"},
      {"[[waivers]]\nuntil = 5", "2:9: error: until is a number; allowed: a day like 2027-01-31"},
  };
  for (const auto& [text, fault] : kCases) ExpectFaults(text, std::string("korvelcheck.toml:") + fault + "\n");
}

TEST_F(ProjectFileTest, ReportsAllFaultsInTheOrderOfTheFile) {
  Write("korvelcheck.toml", "[schemas]\npath = []\n[tables.a]\nlist-num = -5\n[defaults]\ntype = 3\n");
  EXPECT_THAT(Check().err,
              testing::MatchesRegex("korvelcheck.toml:2:[^\n]+\nkorvelcheck.toml:4:[^\n]+\nkorvelcheck.toml:6:[^\n]+\n"));
}

// Regression: the link was ignored, and the file in a parent directory was used, or none.
TEST_F(ProjectFileTest, DanglingLinkIsAnError) {
  std::filesystem::create_symlink("nowhere", PathOf("korvelcheck.toml"));
  ExpectInputError(Check(),
                   "korvelcheck: korvelcheck.toml: is a symbolic link; allowed: a file, or any link with "
                   "--follow-symlinks\n");
  ExpectInputError(Check({"--follow-symlinks"}), "korvelcheck: korvelcheck.toml: No such file or directory\n");
  Write("nowhere", kList);
  EXPECT_THAT(Check({"--follow-symlinks"}).out, HasSubstr("\"list_num\": 77"));
  EXPECT_THAT(Check({"--project", "korvelcheck.toml"}).out, HasSubstr("\"list_num\": 77"));
}

TEST_F(ProjectFileTest, LocatesSyntaxErrors) {
  const Outcome outcome = [&] {
    Write("korvelcheck.toml", "[schemas]\npaths = [\n");
    return Check();
  }();
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, testing::MatchesRegex("korvelcheck.toml:[23]:[0-9]+: error: [^\n]+\n"));
  for (const std::string& text :
       {std::string("\xff\xfe"), std::string("a\0b", 3), std::string("a = 1\na = 2\n"), std::string(5000, '[')}) {
    Write("korvelcheck.toml", text);
    const Outcome odd = Check();
    EXPECT_EQ(odd.exit_code, 2);
    EXPECT_THAT(odd.err, testing::MatchesRegex("korvelcheck.toml:[0-9]+:[0-9]+: error: [^\n]+\n"));
  }
}

// Regression: the parser assumes that some characters never occur where it looks for blanks.
TEST_F(ProjectFileTest, ReportsCharactersAllowedOnlyInStrings) {
  struct Wrong {
    const char* text;
    const char* fault;
  };
  const Wrong kCases[] = {
      {"\u00e9 = 1", "1:1: error: Error while parsing root table: expected keys, tables, whitespace or comments, saw '\u00e9'"},
      {"[schemas]\npaths = \u0436", "2:9: error: Error while parsing value: could not determine value type"},
      {"[schemas]\u0499", "1:10: error: Error while parsing table header: expected a comment or whitespace, saw '\u0499'"},
      {"[schemas]\npaths = []\ufb26",
       "2:11: error: Error while parsing key-value pair: expected a comment or whitespace, saw '\ufb26'"},
      {"[schemas]\npaths = [\ufefe]", "2:10: error: Error while parsing value: could not determine value type"},
      {"[schemas]\u00a0", "1:10: error: Error while parsing table header: expected space or tab, saw '\\u00A0'"},
  };
  for (const auto& [text, fault] : kCases) ExpectFaults(text, std::string("korvelcheck.toml:") + fault + "\n");
  Write("korvelcheck.toml", "[schemas]  # \u00e9\npaths = ['\u00e9/\ufb26.xml']\n");
  EXPECT_EQ(Check().exit_code, 0);
}

// Some editors write it at the start of a file.
TEST_F(ProjectFileTest, SkipsByteOrderMark) {
  const std::string mark = "\xef\xbb\xbf";
  for (const char* text : {"", "\n", "[schemas]\npaths = []\n"}) {
    Write("korvelcheck.toml", mark + text);
    EXPECT_EQ(Check().exit_code, 0) << text;
  }
  ExpectFaults(mark + "schemas = 1", "korvelcheck.toml:1:11: error: [schemas] is a number; allowed: a table\n");
  ExpectFaults(mark + mark,
               "korvelcheck.toml:1:1: error: Error while parsing root table: expected space or tab, saw '\\uFEFF'\n");
  ExpectFaults(mark + "\xff", "korvelcheck.toml:1:1: error: Encountered invalid utf-8 sequence\n");
  ExpectFaults(mark.substr(0, 2), "korvelcheck.toml:1:1: error: Encountered EOF during incomplete utf-8 code point sequence\n");
}

TEST_F(ProjectFileTest, DirectoryWithTheNameIsAnError) {
  std::filesystem::create_directory(PathOf("korvelcheck.toml"));
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, HasSubstr("korvelcheck.toml: is a directory"));
}

}  // namespace
}  // namespace tool_test
