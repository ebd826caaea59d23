// suggest --write, and suggest for the files of a project.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "project_repository.h"
#include "unprivileged.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class SuggestWriteTest : public ToolTest {};

TEST_F(SuggestWriteTest, ReplacesNew) {
  const std::string fixed = Korvelcheck({"suggest", "old.xml", "wide.xml", "--file"}).out;
  ExpectOutcome(Korvelcheck({"suggest", "old.xml", "wide.xml", "--write"}), 0, "wide.xml: fixed\n", "");
  EXPECT_EQ(Read("wide.xml"), fixed);
  EXPECT_EQ(Korvelcheck({"check", "old.xml", "wide.xml"}).exit_code, 0);
  ExpectOutcome(Korvelcheck({"suggest", "old.xml", "wide.xml", "--write"}), 0, "",
                "korvelcheck: wide.xml: nothing to fix: every table that was compared is allowed\n");
  EXPECT_EQ(Read("wide.xml"), fixed);
  EXPECT_EQ(Files(), (std::vector<std::string>{"old.xml", "same.xml", "wide.xml"}));
}

TEST_F(SuggestWriteTest, DryRunPrintsTheDiff) {
  const std::string before = Read("wide.xml");
  const std::string diff = Korvelcheck({"suggest", "old.xml", "wide.xml"}).out;
  ASSERT_THAT(diff, StartsWith("--- wide.xml\n"));
  ExpectOutcome(Korvelcheck({"suggest", "old.xml", "wide.xml", "--write", "--dry-run"}), 0, diff, "");
  EXPECT_EQ(Read("wide.xml"), before);
}

// A link would be replaced by a file, or lead to a file elsewhere. What can be written is checked by a dry run, too.
TEST_F(SuggestWriteTest, RefusesWhatIsNoRegularFile) {
  std::filesystem::create_symlink("wide.xml", PathOf("link.xml"));
  ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
  const std::string before = Read("wide.xml");
  const std::pair<std::string, std::string> kCases[] = {{"link.xml", "is a symbolic link"},
                                                        {"pipe", "is not a regular file"},
                                                        {"-", "is standard input"},
                                                        {"git:HEAD:wide.xml", "is a file of a commit"}};
  for (const auto& [path, fault] : kCases) {
    for (const std::vector<std::string>& options : {std::vector<std::string>{"--write"}, {"--write", "--dry-run"}}) {
      std::vector<std::string> call = {"suggest", "old.xml", path};
      call.insert(call.end(), options.begin(), options.end());
      ExpectInputError(Korvelcheck(call),
                       "korvelcheck: " + path + " " + fault + "; allowed with --write: a regular file on the disk\n");
    }
  }
  EXPECT_TRUE(std::filesystem::is_symlink(PathOf("link.xml")));
  EXPECT_EQ(Read("wide.xml"), before);
}

TEST_F(SuggestWriteTest, RefusesImages) {
  Korvelcheck({"compile", "wide.xml", "-o", "wide.qmb"});
  const std::string before = Read("wide.qmb");
  ExpectInputError(Korvelcheck({"suggest", "old.xml", "wide.qmb", "--write"}),
                   "korvelcheck: wide.qmb is an image; allowed with --write: a schema file\n");
  EXPECT_EQ(Read("wide.qmb"), before);
}

class SuggestProjectTest : public ProjectTest {
 protected:
  // Changes the keys of two files of three.
  SuggestProjectTest() {
    Write("schemas/orders.xml", Schema("orders", "uint32"));
    Write("schemas/users.xml", Schema("users", "uint32"));
  }

  Outcome Suggest(const std::vector<std::string>& more) const {
    std::vector<std::string> call = {"suggest", "--against", "git:HEAD"};
    call.insert(call.end(), more.begin(), more.end());
    return Run(call);
  }
};

