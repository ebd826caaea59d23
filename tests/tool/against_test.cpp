// Compares a project's schema files with those of a commit or a directory.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using AgainstTest = ProjectTest;

TEST_F(AgainstTest, EveryFileOfTheProjectIsCompared) {
  Write("schemas/users.xml", Schema("users", "uint32"));
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(Tables(outcome), ElementsAre("schemas/deep/items.xml: items allowed", "schemas/orders.xml: orders allowed",
                                           "schemas/users.xml: users refused"));
}

TEST_F(AgainstTest, NothingChangedIsAllowed) {
  const Outcome outcome = Against();
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("3 compared"));
}

// The author of a branch did not cause it.
TEST_F(AgainstTest, RefusalOfAnUnchangedFileIsPreexisting) {
  Write("schemas/orders.xml", Library(5, {Table({.name = "orders", .fields = "<entry name=\"a-b\" type=\"uint8\"/>"})}));
  Commit("refused as it is");
  const Outcome outcome = Against();
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\n  pre-existing: the old schema already breaks this rule\n"));
  EXPECT_THAT(Run({"lint", "schemas/orders.xml"}).out, Not(HasSubstr("pre-existing")));
}

TEST_F(AgainstTest, UsesTheBaselineOfTheProject) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\nagainst = \"git:HEAD\"\n");
  EXPECT_EQ(Run({"check"}).exit_code, 0);
  EXPECT_EQ(Run({"check"}, "schemas/deep").exit_code, 0);
  EXPECT_THAT(Run({"check", "--against", "git:no"}).err, HasSubstr("unknown revision 'no'"));
}

TEST_F(AgainstTest, PathsAreRelativeToTheWorkingDirectory) {
  Write("schemas/users.xml", Schema("users", "uint32"));
  EXPECT_THAT(Tables(Against({"--format", "json"}, "schemas/deep")),
              ElementsAre("items.xml: items allowed", "../orders.xml: orders allowed", "../users.xml: users refused"));
  EXPECT_THAT(Tables(Against({"--format", "json", "../users.xml"}, "schemas/deep")), ElementsAre("../users.xml: users refused"));
}

TEST_F(AgainstTest, ComparesOnlyGivenFilesAndDirectories) {
  EXPECT_THAT(Tables(Against({"--format", "json", "schemas/orders.xml"})), ElementsAre("schemas/orders.xml: orders allowed"));
  EXPECT_THAT(Tables(Against({"--format", "json", "schemas/deep/"})), ElementsAre("schemas/deep/items.xml: items allowed"));
  EXPECT_THAT(Tables(Against({"--format", "json", PathOf("schemas/deep").string()})),
              ElementsAre("schemas/deep/items.xml: items allowed"));
  EXPECT_THAT(Tables(Against({"--format", "json", "--no-project", "schemas"})).size(), 3);
  ExpectInputError(Against({"--no-project"}),
                   "korvelcheck: no schema files are selected; allowed: files and directories as arguments, or "
                   "'paths' in [schemas] of korvelcheck.toml\n");
}

TEST_F(AgainstTest, ComparesFileGivenTwiceOnce) {
  const Outcome outcome = Against({"--format", "json", "schemas/orders.xml", "./schemas/../schemas/orders.xml"});
  EXPECT_THAT(Tables(outcome), ElementsAre("schemas/orders.xml: orders allowed"));
  EXPECT_EQ(outcome.err, "korvelcheck: ./schemas/../schemas/orders.xml is given twice; it is compared only once\n");
}

TEST_F(AgainstTest, ReportsAddedFileAsNew) {
  Write("schemas/carts.xml", Schema("carts"));
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(Tables(outcome), testing::Contains("schemas/carts.xml: carts new"));
}

TEST_F(AgainstTest, RefusesTablesOfADeletedFile) {
  std::filesystem::remove(PathOf("schemas/orders.xml"));
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(Tables(outcome), testing::Contains("git:HEAD:schemas/orders.xml: orders refused removed"));
}

TEST_F(AgainstTest, ComparesMovedFileWithItsOldPath) {
  std::filesystem::rename(PathOf("schemas/orders.xml"), PathOf("schemas/deep/sales.xml"));
  EXPECT_EQ(Against().exit_code, 0);
  Write("schemas/deep/sales.xml", Schema("orders", "uint32"));
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(Tables(outcome), testing::Contains("schemas/deep/sales.xml: orders refused"));
  EXPECT_THAT(Tables(outcome), Not(testing::Contains(HasSubstr("removed"))));
}

