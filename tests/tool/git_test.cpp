// Reads schemas from real git repositories; errors of git.
#include <gmock/gmock.h>

#include "git_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class GitInputTest : public GitTest {
 protected:
  // Whether old.xml of the last commit, under another path there, is read.
  void ExpectAllowed(const std::string& argument, const std::string& directory = "") const {
    const Outcome outcome = Run({"check", argument, PathOf("same.xml")}, directory);
    EXPECT_EQ(outcome.exit_code, 0) << argument << ": " << outcome.err;
    EXPECT_EQ(outcome.err, "");
  }
};

TEST_F(GitInputTest, BothSidesComeFromCommits) {
  Commit("first");
  Write("old.xml", Read("wide.xml"));
  Commit("second");
  const Outcome outcome = Run({"check", "git:HEAD~1:old.xml", "git:HEAD:old.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("git:HEAD:old.xml:2:"));
  EXPECT_THAT(outcome.out, HasSubstr("[primary-key.size]"));
}

TEST_F(GitInputTest, ImagesAreRead) {
  ASSERT_EQ(Run({"compile", "old.xml", "-o", "old.qmb"}).exit_code, 0);
  Commit("first");
  ExpectAllowed("git:HEAD:old.qmb");
}

TEST_F(GitInputTest, AcceptsTheRevisionsOfGit) {
  const std::string id = Commit("first: one");
  Git({"tag", "-a", "-m", "t", "v1"});
  for (const std::string revision : {"HEAD", "main", "refs/heads/main", "v1", "@", "HEAD^{/first: one}", "HEAD^{tree}"}) {
    ExpectAllowed("git:" + revision + ":old.xml");
  }
  ExpectAllowed("git:" + id + ":old.xml");
  ExpectAllowed("git:" + id.substr(0, 7) + ":old.xml");
}

TEST_F(GitInputTest, PathsStartAtTheTopOrTheWorkingDirectory) {
  std::filesystem::create_directories(PathOf("sub/deep"));
  Write("sub/deep/inner.xml", Read("old.xml"));
  Commit("first");
  ExpectAllowed("git:HEAD:sub/deep/inner.xml");
  ExpectAllowed("git:HEAD:sub/deep/inner.xml", "sub/deep");
  ExpectAllowed("git:HEAD:./inner.xml", "sub/deep");
  ExpectAllowed("git:HEAD:../../old.xml", "sub/deep");
  ExpectAllowed("git:HEAD:sub//deep/./inner.xml");
  ExpectInputError(Run({"lint", "git:HEAD:../../../old.xml"}, "sub/deep"),
                   "korvelcheck: git:HEAD:../../../old.xml: is outside of the repository\n");
}

TEST_F(GitInputTest, OddPathsAreRead) {
  const std::string kOdd[] = {"with blank.xml", "new\nline.xml", "-leading.xml", ":colon:.xml", "\xff\xfe.xml",
                              "*.xml",          "\"quote\".xml", "tab\t.xml",    "\xc3\xa4.xml"};
  for (const std::string& path : kOdd) Write(path, Read("old.xml"));
  Commit("first");
  for (const std::string& path : kOdd) ExpectAllowed("git:HEAD:" + path);
}

TEST_F(GitInputTest, EscapesLineBreaksInPaths) {
  Commit("first");
  ExpectRefused({"lint", "git:HEAD:a\nb"}, "korvelcheck: git:HEAD:a\\nb: is not in that commit\n");
}

TEST_F(GitInputTest, HonorsGitEnvironment) {
  Commit("first");
  std::filesystem::create_directory(PathOf("elsewhere"));
  environment_.push_back("GIT_DIR=" + PathOf(".git").string());
  ExpectAllowed("git:HEAD:old.xml", "elsewhere");
}

TEST_F(GitInputTest, LanguageOfGitHasNoEffect) {
  Commit("first");
  environment_.emplace_back("LC_ALL=de_DE.UTF-8");
  environment_.emplace_back("LANGUAGE=de");
  ExpectAllowed("git:HEAD:old.xml");
}

TEST_F(GitInputTest, SchemaErrorsAreLocatedInTheCommit) {
  Write("bad.xml", "<metalib name=\"m\" version=\"1\">\n  <meta/>\n</metalib>\n");
  Commit("first");
  EXPECT_THAT(Run({"lint", "git:HEAD:bad.xml"}).err, StartsWith("git:HEAD:bad.xml:2:3: error: "));
}

TEST_F(GitInputTest, WrongFormsAreRefused) {
  Commit("first");
  ExpectRefused({"lint", "git:HEAD"}, "korvelcheck: git:HEAD: the path is missing; allowed: git:REV:PATH\n");
  ExpectRefused({"lint", "git:HEAD:"}, "korvelcheck: git:HEAD:: the path is missing; allowed: git:REV:PATH\n");
  ExpectRefused({"lint", "git::old.xml"}, "korvelcheck: git::old.xml: the revision is missing\n");
  ExpectRefused({"lint", "git:--all:old.xml"}, "korvelcheck: git:--all:old.xml: a revision must not begin with '-'\n");
  ExpectRefused({"lint", "git:^HEAD:old.xml"}, "korvelcheck: git:^HEAD:old.xml: a revision must not begin with '^'\n");
}

TEST_F(GitInputTest, FileNamesThatLookLikeRevisionsNeedAPath) {
  Write("git:HEAD:x", Read("old.xml"));
  ExpectAllowed("./git:HEAD:x");
}

TEST_F(GitInputTest, ReportsMissingGit) {
  Commit("first");
  environment_.front() = "PATH=/nonexistent";
  ExpectRefused({"lint", "git:HEAD:old.xml"}, "korvelcheck: git:HEAD:old.xml: needs git, which is not installed\n");
}

TEST_F(GitInputTest, ReportsMissingRepository) {
  std::filesystem::remove_all(PathOf(".git"));
  ExpectRefused({"lint", "git:HEAD:old.xml"},
                "korvelcheck: git:HEAD:old.xml: not a git repository (or any of the parent directories): .git\n");
}

TEST_F(GitInputTest, ReportsRepositoryWithoutCommits) {
  ExpectRefused({"lint", "git:HEAD:old.xml"}, "korvelcheck: git:HEAD:old.xml: the repository has no commit yet\n");
  ExpectRefused({"lint", "git:main:old.xml"}, "korvelcheck: git:main:old.xml: the repository has no commit yet\n");
}

TEST_F(GitInputTest, SuggestsSimilarRevision) {
  Commit("first");
  Git({"tag", "release-1"});
  ExpectRefused({"lint", "git:mian:old.xml"}, "korvelcheck: git:mian:old.xml: unknown revision 'mian' (did you mean 'main'?)\n");
  ExpectRefused({"lint", "git:relaese-1:old.xml"},
                "korvelcheck: git:relaese-1:old.xml: unknown revision 'relaese-1' (did you mean 'release-1'?)\n");
  ExpectRefused({"lint", "git:HEAD~7:old.xml"}, "korvelcheck: git:HEAD~7:old.xml: unknown revision 'HEAD~7'\n");
  ExpectRefused({"lint", "git:HAED:old.xml"}, "korvelcheck: git:HAED:old.xml: unknown revision 'HAED' (did you mean 'HEAD'?)\n");
  Git({"update-ref", "refs/remotes/origin/stable", "HEAD"});
  ExpectRefused({"lint", "git:stable:old.xml"},
                "korvelcheck: git:stable:old.xml: unknown revision 'stable' (did you mean 'origin/stable'?)\n");
}

TEST_F(GitInputTest, SuggestsLongerVersion) {
  Commit("first");
  Git({"tag", "v1.0.0"});
  ExpectRefused({"lint", "git:v1.0:old.xml"},
                "korvelcheck: git:v1.0:old.xml: unknown revision 'v1.0' (did you mean 'v1.0.0'?)\n");
}

TEST_F(GitInputTest, NamesTheRemotes) {
  Commit("first");
  const std::string main = "korvelcheck: git:origin/main:old.xml: unknown revision 'origin/main' (did you mean '";
  ExpectRefused({"lint", "git:origin/main:old.xml"}, main + "main'?)\n");
  const std::string next = "korvelcheck: git:origin/next:old.xml: unknown revision 'origin/next'; ";
  ExpectRefused({"lint", "git:origin/next:old.xml"}, next + "the repository has no remote\n");
  Git({"remote", "add", "upstream", "nowhere"});
  Git({"remote", "add", "fork", "nowhere"});
  Git({"update-ref", "refs/remotes/upstream/stable", "HEAD"});
  ExpectRefused({"lint", "git:origin/next:old.xml"}, next + "no remote has the name 'origin'; the remotes are: fork, upstream\n");
  ExpectRefused({"lint", "git:origin/stable:old.xml"},
                "korvelcheck: git:origin/stable:old.xml: unknown revision 'origin/stable' (did you mean 'upstream/stable'?)\n");
}

// Regression: the error said that it was not in the clone.
TEST_F(GitInputTest, RefusesIdOfAFile) {
  Commit("first");
  std::string id = Git({"rev-parse", "HEAD:old.xml"});
  id.pop_back();
  ExpectRefused({"lint", "git:" + id + ":old.xml"},
                "korvelcheck: git:" + id + ":old.xml: '" + id + "' is a file; allowed: a commit, or a tree of one\n");
}

// As in a container whose user does not own the files.
TEST_F(GitInputTest, ReportsHowToTrustAForeignRepository) {
  Commit("first");
  environment_.emplace_back("GIT_TEST_ASSUME_DIFFERENT_OWNER=1");
  const Outcome outcome = Run({"lint", "git:HEAD:old.xml"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, testing::MatchesRegex("korvelcheck: git:HEAD:old.xml: detected dubious ownership in repository at "
                                                 "'[^\n]+'; allow it with: git config --global --add safe.directory [^\n]+\n"));
}

TEST_F(GitInputTest, ReportsMissingCommit) {
  Commit("first");
  const std::string id(40, 'a');
  const std::string argument = "git:" + id + ":old.xml";
  const std::string text = "korvelcheck: " + argument + ": commit " + id + " is not in this clone";
  ExpectRefused({"lint", argument}, text + "\n");
  Git({"remote", "add", "upstream", "nowhere"});
  ExpectRefused({"lint", argument}, text + "; fetch it with: git fetch upstream " + id + "\n");
}

TEST_F(GitInputTest, SuggestsSimilarPathInCommit) {
  std::filesystem::create_directory(PathOf("schemas"));
  Write("schemas/orders.xml", Read("old.xml"));
  Commit("first");
  ExpectRefused({"lint", "git:HEAD:schemas/odrers.xml"},
                "korvelcheck: git:HEAD:schemas/odrers.xml: is not in that commit (did you mean 'schemas/orders.xml'?)\n");
  ExpectRefused({"lint", "git:HEAD:orders.xml"},
                "korvelcheck: git:HEAD:orders.xml: is not in that commit (did you mean 'schemas/orders.xml'?)\n");
  ExpectRefused({"lint", "git:HEAD:nothing.like.it"}, "korvelcheck: git:HEAD:nothing.like.it: is not in that commit\n");
}

TEST_F(GitInputTest, OnlyFilesAreRead) {
  std::filesystem::create_directory(PathOf("schemas"));
  Write("schemas/orders.xml", Read("old.xml"));
  std::filesystem::create_symlink("old.xml", PathOf("link.xml"));
  const std::string id = Commit("first");
  Git({"update-index", "--add", "--cacheinfo", "160000," + id + ",module"});
  Git({"commit", "-q", "-m", "second"});
  ExpectRefused({"lint", "git:HEAD:schemas"}, "korvelcheck: git:HEAD:schemas: is a directory in that commit; allowed: a file\n");
  ExpectRefused({"lint", "git:HEAD:./"}, "korvelcheck: git:HEAD:./: is a directory in that commit; allowed: a file\n");
  ExpectRefused({"lint", "git:HEAD:link.xml"},
                "korvelcheck: git:HEAD:link.xml: is a symbolic link in that commit; allowed: a file\n");
  ExpectRefused({"lint", "git:HEAD:module"}, "korvelcheck: git:HEAD:module: is a submodule in that commit; allowed: a file\n");
}

// A program that replaces git, for rare failures.
TEST_F(GitInputTest, RefusesTooLargeFileWithoutReadingIt) {
  Commit("first");
  ReplaceGit("[ \"$1\" = cat-file ] || exec \"$REAL_GIT\" \"$@\"\nread object; echo \"$object blob 1073741825\"; exec sleep 100");
  ExpectRefused({"lint", "git:HEAD:old.xml"}, "korvelcheck: git:HEAD:old.xml: is too large; allowed: at most 1073741824 bytes\n");
}

TEST_F(GitInputTest, ReportsGitThatEndsUnexpectedly) {
  Commit("first");
  ReplaceGit("[ \"$1\" = cat-file ] || exec \"$REAL_GIT\" \"$@\"\nread object; echo \"$object blob 100\"; kill -9 $$");
  ExpectRefused({"lint", "git:HEAD:old.xml"},
                "korvelcheck: git:HEAD:old.xml: git cat-file ended unexpectedly with exit code 137\n");
  ReplaceGit("[ \"$1\" = cat-file ] || exec \"$REAL_GIT\" \"$@\"\necho 'fatal: no space' >&2; exit 5");
  ExpectRefused({"lint", "git:HEAD:old.xml"},
                "korvelcheck: git:HEAD:old.xml: git cat-file ended unexpectedly with exit code 5: no space\n");
}

TEST_F(GitInputTest, ReportsGitFailures) {
  Commit("first");
  ReplaceGit("case \"$*\" in *' ls-tree '*) echo 'fatal: out of luck' >&2; exit 128;; esac\nexec \"$REAL_GIT\" \"$@\"");
  ExpectRefused({"lint", "git:HEAD:old.xml"}, "korvelcheck: git:HEAD:old.xml: git ls-tree fails: out of luck\n");
}

TEST_F(GitInputTest, ReportsDamagedRepository) {
  Commit("first");
  const std::string id = Git({"rev-parse", "HEAD:old.xml"}).substr(0, 40);
  std::filesystem::remove(PathOf(".git/objects/" + id.substr(0, 2) + "/" + id.substr(2)));
  ExpectRefused({"lint", "git:HEAD:old.xml"},
                "korvelcheck: git:HEAD:old.xml: the repository has no object " + id + "; run 'git fsck'\n");
}

TEST_F(GitInputTest, ReportsFaultsOfEverySide) {
  Commit("first");
  ExpectRefused({"check", "git:HEAD:no.xml", "git:no:old.xml"},
                "korvelcheck: git:HEAD:no.xml: is not in that commit\n"
                "korvelcheck: git:no:old.xml: unknown revision 'no'\n");
}

}  // namespace
}  // namespace tool_test