TEST_F(SuggestProjectTest, DiffsAllFiles) {
  const Outcome outcome = Suggest({});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_EQ(outcome.err, "");
  const std::string orders = Run({"suggest", "git:HEAD:schemas/orders.xml", "schemas/orders.xml"}).out;
  const std::string users = Run({"suggest", "git:HEAD:schemas/users.xml", "schemas/users.xml"}).out;
  EXPECT_EQ(outcome.out, orders + users);
  EXPECT_EQ(Suggest({"schemas/users.xml"}).out, users);
  EXPECT_EQ(Suggest({"--write", "--dry-run"}).out, orders + users);
  EXPECT_EQ(Read("schemas/orders.xml"), Schema("orders", "uint32"));
}

TEST_F(SuggestProjectTest, WritesAllFiles) {
  ExpectOutcome(Suggest({"--write"}), 0, "schemas/orders.xml: fixed\nschemas/users.xml: fixed\n", "");
  EXPECT_EQ(Against().exit_code, 0);
  ExpectOutcome(Suggest({"--write"}), 0, "", "korvelcheck: nothing to fix: every table that was compared is allowed\n");
}

TEST_F(SuggestProjectTest, TheProjectFileNamesTheBaseline) {
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\nagainst = 'git:HEAD'\n");
  EXPECT_EQ(Run({"suggest"}).out, Suggest({}).out);
  EXPECT_EQ(Run({"suggest", "schemas/users.xml"}).out, Suggest({"schemas/users.xml"}).out);
  EXPECT_THAT(Run({"suggest", "users.xml"}, "schemas").out, StartsWith("--- users.xml\n"));
  ExpectRefused({"suggest", "--file"}, "korvelcheck: suggest: --file requires OLD and NEW\nTry 'korvelcheck suggest --help'.\n");
}

TEST_F(SuggestProjectTest, FollowsMovedFiles) {
  std::filesystem::rename(PathOf("schemas/users.xml"), PathOf("schemas/people.xml"));
  EXPECT_THAT(Suggest({}).out, HasSubstr("--- schemas/people.xml\n"));
}

// What is accepted for a time must not be undone.
TEST_F(SuggestProjectTest, WaivedChangesStay) {
  Write("korvelcheck.toml",
        Read("korvelcheck.toml") +
            "[[waivers]]\ntable = 'users'\nrule = 'primary-key.size'\nentry = 'uid'\nreason = 'r'\nuntil = 2026-12-31\n");
  ExpectOutcome(Suggest({"--write"}), 0, "schemas/orders.xml: fixed\n", "");
  EXPECT_EQ(Read("schemas/users.xml"), Schema("users", "uint32"));
}

TEST_F(SuggestProjectTest, DeletedFilesHaveNoSuggestion) {
  std::filesystem::remove(PathOf("schemas/users.xml"));
  ExpectOutcome(Suggest({"--write"}), 1, "schemas/orders.xml: fixed\n",
                "schemas/users.xml: error: no suggestion: the file was deleted; allowed: restore it, or move it\n");
}