// Two files with one library: the one with the same bytes is the same file.
TEST_F(AgainstTest, MatchesMovedFilesByBytesBeforeNames) {
  Write("schemas/a.xml", Schema("mall"));
  Write("schemas/b.xml", Schema("mall", "uint32"));
  Commit("second");
  std::filesystem::rename(PathOf("schemas/a.xml"), PathOf("schemas/z.xml"));
  std::filesystem::rename(PathOf("schemas/b.xml"), PathOf("schemas/y.xml"));
  EXPECT_EQ(Against().exit_code, 0);
}

// A library named shop with one table.
std::string ShopTable(const std::string& table, const std::string& fields = "") {
  return "<metalib name=\"shop\" version=\"6\">\n" + Table({.name = table, .fields = fields}) + "\n</metalib>\n";
}

constexpr char kNewField[] = "<entry name=\"extra\" type=\"int8\" version=\"7\"/>";

// Regression: of libraries with the same name, changed files were matched in the order of their names.
TEST_F(AgainstTest, MatchesMovedFilesByTablesBeforeNames) {
  Write("schemas/a.xml", ShopTable("a"));
  Write("schemas/b.xml", ShopTable("b"));
  Commit("second");
  std::filesystem::remove(PathOf("schemas/a.xml"));
  std::filesystem::remove(PathOf("schemas/b.xml"));
  Write("schemas/deep/z.xml", ShopTable("a", kNewField));
  Write("schemas/deep/a.xml", ShopTable("b", kNewField));
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
  EXPECT_THAT(Tables(outcome), testing::Contains("schemas/deep/z.xml: a allowed"));
  EXPECT_THAT(Tables(outcome), testing::Contains("schemas/deep/a.xml: b allowed"));
}

TEST_F(AgainstTest, NewFileIsNotMatchedWithAMovedOneOfTheSameLibrary) {
  Write("schemas/m.xml", ShopTable("m"));
  Commit("second");
  std::filesystem::rename(PathOf("schemas/m.xml"), PathOf("schemas/z.xml"));
  Write("schemas/z.xml", ShopTable("m", kNewField));
  Write("schemas/n.xml", ShopTable("n"));
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_THAT(Tables(outcome), testing::Contains("schemas/z.xml: m allowed"));
  EXPECT_THAT(Tables(outcome), testing::Contains("schemas/n.xml: n new"));
}

// Regression: file names are the same in directories that were renamed.
TEST_F(AgainstTest, MatchesMovedFilesOfTheSameTablesByContent) {
  for (const char* directory : {"schemas/eu", "schemas/us"}) std::filesystem::create_directory(PathOf(directory));
  const std::string eu = "<entry name=\"vat\" type=\"uint16\"/>";
  const std::string us = "<entry name=\"state\" type=\"uint8\"/>";
  Write("schemas/eu/s.xml", ShopTable("t", eu));
  Write("schemas/us/s.xml", ShopTable("t", us));
  Commit("second");
  std::filesystem::rename(PathOf("schemas/eu"), PathOf("schemas/z"));
  std::filesystem::rename(PathOf("schemas/us"), PathOf("schemas/a"));
  Write("schemas/z/s.xml", ShopTable("t", eu + kNewField));
  Write("schemas/a/s.xml", ShopTable("t", us + kNewField));
  EXPECT_EQ(Against().exit_code, 0) << Against().out;
}

// Regression: what a build leaves behind hid that the file itself was deleted.
TEST_F(AgainstTest, IgnoredCopyDoesNotReplaceADeletedFile) {
  Write(".gitignore", "/schemas/build/\n");
  Commit("second");
  std::filesystem::create_directory(PathOf("schemas/build"));
  std::filesystem::rename(PathOf("schemas/users.xml"), PathOf("schemas/build/users.xml"));
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(Tables(outcome), testing::Contains("git:HEAD:schemas/users.xml: users refused removed"));
  EXPECT_EQ(Against({"schemas/users.xml"}).exit_code, 1);
}

