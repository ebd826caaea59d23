// history of files in a repository: renames, cuts, the work tree, starting points, tags, several files.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "git_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

constexpr char kNote[] = "<entry name=\"note\" id=\"2\" type=\"uint32\" version=\"6\"/>";

class HistoryGitTest : public GitTest {
 protected:
  // Versions of a schema: 1 and 2 differ by a new field, 3 narrows the key.
  static std::string Version(int number) {
    if (number == 1) return Library(5, {Table()});
    return Library(6, {Table({.key_type = number == 2 ? "uint64" : "uint32", .fields = kNote})});
  }
  std::string CommitVersion(int number, const std::string& file = "orders.xml") const {
    Write(file, Version(number));
    return Commit("version " + std::to_string(number)).substr(0, 7);
  }
  Outcome History(const std::vector<std::string>& arguments, const std::string& directory = "") const {
    std::vector<std::string> all = {"history"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return Run(all, directory);
  }
  nlohmann::json JsonOf(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--format", "json"});
    return nlohmann::json::parse(History(arguments).out);
  }
  static std::vector<std::string> Names(const nlohmann::json& history) {
    std::vector<std::string> names;
    for (const auto& version : history["versions"]) names.push_back(version["name"]);
    return names;
  }
  void Move(const std::string& from, const std::string& to) const {
    std::filesystem::create_directories(PathOf(to).parent_path());
    std::filesystem::rename(PathOf(from), PathOf(to));
  }
};

using Versions = std::vector<std::string>;

// The history ended at the rename, and the change of the commit that renamed the file was never seen.
TEST_F(HistoryGitTest, ComparesARenamedFileWithItsOldPath) {
  const std::string first = CommitVersion(1);
  const std::string second = CommitVersion(2);
  Move("orders.xml", "schemas/shop.xml");
  const std::string third = CommitVersion(3, "schemas/shop.xml");
  const std::string fourth = CommitVersion(3, "schemas/shop.xml");
  const Outcome outcome = History({"--git", "schemas/shop.xml"});
  EXPECT_EQ(outcome.exit_code, 1) << outcome.err;
  EXPECT_THAT(outcome.out,
              HasSubstr("history of schemas/shop.xml: 3 versions\n  begins with commit " + first + ", which added the file\n"));
  EXPECT_THAT(outcome.out, HasSubstr("step 2: git:" + second + ":orders.xml -> git:" + third + ":schemas/shop.xml: refused\n"));
  EXPECT_EQ(outcome.err, "");
}

// Git finds no similarity; both files hold a library of the same name.
TEST_F(HistoryGitTest, FollowsAFileThatWasMovedAndRewritten) {
  const std::string first = CommitVersion(1);
  std::filesystem::remove(PathOf("orders.xml"));
  std::string fields;
  for (int i = 0; i < 60; ++i) fields += "\n  <entry name=\"f" + std::to_string(i) + "\" type=\"uint32\" version=\"6\"/>";
  Write("moved.xml", Library(6, {"\n" + Table({.key_type = "uint32", .fields = fields}) + "\n"}));
  const std::string second = Commit("moved").substr(0, 7);
  const auto json = JsonOf({"--git", "moved.xml"});
  EXPECT_EQ(Names(json["files"][0]), (Versions{"git:" + first + ":orders.xml", "git:" + second + ":moved.xml"}));
  EXPECT_EQ(json["verdict"], "refused");
}

TEST_F(HistoryGitTest, FollowsSeveralRenames) {
  CommitVersion(1, "a.xml");
  Move("a.xml", "b.xml");
  Commit("b");
  CommitVersion(2, "b.xml");
  Move("b.xml", "c/c.xml");
  const std::string last = Commit("c").substr(0, 7);
  const auto json = JsonOf({"--git", "c/c.xml"});
  EXPECT_EQ(json["files"][0]["versions"].size(), 4);
  EXPECT_EQ(json["files"][0]["versions"][3]["name"], "git:" + last + ":c/c.xml");
  EXPECT_EQ(json["verdict"], "allowed");
}

TEST_F(HistoryGitTest, UncommittedFileIsTheLastVersion) {
  const std::string first = CommitVersion(1);
  const std::string second = CommitVersion(2);
  EXPECT_EQ(JsonOf({"--git", "orders.xml"})["files"][0]["versions"].size(), 2);
  Write("orders.xml", Version(3));
  const Outcome outcome = History({"--git", "orders.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("step 2: git:" + second + ":orders.xml -> orders.xml: refused\n"));
  EXPECT_THAT(outcome.out,
              HasSubstr("\n  orders.xml:2:52: refused [primary-key.size] the size of a primary key field changed\n"));
}

TEST_F(HistoryGitTest, FollowsAnUncommittedRename) {
  const std::string first = CommitVersion(1);
  Move("orders.xml", "shop.xml");
  Write("shop.xml", Version(3));
  const auto json = JsonOf({"--git", "shop.xml"});
  EXPECT_EQ(Names(json["files"][0]), (Versions{"git:" + first + ":orders.xml", "shop.xml"}));
  EXPECT_EQ(json["verdict"], "refused");
}

// "is in no commit" was false. As long as git does not know the new path, the files of the directory were removed.
TEST_F(HistoryGitTest, SaysWhereTheFilesOfADirectoryWent) {
  std::filesystem::create_directory(PathOf("old"));
  CommitVersion(1, "old/orders.xml");
  std::filesystem::rename(PathOf("old"), PathOf("new"));
  const Outcome uncommitted = History({"--git", "old"});
  EXPECT_EQ(uncommitted.exit_code, 1) << uncommitted.err;
  EXPECT_THAT(uncommitted.out, HasSubstr("history of old/orders.xml: 2 versions\n"));
  const std::string rename = Commit("rename").substr(0, 7);
  const Outcome committed = History({"--git", "old"});
  EXPECT_EQ(committed.exit_code, 2);
  EXPECT_THAT(committed.err, HasSubstr("old/orders.xml: was moved to new/orders.xml by commit " + rename + "; allowed: "));
}

// The message said that the work tree no longer has the directory, and asked for a file that exists.
TEST_F(HistoryGitTest, FileInPlaceOfADirectoryIsNew) {
  std::filesystem::create_directory(PathOf("old"));
  CommitVersion(1, "old/orders.xml");
  std::filesystem::remove_all(PathOf("old"));
  Write("old", Version(2));
  ExpectInputError(History({"--git", "old"}),
                   "korvelcheck: old: is in only one commit; allowed: a file with at least two versions\n");
}

// A directory is no version of a schema.
TEST_F(HistoryGitTest, DirectoriesNeedNoOption) {
  std::filesystem::create_directory(PathOf("old"));
  CommitVersion(1, "old/orders.xml");
  CommitVersion(2, "old/orders.xml");
  const Outcome named = History({"--git", "old"});
  EXPECT_EQ(named.exit_code, 0);
  ExpectOutcome(History({"old"}), 0, named.out, named.err);
}

TEST_F(HistoryGitTest, SuggestsGitForACommittedFile) {
  CommitVersion(1);
  ExpectInputError(History({"orders.xml"}),
                   "korvelcheck: history: at least two versions are required; --git checks the commits that changed the file\n"
                   "Try 'korvelcheck history --help'.\n");
}

TEST_F(HistoryGitTest, ReportsThatTheWorkTreeLacksTheFile) {
  CommitVersion(1);
  CommitVersion(2);
  std::filesystem::remove(PathOf("orders.xml"));
  EXPECT_THAT(History({"--git", "orders.xml"}).out, HasSubstr("\n  the work tree no longer has the file\n"));
}

TEST_F(HistoryGitTest, SaysThatAShallowCloneCutsTheHistory) {
  CommitVersion(1);
  const std::string second = CommitVersion(2);
  CommitVersion(3);
  Git({"clone", "-q", "--depth=2", "file://" + PathOf("").string(), "clone"});
  const Outcome outcome = History({"--git", "orders.xml"}, "clone");
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\n  begins with commit " + second +
                                     ", the oldest of this shallow clone; fetch older versions "
                                     "with: git fetch --unshallow\n"));
}

TEST_F(HistoryGitTest, SaysThatAMergedBranchIsMissing) {
  Write("README", "");
  Commit("start");
  Git({"checkout", "-q", "-b", "side"});
  CommitVersion(1);
  Git({"checkout", "-q", "main"});
  Git({"merge", "-q", "--no-ff", "-m", "merge", "side"});
  const std::string merge = Git({"rev-parse", "--short=7", "HEAD"}).substr(0, 7);
  CommitVersion(2);
  EXPECT_THAT(History({"--git", "orders.xml"}).out, HasSubstr("\n  begins with commit " + merge +
                                                              ", a merge whose first parent does not "
                                                              "have the file: versions of the merged branch are missing\n"));
}

// The other versions are compared, across the one that cannot be read. The exit code says that the result is incomplete.
TEST_F(HistoryGitTest, ReportsAVersionThatCannotBeRead) {
  const std::string first = CommitVersion(1);
  Write("orders.xml", "<metalib>");
  const std::string broken = Commit("broken").substr(0, 7);
  const std::string third = CommitVersion(3);
  const Outcome outcome = History({"--git", "orders.xml"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, HasSubstr("git:" + broken + ":orders.xml:1:"));
  EXPECT_THAT(outcome.out, HasSubstr("\n  cannot be read: git:" + broken + ":orders.xml\n"));
  EXPECT_THAT(outcome.out, HasSubstr("step 1: git:" + first + ":orders.xml -> git:" + third + ":orders.xml: refused\n"));
}

TEST_F(HistoryGitTest, BeginsWithARevision) {
  CommitVersion(1);
  const std::string second = CommitVersion(2);
  Git({"tag", "start"});
  Move("orders.xml", "shop.xml");
  const std::string third = CommitVersion(3, "shop.xml");
  const auto json = JsonOf({"--from", "start", "shop.xml"});
  EXPECT_EQ(Names(json["files"][0]), (Versions{"git:start:orders.xml", "git:" + third + ":shop.xml"}));
  EXPECT_EQ(json["files"][0]["notes"][0], "begins with start (--from)");
  const Outcome unknown = History({"--from", "strat", "shop.xml"});
  ExpectInputError(unknown, "korvelcheck: git:strat: unknown revision 'strat' (did you mean 'start'?)\n");
}

TEST_F(HistoryGitTest, ChecksTagsInVersionOrder) {
  Git({"tag", "v0.1", CommitVersion(1, "old.xml")});
  Move("old.xml", "orders.xml");
  Commit("move");
  Git({"tag", "v0.9"});
  CommitVersion(2);
  Git({"tag", "v0.10"});
  Git({"tag", "other"});
  const auto json = JsonOf({"--tags", "v*", "orders.xml"});
  EXPECT_EQ(Names(json["files"][0]), (Versions{"git:v0.1:old.xml", "git:v0.9:orders.xml", "git:v0.10:orders.xml"}));
  ExpectInputError(History({"--tags", "w*", "orders.xml"}),
                   "korvelcheck: --tags w*: no tag matches 'w*'; fetch the tags with: git fetch --tags\n");
  const Outcome both = History({"--tags", "v*", "--from", "v0.1", "orders.xml"});
  EXPECT_EQ(both.exit_code, 2);
}

TEST_F(HistoryGitTest, ChecksAllFilesOfTheProject) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/*.xml\"]\n");
  std::filesystem::create_directory(PathOf("schemas"));
  Write("schemas/users.xml", Library(5, {Table({.name = "users"})}));
  CommitVersion(1, "schemas/orders.xml");
  CommitVersion(2, "schemas/orders.xml");
  CommitVersion(3, "schemas/orders.xml");
  const Outcome outcome = History({});
  EXPECT_EQ(outcome.exit_code, 1) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("history of schemas/orders.xml: 3 versions\n"));
  EXPECT_THAT(outcome.out, HasSubstr("history of schemas/users.xml: 1 version\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\n1 of 2 files refused; 1 with a single version, not compared\n"));
  const auto json = JsonOf({"--git", "schemas"});
  EXPECT_EQ(json["files"].size(), 2);
  EXPECT_EQ(json["files"][0]["file"], "schemas/orders.xml");
}

// The number of git processes does not grow with the number of versions and files.
TEST_F(HistoryGitTest, RunsGitAFewTimes) {
  const auto count_calls = [&](const std::vector<std::string>& arguments) {
    Write("calls", "");
    Run(arguments);
    const std::string calls = Read("calls");
    return std::count(calls.begin(), calls.end(), '\n');
  };
  Write(".gitignore", "bin\ncalls\n");
  CommitVersion(1);
  CommitVersion(2);
  ReplaceGit("echo \"$@\" >> " + PathOf("calls").string() + "\nexec $REAL_GIT \"$@\"");
  const auto few = count_calls({"history", "--git", "orders.xml"});
  for (int i = 0; i < 10; ++i) {
    CommitVersion(i % 2 + 1);
    CommitVersion(i % 2 + 1, "more" + std::to_string(i) + ".xml");
  }
  EXPECT_EQ(count_calls({"history", "--git", "orders.xml"}), few);
  std::vector<std::string> all = {"history", "--git", "orders.xml"};
  for (int i = 0; i < 10; ++i) all.push_back("more" + std::to_string(i) + ".xml");
  EXPECT_LE(count_calls(all), few + 2);  // for renames, and for files that were removed
}

}  // namespace
}  // namespace tool_test
