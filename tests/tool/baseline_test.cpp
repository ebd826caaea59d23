// The earlier states that a check compares with: merge bases, tags, several at once, and states with nothing to compare with.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class BaselineTest : public ProjectTest {
 protected:
  Outcome CheckAgainst(const std::vector<std::string>& baselines, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"check"};
    for (const std::string& baseline : baselines) arguments.insert(arguments.end(), {"--against", baseline});
    return Run(Joined(arguments, more));
  }

  // A branch that begins here; afterwards main gains a field and is checked out again if `on_main`.
  void BranchBehindMain() const {
    Git({"branch", "feature"});
    Write("schemas/users.xml",
          Library(6, {Table({.name = "users", .fields = "<entry name=\"mail\" type=\"int8\" version=\"6\"/>"})}));
    Commit("a field on main");
    Git({"checkout", "-q", "feature"});
  }
};

// --- Merge base ---

// Regression: the branch was refused for the field that main had gained, which it seemed to remove.
TEST_F(BaselineTest, BranchBehindMainIsComparedWithTheMergeBase) {
  BranchBehindMain();
  EXPECT_EQ(CheckAgainst({"git:main"}).exit_code, 1);
  const Outcome outcome = CheckAgainst({"git:main..."});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  EXPECT_EQ(CheckAgainst({"git:main..."}).exit_code, 1);
  Commit("refused on the branch");
  EXPECT_EQ(CheckAgainst({"git:main..."}).exit_code, 1);
}

TEST_F(BaselineTest, ReportNamesTheMergeBase) {
  const std::string base = Git({"rev-parse", "HEAD"}).substr(0, 12);
  BranchBehindMain();
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  const std::string line = "baseline: git:main... (commit " + base + ", the merge base of main and HEAD)";
  EXPECT_THAT(CheckAgainst({"git:main..."}).out, HasSubstr("\n" + line + "\n"));
  const auto json = nlohmann::json::parse(CheckAgainst({"git:main..."}, {"--format", "json"}).out);
  EXPECT_EQ(json["baselines"][0]["name"], "git:main...");
  EXPECT_EQ(json["baselines"][0]["origin"], "commit " + base + ", the merge base of main and HEAD");
  for (const char* format : {"github", "sarif", "junit", "markdown", "html"}) {
    EXPECT_THAT(CheckAgainst({"git:main..."}, {"--format", format}).out, HasSubstr(base)) << format;
  }
}

TEST_F(BaselineTest, FileOfTheMergeBaseIsAnInput) {
  BranchBehindMain();
  EXPECT_EQ(Run({"check", "git:main:schemas/users.xml", "schemas/users.xml"}).exit_code, 1);
  EXPECT_EQ(Run({"check", "git:main...:schemas/users.xml", "schemas/users.xml"}).exit_code, 0);
}

TEST_F(BaselineTest, ProjectFileNamesAMergeBase) {
  BranchBehindMain();
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\nagainst = \"git:main...\"\n");
  EXPECT_EQ(Run({"check"}).exit_code, 0);
  EXPECT_EQ(Run({"check"}, "schemas/deep").exit_code, 0);
}

TEST_F(BaselineTest, MergeBaseNeedsACommonCommit) {
  Git({"checkout", "-q", "--orphan", "other"});
  Commit("unrelated");
  ExpectInputError(CheckAgainst({"git:main..."}), "korvelcheck: git:main...: 'main' and HEAD have no commit in common\n");
  ExpectInputError(CheckAgainst({"git:mian..."}), "korvelcheck: git:mian...: unknown revision 'mian' (did you mean 'main'?)\n");
  for (const char* wrong : {"git:...", "git:main...other", "git:...main"}) {
    ExpectInputError(CheckAgainst({wrong}),
                     "korvelcheck: " + std::string(wrong) +
                         ": '...' has no place there; allowed: git:REV..., the merge base of REV and HEAD\n");
  }
}

TEST_F(BaselineTest, ShallowCloneSaysWhatToFetch) {
  BranchBehindMain();
  Commit("on the branch");
  const std::string origin = "file://" + PathOf("").string();
  GitIn("", {"clone", "-q", "--depth=1", "--no-single-branch", "--branch=feature", origin, "clone"});
  const Outcome outcome = Run({"check", "--against", "git:origin/main..."}, "clone");
  ExpectInputError(outcome,
                   "korvelcheck: git:origin/main...: 'origin/main' and HEAD have no commit in common in this shallow "
                   "clone; fetch the others with: git fetch --unshallow\n");
}