TEST_F(SuggestProjectTest, ImagesHaveNoSuggestion) {
  Korvelcheck({"compile", "schemas/users.xml", "-o", "users.qmb"});
  std::filesystem::rename(PathOf("users.qmb"), PathOf("schemas/users.xml"));
  const Outcome outcome = Suggest({"--write"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(outcome.out, "schemas/orders.xml: fixed\n");
  EXPECT_EQ(outcome.err, "schemas/users.xml: error: no suggestion: it is an image, which has no lines to change\n");
}

// Nothing that another program wrote may be lost.
TEST_F(SuggestProjectTest, ModifiedFilesAreKept) {
  ReplaceGit("case \"$*\" in *cat-file*) printf ' ' >>schemas/orders.xml ;; esac\nexec \"$REAL_GIT\" \"$@\"");
  const Outcome outcome = Suggest({"--write"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err,
            "korvelcheck: schemas/orders.xml was modified in the meantime; nothing was written; run the command again\n");
  EXPECT_EQ(Read("schemas/users.xml"), Schema("users", "uint32"));
  EXPECT_THAT(Read("schemas/orders.xml"), StartsWith(Schema("orders", "uint32") + " "));
}

// A part of the fixed versions must not stay.
TEST_F(SuggestProjectTest, WritesAllFilesOrNone) {
  Write("schemas/users.xml", Schema("users", "uint32") + "<!--" + std::string(3000, '.') + "-->\n");
  const std::vector<std::string> before = Files();
  const Outcome outcome = Korvelcheck(Call{.arguments = {"suggest", "--against", "git:HEAD", "--write"},
                                           .launcher = {"/bin/sh", "-c", "ulimit -f 1; exec \"$0\" \"$@\""},
                                           .environment = environment_});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, testing::EndsWith("/schemas/users.xml: File too large\n"));
  EXPECT_EQ(Read("schemas/orders.xml"), Schema("orders", "uint32"));
  EXPECT_EQ(Files(), before);
}

TEST_F(SuggestProjectTest, FindsWriteProtectedFilesFirst) {
  const auto launcher = Unprivileged();
  if (!launcher) GTEST_SKIP() << "root may write everywhere";
  ::chmod(PathOf("schemas/users.xml").c_str(), 0400);
  for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"--dry-run"}}) {
    const Outcome outcome = Korvelcheck(Call{.arguments = Joined({"suggest", "--against", "git:HEAD", "--write"}, more),
                                             .launcher = *launcher,
                                             .environment = environment_});
    EXPECT_EQ(outcome.exit_code, 3);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, testing::EndsWith("/schemas/users.xml: Permission denied\n"));
  }
  ::chmod(PathOf("schemas/users.xml").c_str(), 0600);
  ::chmod(PathOf("schemas").c_str(), 0500);
  const Outcome outcome = Korvelcheck(Call{.arguments = {"suggest", "--against", "git:HEAD", "--write", "--dry-run"},
                                           .launcher = *launcher,
                                           .environment = environment_});
  ::chmod(PathOf("schemas").c_str(), 0700);
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.err, testing::EndsWith("/schemas/orders.xml: Permission denied\n"));
  EXPECT_EQ(Read("schemas/orders.xml"), Schema("orders", "uint32"));
}

// A file that is no longer checked must not pass as one that needs no fix.
TEST_F(SuggestProjectTest, IncompleteChecksAreRefused) {
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/*.xml']\n");
  ExpectRefused({"suggest", "--against", "git:HEAD"},
                "korvelcheck: suggest: the check is incomplete; 'korvelcheck check' with the same baseline says why\n");
  EXPECT_EQ(Read("schemas/orders.xml"), Schema("orders", "uint32"));
}

TEST_F(SuggestProjectTest, FaultsAreErrors) {
  Write("schemas/users.xml", "<metalib>");
  const Outcome outcome = Suggest({"--write"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, HasSubstr("schemas/users.xml:1:"));
  EXPECT_EQ(Read("schemas/orders.xml"), Schema("orders", "uint32"));
}

// One path is a file of the project.
TEST_F(SuggestProjectTest, CheckOfOneFileUsesTheBaselineOfTheProject) {
  const std::string usage = "Try 'korvelcheck check --help'.\n";
  ExpectRefused({"check", "schemas/users.xml"}, "korvelcheck: check: NEW is required, or --against\n" + usage);
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\nagainst = 'git:HEAD'\n");
  const Outcome outcome = Run({"check", "schemas/users.xml", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(Tables(outcome), std::vector<std::string>{"schemas/users.xml: users refused"});
  EXPECT_EQ(Run({"check", "users.xml"}, "schemas").exit_code, 1);
  EXPECT_EQ(Run({"check", "schemas/deep"}).exit_code, 0);
  ExpectRefused({"check", "schemas/users.xml", "--no-project"}, "korvelcheck: check: NEW is required, or --against\n" + usage);
}

// A refused table of an unchanged file read as allowed.
TEST_F(SuggestProjectTest, RefusalOfAnUnchangedFileIsNamed) {
  Write("schemas/broken.xml", Library(1, {Table({.name = "broken", .attributes = "TableType=LIST;ListNum=x"})}));
  Commit("broken");
  const Outcome outcome = Run({"suggest", "--against", "git:HEAD", "schemas/broken.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.err,
              StartsWith("schemas/broken.xml: error: no suggestion: table 'broken' stays refused [table.attributes] "));
  EXPECT_THAT(outcome.err, Not(HasSubstr("nothing to fix")));
}

}  // namespace
}  // namespace tool_test