TEST_F(AgainstTest, BaselineInsideOfTheProjectDoesNotReplaceADeletedFile) {
  std::filesystem::create_directory(PathOf("schemas/before"));
  Write("schemas/before/gone.xml", Schema("gone"));
  Write("korvelcheck.toml", "");
  const Outcome outcome = Run({"check", "--against", "schemas/before", "--format", "json", "gone.xml", "schemas"});
  EXPECT_THAT(Tables(outcome), testing::Contains("schemas/before/gone.xml: gone refused removed"));
}

// Regression: it was reported as deleted.
TEST_F(AgainstTest, FileThatWasMovedOutOfTheGivenDirectoryIsFound) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\", \"other/*.xml\"]\n");
  std::filesystem::create_directory(PathOf("other"));
  std::filesystem::rename(PathOf("schemas/users.xml"), PathOf("other/people.xml"));
  Write("other/new.xml", Schema("new"));
  const std::vector<std::string> tables = {"other/people.xml: users allowed", "schemas/deep/items.xml: items allowed",
                                           "schemas/orders.xml: orders allowed"};
  const Outcome outcome = Against({"--format", "json", "schemas"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_EQ(Tables(outcome), tables);
  Write("other/people.xml", Schema("users", "uint32"));
  EXPECT_EQ(Against({"schemas"}).exit_code, 1);
  EXPECT_EQ(Against({"schemas/users.xml"}).exit_code, 1);
  ExpectInputError(Against({"schemas/users.xml", "-o", "other/people.xml"}),
                   "korvelcheck: -o other/people.xml would replace an input\n");
}

TEST_F(AgainstTest, SelectsTablesInAllFiles) {
  EXPECT_THAT(Tables(Against({"--format", "json", "--table", "orders"})), ElementsAre("schemas/orders.xml: orders allowed"));
  ExpectInputError(Against({"--table", "oders"}), "korvelcheck: table 'oders' is in no file (did you mean 'orders'?)\n");
}

TEST_F(AgainstTest, NothingComparedIsAnError) {
  Write("new.xml", Schema("new"));
  ExpectInputError(Against({"new.xml"}),
                   "korvelcheck: nothing was compared: all tables are new; check them with 'korvelcheck lint', or "
                   "accept them with --allow-new\n");
  Write("schemas/orders.xml",
        "<metalib name=\"m\" version=\"1\">\n<meta name=\"a\"><entry name=\"b\" type=\"int8\"/></meta>\n</metalib>");
  Commit("second");
  ExpectInputError(Against({"schemas/orders.xml"}), "korvelcheck: nothing was compared: no file has a table\n");
}

TEST_F(AgainstTest, AllowNewAcceptsOnlyNewTables) {
  Write("new.xml", Schema("new"));
  ExpectOutcome(Against({"new.xml", "--allow-new"}), 0,
                "verdict: nothing-compared (all tables are new)\n"
                "project file: korvelcheck.toml (1 file)\n"
                "added: new.xml (nothing to compare it with)\n"
                "new.xml:2:1: new: table new (not compared)\n"
                "0 tables refused, 0 allowed; 0 compared, 1 new, 0 removed; files: 1 added, 0 deleted, 0 moved\n",
                "");
  for (const char* format : {"github", "markdown", "html"}) {
    EXPECT_THAT(Against({"new.xml", "--allow-new", "--format", format}).out, HasSubstr("nothing-compared (all tables are new)"));
  }
  Write("empty.xml", "<metalib name=\"m\" version=\"1\">\n<meta name=\"a\"><entry name=\"b\" type=\"int8\"/></meta>\n</metalib>");
  ExpectInputError(Against({"empty.xml", "--allow-new"}), "korvelcheck: nothing was compared: no file has a table\n");
  Write("schemas/users.xml", Schema("users", "uint32"));
  EXPECT_EQ(Against({"new.xml", "schemas/users.xml", "--allow-new"}).exit_code, 1);
  ExpectInputError(Run({"check", "new.xml", "new.xml", "--allow-new"}),
                   "korvelcheck: check: --allow-new requires --against\nTry 'korvelcheck check --help'.\n");
}

// Regression: a call that named only the new path of a moved file took it for a new file, so that any change of it was allowed.
TEST_F(AgainstTest, FindsMovedFileByItsNewPath) {
  std::filesystem::remove(PathOf("schemas/users.xml"));
  Write("schemas/deep/people.xml", Schema("users", "uint32"));
  const Outcome outcome = Against({"schemas/deep/people.xml", "--allow-new", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1) << outcome.err;
  EXPECT_THAT(Tables(outcome), ElementsAre("schemas/deep/people.xml: users refused"));
  EXPECT_THAT(outcome.out, HasSubstr("\"old_file\": \"git:HEAD:schemas/users.xml\""));
}

TEST_F(AgainstTest, IgnoresOtherRemovedFiles) {
  Write("broken.xml", "no schema");
  Commit("second");
  for (const char* file : {"broken.xml", "schemas/users.xml"}) std::filesystem::remove(PathOf(file));
  Write("new.xml", Schema("new"));
  EXPECT_THAT(Tables(Against({"--no-project", "new.xml", "--allow-new", "--format", "json"})), ElementsAre("new.xml: new new"));
}

TEST_F(AgainstTest, SuggestsSimilarPath) {
  ExpectInputError(Against({"schemas/oders.xml", "empty"}),
                   "korvelcheck: schemas/oders.xml: no schema file in either state (did you mean "
                   "'schemas/orders.xml'?)\n"
                   "korvelcheck: empty: no schema file in either state\n");
  const Outcome outside = Against({"../x.xml"});
  EXPECT_EQ(outside.exit_code, 2);
  EXPECT_THAT(outside.err, HasSubstr("korvelcheck: ../x.xml: is not inside "));
}

TEST_F(AgainstTest, RefusesPatternWithoutMatches) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/*.xml\",\n  \"schema/*.xml\"]\n");
  ExpectInputError(Against(),
                   "korvelcheck.toml:3:3: error: 'schema/*.xml' matches no file; allowed: patterns that match a "
                   "file of either state\n");
}

TEST_F(AgainstTest, ExcludedFilesAreLeftOut) {
  Write("schemas/note.xml", "<note/>");
  const Outcome outcome = Against();
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, testing::StartsWith("schemas/note.xml:1:1: error: "));
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\nexclude = [\"**/note.xml\"]\n");
  EXPECT_EQ(Against().exit_code, 0);
}