// Regression: the printed command set FETCH_HEAD to the commit that is checked out, and the branch was compared with itself.
TEST_F(BaselineTest, PrintedCommandKeepsTheFetchedCommit) {
  BranchBehindMain();
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  Commit("refused on the branch");
  GitIn("", {"clone", "-q", "--depth=1", "--branch=feature", "file://" + PathOf("").string(), "clone"});
  GitIn("clone", {"fetch", "-q", "origin", "main"});
  std::string id = GitIn("clone", {"rev-parse", "FETCH_HEAD"});
  id.pop_back();
  ExpectInputError(Run({"check", "--against", "git:FETCH_HEAD..."}, "clone"),
                   "korvelcheck: git:FETCH_HEAD...: 'FETCH_HEAD' and HEAD have no commit in common in this shallow clone; fetch "
                   "the others with: git fetch --unshallow origin " +
                       id + "\n");
  GitIn("clone", {"fetch", "-q", "--unshallow", "origin", id});
  EXPECT_EQ(Run({"check", "--against", "git:FETCH_HEAD..."}, "clone").exit_code, 1);
}

// Regression: the check compared with any one of the merge bases, and missed what it lacked.
TEST_F(BaselineTest, ComparesWithEveryMergeBase) {
  const auto with_field = [](const std::string& table) {
    return Library(6, {Table({.name = table, .fields = "<entry name=\"mail\" type=\"int8\" version=\"6\"/>"})});
  };
  const auto commit = [&](const std::string& table) {
    Write("schemas/" + table + ".xml", with_field(table));
    Commit(table);
    return Git({"rev-parse", "HEAD"}).substr(0, 40);
  };
  for (const char* table : {"orders", "users"})
    Write("schemas/" + std::string(table) + ".xml", Library(5, {Table({.name = table})}));
  Commit("second");
  Git({"checkout", "-q", "-b", "feature"});
  const std::string one = commit("orders");
  Git({"checkout", "-q", "main"});
  const std::string two = commit("users");
  Git({"merge", "-q", "-m", "one into main", one});
  Git({"checkout", "-q", "feature"});
  Git({"merge", "-q", "-m", "two into feature", two});
  const Outcome unchanged = CheckAgainst({"git:main..."});
  EXPECT_EQ(unchanged.exit_code, 0) << unchanged.err;
  for (const std::string& base : {one, two}) {
    EXPECT_THAT(unchanged.out, HasSubstr("baseline: git:" + base.substr(0, 12) + " (a merge base of main and HEAD)\n"));
  }
  for (const char* table : {"orders", "users"}) {
    Write("schemas/" + std::string(table) + ".xml", Library(7, {Table({.name = table})}));
    EXPECT_EQ(CheckAgainst({"git:main..."}).exit_code, 1) << table;
    Write("schemas/" + std::string(table) + ".xml", with_field(table));
  }
  const Outcome file = Run({"check", "git:main...:schemas/users.xml", "schemas/users.xml"});
  EXPECT_EQ(file.exit_code, 2);
  EXPECT_THAT(file.err, HasSubstr("'main' and HEAD have 2 merge bases; allowed: one of them: "));
}

// --- Tags ---

