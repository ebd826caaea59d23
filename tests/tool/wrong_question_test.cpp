// Calls that ask something else than was meant: the messages say so, with the call that was probably meant.
#include <gmock/gmock.h>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class PairNotesTest : public GitTest {
 protected:
  PairNotesTest() { Write("newer.xml", Library(6, {Table(), Table({.name = "users"})})); }
};

// A change back to an older version is legitimate: report and exit code stay the same.
TEST_F(PairNotesTest, OldAndNewAreSwapped) {
  const std::string note = "korvelcheck: note: OLD has version 6, NEW has the lower version 5; if they are swapped: korvelcheck ";
  for (const std::string command : {"check", "compat"}) {
    for (const std::string format : {"text", "json"}) {
      const Outcome outcome = Run({command, "newer.xml", "old.xml", "--format", format});
      EXPECT_EQ(outcome.err, note + command + " old.xml newer.xml\n");
      EXPECT_THAT(outcome.out, HasSubstr(format == "json" ? "\"verdict\": \"" : "verdict: "));
      EXPECT_THAT(outcome.out, Not(HasSubstr("swapped")));
    }
  }
  EXPECT_THAT(Run({"suggest", "newer.xml", "old.xml"}).err, HasSubstr(note + "suggest old.xml newer.xml\n"));
}

// A log in JSON has one record on each line.
TEST_F(PairNotesTest, ALogOnStandardErrorHasNoNotes) {
  for (const std::string command : {"check", "compat"}) {
    EXPECT_THAT(Run({command, "newer.xml", "old.xml", "--log", "-"}).err, Not(HasSubstr("note: ")));
    EXPECT_THAT(Run({command, "newer.xml", "old.xml", "--log", "log"}).err, HasSubstr("note: "));
  }
}

TEST_F(PairNotesTest, PathsAreQuotedForTheShell) {
  Write("it's new.xml", Read("newer.xml"));
  Write("-old.xml", Read("old.xml"));
  EXPECT_THAT(Run({"check", "--", "it's new.xml", "-old.xml"}).err,
              HasSubstr("swapped: korvelcheck check ./-old.xml 'it'\\''s new.xml'\n"));
}

TEST_F(PairNotesTest, OldAndNewAreTheSameFile) {
  std::filesystem::create_symlink("old.xml", PathOf("link.xml"));
  const std::string same = "korvelcheck: note: OLD and NEW are the same file; to ";
  for (const std::string other : {"old.xml", "./old.xml", "link.xml"}) {
    ExpectOutcome(Run({"compat", other, "old.xml"}), 0, Run({"compat", "old.xml", "old.xml"}).out,
                  same + "check one file: korvelcheck lint old.xml\n");
  }
  Commit("first");
  EXPECT_EQ(Run({"check", "old.xml", "old.xml"}).err,
            same + "compare it with the last commit: korvelcheck check git:HEAD:./old.xml old.xml\n");
  EXPECT_EQ(Run({"check", "git:HEAD:./old.xml", "old.xml"}).err, "");
  EXPECT_EQ(Run({"check", "git:HEAD:./old.xml", "git:HEAD:./old.xml"}).err,
            same + "check one file: korvelcheck lint git:HEAD:./old.xml\n");
}