// No version of the file is a schema.
TEST_F(AgainstTest, FaultOfTheOldStateNamesBothFiles) {
  Write("schemas/late.xml", "<note/>");
  Commit("second");
  Write("schemas/late.xml", Schema("late"));
  const Outcome outcome = Against();
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, testing::StartsWith("git:HEAD:schemas/late.xml:1:1: error: "));
  EXPECT_THAT(outcome.err, HasSubstr("\nkorvelcheck: schemas/late.xml: cannot be compared with git:HEAD:schemas/late.xml\n"));
}

// Who repairs a file of the baseline must not be stopped, and must not get by with another change.
TEST_F(AgainstTest, RepairedFileIsComparedWithItsLastVersionWithoutFaults) {
  const std::string last = Git({"rev-parse", "HEAD"}).substr(0, 7);
  Write("schemas/orders.xml", "<note/>");
  Commit("broken");
  Write("schemas/orders.xml", "<metalib");
  Commit("broken differently");
  std::filesystem::remove(PathOf("schemas/orders.xml"));
  std::filesystem::create_symlink("users.xml", PathOf("schemas/orders.xml"));
  Commit("a link");
  std::filesystem::remove(PathOf("schemas/orders.xml"));
  Write("schemas/orders.xml", "<metalib");
  Commit("broken again");
  Write("schemas/orders.xml", Schema("orders"));
  const std::string note = "git:HEAD:schemas/orders.xml has faults: compared with git:" + last +
                           ":schemas/orders.xml, its last version without faults\n";
  const Outcome repaired = Against();
  EXPECT_EQ(repaired.exit_code, 0) << repaired.err;
  EXPECT_THAT(repaired.out, HasSubstr(note));
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  EXPECT_EQ(Against().exit_code, 1);
  std::filesystem::remove(PathOf("schemas/orders.xml"));
  const Outcome deleted = Against();
  EXPECT_EQ(deleted.exit_code, 1);
  EXPECT_THAT(deleted.out, HasSubstr(note));
}