TEST_F(BaselineTest, ComparesWithTheNewestTagInVersionOrder) {
  Git({"tag", "v1.9.0"});
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  Commit("refused, but released");
  Git({"tag", "-a", "-m", "annotated", "v1.10.0"});
  Git({"tag", "w2"});
  const Outcome outcome = CheckAgainst({"git-tag:v*"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("baseline: git:v1.10.0 (the newest tag that matches v*"));
  EXPECT_EQ(CheckAgainst({"git-tag:v1.9*"}).exit_code, 1);
}

TEST_F(BaselineTest, CandidateIsOlderThanItsRelease) {
  Git({"tag", "v1.0.0"});
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  Commit("refused");
  Git({"tag", "v1.0.0-rc1"});
  EXPECT_THAT(CheckAgainst({"git-tag:v*"}).out, HasSubstr("baseline: git:v1.0.0 ("));
}

// A branch of the same name does not take the place of the tag.
TEST_F(BaselineTest, TagIsNotMistakenForABranch) {
  Git({"tag", "v1"});
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  Commit("refused");
  Git({"branch", "v1"});
  EXPECT_EQ(CheckAgainst({"git-tag:v*"}).exit_code, 1);
}

TEST_F(BaselineTest, MissingTagIsAnError) {
  ExpectInputError(CheckAgainst({"git-tag:v*"}),
                   "korvelcheck: git-tag:v*: no tag matches 'v*'; fetch the tags with: git fetch --tags\n");
  ExpectInputError(CheckAgainst({"git-tag:"}),
                   "korvelcheck: git-tag:: the pattern is missing; allowed: git-tag:PATTERN, such as git-tag:v*\n");
}

// --- Several baselines ---

class SeveralBaselinesTest : public BaselineTest {
 protected:
  // Released: orders with a uint64 key. On main: users with a uint64 key. Here both have a uint32 key.
  SeveralBaselinesTest() {
    Git({"tag", "v1"});
    Write("schemas/orders.xml", Schema("orders", "uint32"));
    Commit("orders");
    Write("schemas/users.xml", Schema("users", "uint32"));
  }
};

TEST_F(SeveralBaselinesTest, EachFindingNamesItsBaseline) {
  const Outcome outcome = CheckAgainst({"git-tag:v*", "git:HEAD"}, {"-v"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("baseline: git:v1 (the newest tag that matches v*)\nbaseline: git:HEAD\n"));
  EXPECT_THAT(outcome.out, HasSubstr("refused: table orders against git:v1: "));
  EXPECT_THAT(outcome.out, HasSubstr("refused: table users against git:v1: "));
  EXPECT_THAT(outcome.out, HasSubstr("refused: table users against git:HEAD: "));
  EXPECT_THAT(outcome.out, HasSubstr("unchanged: table orders against git:HEAD\n"));
  EXPECT_THAT(CheckAgainst({"git-tag:v*", "git:HEAD"}, {"--format", "github"}).out, HasSubstr("against git:HEAD"));
}

TEST_F(SeveralBaselinesTest, ProjectFileListsBaselines) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\nagainst = [\"git-tag:v*\", \"git:HEAD\"]\n");
  const auto json = nlohmann::json::parse(Run({"check", "--format", "json"}).out);
  std::vector<std::string> refused;
  for (const auto& table : json["tables"]) {
    if (table["status"] != "refused") continue;
    refused.push_back(table["table"].get<std::string>() + " " + table["baseline"].get<std::string>());
  }
  EXPECT_THAT(refused, ElementsAre("orders git:v1", "users git:v1", "users git:HEAD"));
}

TEST_F(SeveralBaselinesTest, OneThatIsMissingFailsTheCall) {
  EXPECT_EQ(CheckAgainst({"git:HEAD", "git:no"}).exit_code, 2);
  EXPECT_EQ(CheckAgainst({"git:HEAD", "git:no"}).out, "");
}

TEST_F(SeveralBaselinesTest, EmptyBaselineIsAFaultOfTheProjectFile) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\nagainst = [\"git:HEAD\", \"\"]\n");
  ExpectInputError(Run({"check"}),
                   "korvelcheck.toml:3:24: error: against is empty; allowed: git:REV, git:REV..., git-tag:PATTERN or a "
                   "directory\n");
}

// Regression: jobs that named the base of a pull request did not compare with the baselines of the project file.
TEST_F(SeveralBaselinesTest, OneMoreIsComparedInAdditionToThoseOfTheProjectFile) {
  const auto also = [this](const std::vector<std::string>& more) {
    return Run(Joined({"check", "-v", "--also-against", "git:HEAD"}, more)).out;
  };
  EXPECT_THAT(also({}), HasSubstr("unchanged: table orders\n"));
  EXPECT_THAT(also({"--against", "git:v1"}), HasSubstr("refused: table orders against git:v1: "));
  EXPECT_THAT(also({"--default-against", "git:v1"}), HasSubstr("refused: table orders against git:v1: "));
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\nagainst = \"git-tag:v*\"\n");
  for (const std::vector<std::string>& paths : {std::vector<std::string>{}, {"schemas"}}) {
    const std::string text = also(paths);
    EXPECT_THAT(text, HasSubstr("refused: table orders against git:v1: "));
    EXPECT_THAT(text, HasSubstr("unchanged: table orders against git:HEAD\n"));
  }
}