TEST_F(PairNotesTest, OldAndNewAreDifferentLibraries) {
  const auto library = [](const std::string& name, const std::string& table) {
    return "<metalib name=\"" + name + "\" version=\"1\" protocol=\"QMX\">\n" + Table({.name = table}) + "\n</metalib>\n";
  };
  Write("mall.xml", library("mall", "orders"));
  Write("shop.xml", library("shop", "carts"));
  Write("renamed.xml", library("shop", "orders"));
  const Outcome outcome = Run({"check", "mall.xml", "shop.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(outcome.err,
            "korvelcheck: note: OLD and NEW are different libraries without a common table: mall and shop; "
            "expected: two versions of one library\n");
  EXPECT_EQ(Run({"check", "mall.xml", "renamed.xml"}).err, "");
}

// Two files of any kind may be compared by field, and a waiver of a finding of lint needs the same file twice.
TEST_F(PairNotesTest, OtherCommandsHaveNoNotes) {
  for (const std::string command : {"values", "same", "diff", "layout"}) {
    EXPECT_EQ(Run({command, "old.xml", "old.xml"}).err, "") << command;
    EXPECT_EQ(Run({command, "newer.xml", "old.xml"}).err, "") << command;
  }
  Write("korvelcheck.toml", "");
  EXPECT_EQ(Run({"waivers", "old.xml", "old.xml"}).err, "");
}

class RevisionAsPathTest : public GitTest {
 protected:
  RevisionAsPathTest() {
    Commit("first");
    Git({"tag", "v1"});
    Git({"update-ref", "refs/remotes/origin/main", "HEAD"});
    std::filesystem::create_directory(PathOf("sub"));
    Write("sub/new file.xml", Read("old.xml"));
  }
};

TEST_F(RevisionAsPathTest, AsAFile) {
  const auto expect_hint = [&](const std::string& path, const std::string& other, const std::string& hint) {
    ExpectRefused({"check", path, other}, "korvelcheck: " + path + ": No such file or directory" + hint + "\n");
  };
  expect_hint("origin/main", "old.xml", " (did you mean git:origin/main:./old.xml?)");
  expect_hint("origin/main...", "old.xml", " (did you mean git:origin/main...:./old.xml?)");
  expect_hint("v1:old.xml", "old.xml", " (did you mean git:v1:old.xml?)");
  // The revision does not have the other file.
  expect_hint("v1", "sub/new file.xml", "; git has a revision of this name: its files are git:v1:PATH");
  expect_hint("v2", "old.xml", "");
  expect_hint("v1:none.xml", "old.xml", "");
  ExpectRefused({"history", "v1", "old.xml"},
                "korvelcheck: v1: No such file or directory; git has a revision of this name: its files are git:v1:PATH\n");
}

TEST_F(RevisionAsPathTest, AsABaseline) {
  const std::string allowed = "; allowed: git:REV, git:REV..., git-tag:PATTERN or a directory\n";
  const auto expect_hint = [&](const std::string& name, const std::string& hint) {
    ExpectRefused({"check", "--against", name, "old.xml"},
                  "korvelcheck: " + name + ": No such file or directory" + hint + allowed);
  };
  expect_hint("origin/main", " (did you mean git:origin/main?)");
  expect_hint("origin/main...", " (did you mean git:origin/main...?)");
  expect_hint("HEAD~0", " (did you mean 'git:HEAD~0'?)");
  expect_hint("origin/mian", "");
}

TEST_F(RevisionAsPathTest, AsAPathOfAProject) {
  ExpectRefused({"check", "--against", "git:HEAD", "v1"},
                "korvelcheck: v1: no schema file in either state (did you mean --against git:v1?)\n");
}

// A file of that name is the file.
TEST_F(RevisionAsPathTest, ExistingFilesComeFirst) {
  Write("v1", Read("old.xml"));
  EXPECT_EQ(Run({"check", "v1", "old.xml"}).exit_code, 0);
}

TEST_F(RevisionAsPathTest, WithoutGitThereIsNoHint) {
  environment_.front() = "PATH=/nonexistent";
  ExpectRefused({"check", "v1", "old.xml"}, "korvelcheck: v1: No such file or directory\n");
}

class NearPatternTest : public ProjectTest {
 protected:
  // The error about a pattern of the project file.
  void ExpectHint(const std::string& pattern, const std::string& hint) const {
    Write("korvelcheck.toml", "[schemas]\npaths = ['" + pattern + "']\n");
    ExpectRefused({"check", "--against", "git:HEAD"}, "korvelcheck.toml:2:10: error: '" + pattern + "' matches no file" + hint +
                                                          "; allowed: patterns that match a file of either state\n");
  }
};

TEST_F(NearPatternTest, DirectoriesAndSuffixes) {
  std::filesystem::create_directories(PathOf("other/deep"));
  Write("other/deep/a.XML", Schema("deep"));
  ExpectHint("other/*.XML", " (did you mean 'other/**/*.XML', which matches other/deep/a.XML?)");
  ExpectHint("other/deep/*.xml", " (did you mean 'other/deep/*.XML', which matches other/deep/a.XML?)");
  ExpectHint("deep/*.XML", " (did you mean 'other/deep/*.XML', which matches other/deep/a.XML?)");
  ExpectHint("other/deep/b.XML", " (did you mean 'other/deep/a.XML', which matches other/deep/a.XML?)");
  ExpectHint("nothing/like/it/*.xml", "");
}

// Only a schema is worth a hint, and only one that is left out by mistake.
TEST_F(NearPatternTest, OtherFilesAreNotNamed) {
  std::filesystem::create_directory(PathOf("models"));
  Write("models/a.xml", "<html/>");
  ExpectHint("model/*.xml", "");
  Write("models/b.xml", Schema("b"));
  ExpectHint("model/*.xml", " (did you mean 'models/*.xml', which matches models/b.xml?)");
  Write("korvelcheck.toml", "[schemas]\npaths = ['model/*.xml', 'models/b.xml']\n");
  EXPECT_THAT(Run({"check", "--against", "git:HEAD"}).err, HasSubstr("error: 'model/*.xml' matches no file; allowed"));
}

TEST_F(NearPatternTest, DirectoriesOfACall) {
  std::filesystem::create_directory(PathOf("upper"));
  Write("upper/a.XML", Schema("a"));
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/*.xml']\n");
  ExpectRefused(
      {"check", "--against", "git:HEAD", "upper"},
      "korvelcheck: upper: no file in it matches 'paths' of the project file (did you mean 'upper/*.XML', which matches "
      "upper/a.XML?)\n");
  ExpectRefused(
      {"check", "--against", "git:HEAD", "upper", "--no-project"},
      "korvelcheck: upper: no file in it has the suffix .xml or .qmb; upper/a.XML is a schema file: name it, or select it "
      "by 'paths' of a project file\n");
  ExpectRefused({"check", "--against", "git:HEAD", "scheams"},
                "korvelcheck: scheams: no schema file in either state (did you mean 'schemas'?)\n");
}

// A branch that is behind main seems to remove what main has gained.
TEST_F(ProjectTest, BranchIsBehind) {
  Git({"checkout", "--quiet", "-b", "branch"});
  Git({"checkout", "--quiet", "main"});
  Write("schemas/new.xml", Schema("gained"));
  Commit("gained");
  Git({"checkout", "--quiet", "branch"});
  const std::string note =
      "korvelcheck: note: git:main has commits that are not in HEAD, and this branch seems to undo them; to compare with the "
      "merge "
      "base: korvelcheck check --against git:main...\n";
  const Outcome behind = Run({"check", "--against", "git:main", "schemas"});
  EXPECT_EQ(behind.exit_code, 1);
  EXPECT_EQ(behind.err, note);
  EXPECT_THAT(behind.out, Not(HasSubstr("To fix")));
  const Outcome logged = Run({"check", "--against", "git:main", "schemas", "--log", "-"});
  EXPECT_THAT(logged.err, Not(HasSubstr("seems to undo"))) << "standard error has the log only";
  EXPECT_THAT(logged.out, Not(HasSubstr("To fix"))) << "the fix would be as wrong as without a log";
  EXPECT_EQ(Run({"check", "--against", "git:main...", "schemas"}).err, "");
  EXPECT_EQ(Run({"check", "--against", "git:main", "schemas", "--table", "orders"}).err, "");  // nothing is refused
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  EXPECT_EQ(Run({"check", "--against", "git:HEAD", "schemas"}).err, "");
  EXPECT_EQ(Run({"check", "--against", "git:main", "schemas"}).err, note);
}

}  // namespace
}  // namespace tool_test