TEST_F(AgainstTest, RepairedAndMovedFileIsComparedWithItsLastVersionWithoutFaults) {
  Write("schemas/orders.xml", "<note/>");
  Commit("broken");
  std::filesystem::remove(PathOf("schemas/orders.xml"));
  Write("schemas/moved.xml", Schema("orders", "uint32"));
  const Outcome outcome = Against();
  EXPECT_EQ(outcome.exit_code, 1) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("moved: git:HEAD:schemas/orders.xml -> schemas/moved.xml\n"));
  EXPECT_THAT(outcome.out, HasSubstr("git:HEAD:schemas/orders.xml has faults: "));
}

TEST_F(AgainstTest, RefusesLinkInTheCommit) {
  std::filesystem::create_symlink("orders.xml", PathOf("schemas/link.xml"));
  Commit("second");
  std::filesystem::remove(PathOf("schemas/link.xml"));
  Write("schemas/link.xml", Schema("orders"));
  const Outcome outcome = Against();
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.err,
            "korvelcheck: git:HEAD:schemas/link.xml: is a symbolic link in that commit; allowed: a file\n"
            "korvelcheck: schemas/link.xml: cannot be compared with git:HEAD:schemas/link.xml\n");
  EXPECT_THAT(outcome.out, HasSubstr("git:HEAD:schemas/link.xml: error [schema.unreadable] is a symbolic link in that commit\n"));
}

// Regression: its files were all new.
TEST_F(AgainstTest, SkipsNestedRepository) {
  std::filesystem::create_directories(PathOf("schemas/module"));
  GitIn("schemas/module", {"init", "-q"});
  Write("schemas/module/new.xml", Schema("new"));
  const Outcome outcome = Against({"--format", "json"});
  EXPECT_THAT(Tables(outcome), ElementsAre("schemas/deep/items.xml: items allowed", "schemas/orders.xml: orders allowed",
                                           "schemas/users.xml: users allowed"));
}

// Regression: its files seemed to be deleted.
TEST_F(AgainstTest, DirectoryThatBecameARepositoryIsAFault) {
  GitIn("schemas/deep", {"init", "-q"});
  const Outcome outcome = Against();
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.err,
            "korvelcheck: schemas/deep/items.xml: belongs to the repository in schemas/deep, such as a submodule; check it "
            "there\n");
  EXPECT_THAT(outcome.out, HasSubstr("2 compared"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("deleted")));
}

// Regression: the files at their end were new.
TEST_F(AgainstTest, PatternsDoNotLeadThroughLinks) {
  std::filesystem::rename(PathOf("schemas"), PathOf("real"));
  Write("korvelcheck.toml", "[schemas]\npaths = [\"real/**/*.xml\"]\n");
  Commit("second");
  std::filesystem::create_directory_symlink("real", PathOf("schemas"));
  for (const char* pattern : {"schemas/*.xml", "schemas/deep/*.xml"}) {
    Write("korvelcheck.toml", "[schemas]\npaths = [\"real/**/*.xml\", \"" + std::string(pattern) + "\"]\n");
    const Outcome outcome = Against({"--allow-new"});
    EXPECT_EQ(outcome.exit_code, 2) << outcome.out;
    EXPECT_THAT(outcome.err, HasSubstr("'" + std::string(pattern) + "' matches no file"));
  }
}

TEST_F(AgainstTest, OddNamesAreCompared) {
  for (const char* name : {"schemas/a b.xml", "schemas/new\nline.xml", "schemas/\xff.xml", "schemas/-x.xml", "schemas/:y.xml"}) {
    Write(name, Schema("odd"));
  }
  Commit("second");
  const Outcome outcome = Against();
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("8 compared"));
}