// Regression: each finding was reported twice.
TEST_F(SeveralBaselinesTest, OneCommitIsOneBaseline) {
  Git({"branch", "deployed", "v1"});
  const Outcome outcome = CheckAgainst({"git-tag:v*", "git:deployed", "git:HEAD", "git:v1..."});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\nbaseline: git:v1 (the newest tag that matches v*; also git:deployed; also git:v1...)\n"
                                     "baseline: git:HEAD\n"));
  EXPECT_THAT(CheckAgainst({"git:v1", "git:deployed"}).out, HasSubstr("refused: table orders: "));
}

// --- Nothing to compare with ---

// Regression: with --allow-new, "0 compared, 3 new" was allowed.
TEST_F(BaselineTest, StateWithoutAnySchemaIsAnError) {
  Git({"checkout", "-q", "--orphan", "empty"});
  Git({"rm", "-q", "-r", "--cached", "schemas"});
  Commit("kept");
  Git({"rm", "-q", "-r", "--cached", "schemas"});
  Git({"commit", "-q", "-m", "without schemas"});
  const std::string message =
      "korvelcheck: nothing was compared: git:HEAD has no schema file; compare with a state that has some. Check the first "
      "schemas of a project with 'korvelcheck lint'\n";
  ExpectInputError(Against({"--allow-new"}), message);
  ExpectInputError(Against({"--allow-new", "schemas/orders.xml"}), message);
  ExpectInputError(Against({"--allow-new", "--no-project", "schemas"}), message);
}

TEST_F(BaselineTest, EmptyDirectoryIsAnError) {
  std::filesystem::create_directory(PathOf("before"));
  EXPECT_EQ(CheckAgainst({"before"}, {"--allow-new"}).exit_code, 2);
}

// Files with the suffix of schemas are no schemas yet.
TEST_F(BaselineTest, OtherXmlFilesAreNothingToCompareWith) {
  std::filesystem::remove_all(PathOf(".git"));
  std::filesystem::remove(PathOf("korvelcheck.toml"));
  Git({"init", "-q", "-b", "main"});
  Write("pom.xml", "<project/>");
  Git({"add", "pom.xml"});
  Git({"commit", "-q", "-m", "no schema"});
  EXPECT_EQ(Against({"--allow-new", "schemas"}).exit_code, 2);
}

TEST_F(BaselineTest, NewFilesAloneAreNotAllowed) {
  Write("schemas/deep/new.xml", Schema("new"));
  const auto json = nlohmann::json::parse(Against({"--allow-new", "schemas/deep/new.xml", "--format", "json"}).out);
  EXPECT_EQ(json["verdict"], "nothing-compared");
  EXPECT_EQ(json["summary"]["compared"], 0);
}

// --- The commit that is checked out ---

// A hook that runs in a pipeline compares the commit with itself.
TEST_F(BaselineTest, SaysThatBothSidesAreTheSameCommit) {
  constexpr char kSame[] = "baseline: git:HEAD (the commit that is checked out: no selected file differs from it)\n";
  EXPECT_THAT(Against().out, HasSubstr(kSame));
  EXPECT_THAT(Against({"schemas/users.xml"}).out, HasSubstr(kSame));
  EXPECT_THAT(CheckAgainst({"git:HEAD^{tree}"}).out, testing::StartsWith("verdict: unchanged"));
  Write("schemas/users.xml", Schema("users", "uint32"));
  EXPECT_THAT(Against().out, Not(HasSubstr("baseline:")));
  EXPECT_THAT(Against({"schemas/orders.xml"}).out, HasSubstr(kSame));
  Commit("second");
  EXPECT_THAT(CheckAgainst({"git:HEAD~1"}, {"schemas/orders.xml"}).out, Not(HasSubstr("baseline:")));
}

}  // namespace
}  // namespace tool_test