TEST_F(AgainstTest, AcceptsDirectoryAsEarlierState) {
  std::filesystem::create_directory(PathOf("before"));
  std::filesystem::copy(PathOf("schemas"), PathOf("before/schemas"), std::filesystem::copy_options::recursive);
  std::filesystem::remove_all(PathOf(".git"));
  Write("schemas/users.xml", Schema("users", "uint32"));
  const Outcome outcome = Run({"check", "--against", "before", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(Tables(outcome), ElementsAre("schemas/deep/items.xml: items allowed", "schemas/orders.xml: orders allowed",
                                           "schemas/users.xml: users refused"));
  std::filesystem::remove(PathOf("schemas/users.xml"));
  EXPECT_THAT(Tables(Run({"check", "--against", "../before", "--format", "json"}, "schemas")),
              testing::Contains("../before/schemas/users.xml: users refused removed"));
  const std::string is_top = ": is the directory that is checked, or contains it; allowed: an earlier state of it\n";
  ExpectInputError(Run({"check", "--against", "."}), "korvelcheck: ." + is_top);
  ExpectInputError(Run({"check", "--no-project", "--against", "..", "orders.xml"}, "schemas"), "korvelcheck: .." + is_top);
  std::filesystem::create_directory_symlink(".", PathOf("link"));
  ExpectInputError(Run({"check", "--against", "link"}), "korvelcheck: link" + is_top);
  std::filesystem::remove(PathOf("link"));
  ExpectInputError(
      Run({"check", "--against", "nowhere"}),
      "korvelcheck: nowhere: No such file or directory; allowed: git:REV, git:REV..., git-tag:PATTERN or a directory\n");
  ExpectInputError(
      Run({"check", "--against", "schemas/orders.xml"}),
      "korvelcheck: schemas/orders.xml: is not a directory; allowed: git:REV, git:REV..., git-tag:PATTERN or a directory\n");
}

TEST_F(AgainstTest, WrongStatesAreRefused) {
  ExpectInputError(Run({"check", "--against", "git:HEAD:schemas"}),
                   "korvelcheck: git:HEAD:schemas: names a path; allowed: git:REV\n");
  ExpectInputError(Run({"check", "--against", "git:"}), "korvelcheck: git:: the revision is missing\n");
  ExpectInputError(Run({"check", "--against", "git:-x"}), "korvelcheck: git:-x: a revision must not begin with '-'\n");
  std::filesystem::remove_all(PathOf(".git"));
  ExpectInputError(Against(), "korvelcheck: git:HEAD: not a git repository (or any of the parent directories): .git\n");
}

TEST_F(AgainstTest, DoesNotReplaceSchemaByReport) {
  const std::string before = Read("schemas/orders.xml");
  ExpectInputError(Against({"-o", "schemas/orders.xml"}), "korvelcheck: -o schemas/orders.xml would replace an input\n");
  ExpectInputError(Against({"--log", "schemas/orders.xml"}), "korvelcheck: --log schemas/orders.xml would change an input\n");
  EXPECT_EQ(Read("schemas/orders.xml"), before);
}

TEST_F(AgainstTest, UsesSettingsOfTheProject) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/*.xml\"]\n[tables.users]\nlist-num = 12\n");
  EXPECT_THAT(Against({"--format", "json", "--table", "users"}).out, HasSubstr("\"list_num\": 12"));
}

// A misspelt name left its table with other settings than the project gives it.
TEST_F(AgainstTest, RefusesSettingsOfAnUnknownTable) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\n[tables.oders]\ntype = \"list\"\n");
  ExpectInputError(
      Against(),
      "korvelcheck.toml:3:1: error: [tables.'oders'] is for a table that no schema file has (did you mean 'orders'?)\n");
  EXPECT_EQ(Against({"schemas/orders.xml"}).exit_code, 0);
}

// The id of a file shows that git has the same bytes.
TEST_F(AgainstTest, ReadsOnlyChangedFilesFromGit) {
  ReplaceGit("[ \"$1\" = cat-file ] || exec \"$REAL_GIT\" \"$@\"\necho 'fatal: out of luck' >&2; exit 5");
  const Outcome outcome = Against();
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
  Write("schemas/users.xml", Schema("users", "uint32"));
  const Outcome failed = Against();
  EXPECT_EQ(failed.exit_code, 2);
  EXPECT_EQ(failed.err,
            "korvelcheck: git:HEAD:schemas/users.xml: git cat-file ended unexpectedly with exit code 5: out of luck\n"
            "korvelcheck: schemas/users.xml: cannot be compared with git:HEAD:schemas/users.xml\n");
}

TEST_F(AgainstTest, ComparesInRepositoryWithLongIds) {
  std::filesystem::remove_all(PathOf(".git"));
  Git({"init", "-q", "--object-format=sha256"});
  Commit("first");
  EXPECT_EQ(Against().exit_code, 0);
  Write("schemas/users.xml", Schema("users", "uint32"));
  EXPECT_EQ(Against().exit_code, 1);
}

TEST_F(AgainstTest, LogsFilesWithoutFaultsInOrder) {
  Write("schemas/orders.xml", "<metalib");
  EXPECT_EQ(Against({"--log", "log"}).exit_code, 2);
  EXPECT_LT(Read("log").find("'items'"), Read("log").find("'users'"));
  EXPECT_THAT(Read("log"), Not(HasSubstr("'orders'")));
  std::filesystem::remove(PathOf("log"));
  Write("schemas/orders.xml", Schema("orders"));
  EXPECT_EQ(Against({"--log", "log"}).exit_code, 0);
  const std::string log = Read("log");
  EXPECT_LT(log.find("'items'"), log.find("'orders'"));
  EXPECT_LT(log.find("'orders'"), log.find("'users'"));
  EXPECT_LT(log.find("'users'"), log.size());
}

// Sorted by path, whichever thread finishes first; with a log, files are checked one after the other.
TEST_F(AgainstTest, ComparesThousandFilesInOrder) {
  constexpr int kFiles = 1000;
  std::filesystem::create_directory(PathOf("schemas/many"));
  const auto name = [](int i) { return "t" + std::to_string(10000 + i); };
  for (int i = 0; i < kFiles; ++i) Write("schemas/many/" + name(i) + ".xml", Schema(name(i)));
  Commit("many");
  for (int i = 0; i < kFiles; i += 10) Write("schemas/many/" + name(i) + ".xml", Schema(name(i), "uint32"));
  const Outcome outcome = Against({"--format", "json", "schemas/many"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(outcome.err, "");
  std::vector<std::string> expected;
  for (int i = 0; i < kFiles; ++i) {
    expected.push_back("schemas/many/" + name(i) + ".xml: " + name(i) + (i % 10 == 0 ? " refused" : " allowed"));
  }
  EXPECT_EQ(Tables(outcome), expected);
  EXPECT_EQ(Against({"--format", "json", "schemas/many", "--log", "log"}).out, outcome.out);
}

// --- Files that the project file no longer selects ---

// Regression: a narrower 'paths' hid every change of the other files.
TEST_F(AgainstTest, NamesFilesThatAreNoLongerChecked) {
  Write("schemas/users.xml", Schema("users", "uint32"));
  const std::string finding =
      " error [project.no-longer-checked] schemas/users.xml is no longer checked: the project file of git:HEAD selects it, but "
      "this one does not\n";
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/*/*.xml\", \"schemas/orders.xml\"]\n");
  const Outcome narrowed = Against();
  EXPECT_EQ(narrowed.exit_code, 2);
  EXPECT_THAT(narrowed.out, HasSubstr("korvelcheck.toml:2:10:" + finding));
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\nexclude = [\"**/users.xml\"]\n");
  const Outcome excluded = Against();
  EXPECT_EQ(excluded.exit_code, 2);
  EXPECT_THAT(excluded.out, HasSubstr("korvelcheck.toml:3:12:" + finding));
  EXPECT_EQ(Against({"schemas/orders.xml"}).exit_code, 0);
}

TEST_F(AgainstTest, ComparesMovedFilesOfPatternsThatMovedWithThem) {
  std::filesystem::rename(PathOf("schemas"), PathOf("tables"));
  Write("korvelcheck.toml", "[schemas]\npaths = [\"tables/**/*.xml\"]\n");
  EXPECT_EQ(Against().exit_code, 0);
  Write("tables/users.xml", Schema("users", "uint32"));
  const Outcome changed = Against({"--format", "json"});
  EXPECT_EQ(changed.exit_code, 1);
  EXPECT_THAT(Tables(changed), testing::Contains("tables/users.xml: users refused"));
  std::filesystem::remove(PathOf("tables/users.xml"));
  EXPECT_THAT(Tables(Against({"--format", "json"})), testing::Contains("git:HEAD:schemas/users.xml: users refused removed"));
}

TEST_F(AgainstTest, FileThatWasNoSchemaMayBeExcluded) {
  Write("schemas/note.xml", "<note/>");
  Commit("a file that does not belong here");
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\nexclude = [\"**/note.xml\"]\n");
  EXPECT_EQ(Against().exit_code, 0);
}

// --- Files that are not on the disk, or not of this repository ---

// Regression: all of their tables were reported as removed.
TEST_F(AgainstTest, FilesLeftOutOfASparseCheckoutAreAsInTheIndex) {
  Write("schemas/users.xml", Schema("users", "uint32"));
  Commit("second");
  Git({"sparse-checkout", "set", "--no-cone", "/korvelcheck.toml", "/schemas/deep/"});
  ASSERT_FALSE(std::filesystem::exists(PathOf("schemas/users.xml")));
  EXPECT_EQ(Against().exit_code, 0);
  const Outcome outcome = Run({"check", "--against", "git:HEAD~1", "--format", "json"});
  EXPECT_THAT(Tables(outcome), ElementsAre("schemas/deep/items.xml: items allowed", "schemas/orders.xml: orders allowed",
                                           "schemas/users.xml: users refused"));
  EXPECT_THAT(Tables(Against({"--format", "json", "schemas/users.xml"})), ElementsAre("schemas/users.xml: users allowed"));
  Git({"rm", "-q", "--sparse", "schemas/users.xml"});
  EXPECT_THAT(Tables(Against({"--format", "json"})), testing::Contains("git:HEAD:schemas/users.xml: users refused removed"));
}

TEST_F(AgainstTest, SaysWhyPathSelectsNothing) {
  std::filesystem::create_directories(PathOf("schemas/module/deep"));
  GitIn("schemas/module", {"init", "-q"});
  Write("schemas/module/deep/new.xml", Schema("new"));
  std::filesystem::create_directory(PathOf("docs"));
  Write("docs/a.txt", "");
  ExpectInputError(Against({"schemas/module/deep"}),
                   "korvelcheck: schemas/module/deep: belongs to the repository in schemas/module, such as a submodule; check it "
                   "there\n");
  ExpectInputError(Against({"docs"}), "korvelcheck: docs: no file in it matches 'paths' of the project file\n");
  ExpectInputError(Against({"--no-project", "docs"}), "korvelcheck: docs: no file in it has the suffix .xml or .qmb\n");
}

// --- Paths for services ---

TEST_F(AgainstTest, ServicesGetPathsFromTheTopOfTheRepository) {
  Write("schemas/users.xml", Schema("users", "uint32"));
  const auto path_in = [&](const std::vector<std::string>& more) {
    const auto json = nlohmann::json::parse(Against(Joined({"--format", "gitlab", "../users.xml"}, more), "schemas/deep").out);
    return json[0]["location"]["path"].get<std::string>();
  };
  EXPECT_EQ(path_in({}), "schemas/users.xml");
  EXPECT_EQ(path_in({"--path-prefix", "a/b/c/"}), "a/b/users.xml");
  const auto sarif = nlohmann::json::parse(Against({"--format", "sarif", "../users.xml"}, "schemas/deep").out);
  const auto& result = sarif["runs"][0]["results"][0];
  for (const auto& location : {result["locations"][0], result["relatedLocations"][0]}) {
    EXPECT_EQ(location["physicalLocation"]["artifactLocation"]["uri"], "schemas/users.xml");
    EXPECT_EQ(location["physicalLocation"]["artifactLocation"]["uriBaseId"], "SRCROOT");
  }
}

// The names of files in texts were relative to the working directory.
TEST_F(AgainstTest, TextsForServicesNameFilesFromTheTopOfTheRepository) {
  Write("schemas/users.xml", Schema("users", "uint32"));
  Write("schemas/deep/more.xml", Schema("more"));
  const auto report = [&](const char* format, const std::vector<std::string>& more) {
    return Against(Joined({"--format", format, "..", "--allow-new"}, more), "schemas/deep").out;
  };
  for (const char* const format : {"github", "markdown", "sarif"}) {
    EXPECT_THAT(report(format, {}), HasSubstr("added: schemas/deep/more.xml (nothing")) << format;
    EXPECT_THAT(report(format, {"--path-prefix", "a/b/"}), HasSubstr("added: a/b/more.xml (nothing")) << format;
  }
  for (const char* const format : {"github", "gitlab", "junit", "markdown", "sarif"}) {
    EXPECT_THAT(report(format, {}),
                AnyOf(HasSubstr("was: git:HEAD:schemas/users.xml:2:"), HasSubstr("was: <code>git:HEAD:schemas/users.xml:2:")))
        << format;
    EXPECT_THAT(report(format, {}), Not(HasSubstr("../users.xml"))) << format;
  }
  EXPECT_THAT(report("markdown", {}), HasSubstr("| <code>schemas/users.xml:2:"));
  EXPECT_THAT(report("junit", {}), HasSubstr(">schemas/users.xml:2:"));
}

}  // namespace
}  // namespace tool_test
