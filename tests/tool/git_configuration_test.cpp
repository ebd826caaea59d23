// Settings of git, in a repository or in the environment, neither change an answer nor start a program.
#include <gmock/gmock.h>

#include "git_repository.h"

namespace tool_test {
namespace {

class GitConfigurationTest : public GitTest {
 protected:
  // Three versions: the second narrows the key, the third adds a field.
  GitConfigurationTest() {
    Write("orders.xml", Library(5, {Table()}));
    first_ = Commit("first");
    Write("orders.xml", Library(6, {Table({.key_type = "uint32"})}));
    second_ = Commit("second");
    Write("orders.xml", Library(7, {Table({.key_type = "uint32", .fields = kNote})}));
    Commit("third");
    history_ = Run(kHistory);
    check_ = Run(kCheck);
    EXPECT_EQ(history_.exit_code, 1) << history_.err;
    EXPECT_EQ(check_.exit_code, 1) << check_.err;
  }

  void ExpectSameAnswers() const {
    const Outcome history = Run(kHistory);
    EXPECT_EQ(history.exit_code, 1) << history.err;
    EXPECT_EQ(history.out, history_.out);
    EXPECT_EQ(history.err, "");
    const Outcome check = Run(kCheck);
    EXPECT_EQ(check.exit_code, 1) << check.err;
    EXPECT_EQ(check.out, check_.out);
    EXPECT_EQ(check.err, "");
  }

  static constexpr char kNote[] = "<entry name=\"note\" id=\"2\" type=\"uint32\" version=\"7\"/>";
  const std::vector<std::string> kHistory = {"history", "--git", "orders.xml"};
  const std::vector<std::string> kCheck = {"check", "--against", "git:HEAD~2", "orders.xml"};
  std::string first_;
  std::string second_;
  Outcome history_;
  Outcome check_;
};

TEST_F(GitConfigurationTest, OfOutputHasNoEffect) {
  for (const auto& [name, value] : std::vector<std::pair<std::string, std::string>>{
           {"log.showRoot", "false"},
           {"log.showSignature", "true"},
           {"log.follow", "true"},
           {"log.decorate", "full"},
           {"log.diffMerges", "off"},
           {"i18n.logOutputEncoding", "UTF-16"},
           {"core.quotePath", "false"},
           {"color.ui", "always"},
           {"diff.renames", "false"},
           {"diff.noprefix", "true"},
           {"diff.orderFile", "orders.xml"},
           {"diff.external", "false"},
       }) {
    SCOPED_TRACE(name);
    Git({"config", name, value});
    ExpectSameAnswers();
    Git({"config", "--unset", name});
  }
}

TEST_F(GitConfigurationTest, OfTheEnvironmentHasNoEffect) {
  for (const char* variable : {"GIT_GLOB_PATHSPECS=1", "GIT_NOGLOB_PATHSPECS=1", "GIT_ICASE_PATHSPECS=1",
                               "GIT_NO_REPLACE_OBJECTS=0", "LC_ALL=de_DE.UTF-8"}) {
    SCOPED_TRACE(variable);
    environment_.emplace_back(variable);
    ExpectSameAnswers();
    environment_.pop_back();
  }
}

// "git replace" gives an object other bytes than its id says.
TEST_F(GitConfigurationTest, ReplacedObjectsAreReadAsTheyWereStored) {
  Git({"replace", first_ + ":orders.xml", "HEAD:orders.xml"});
  ExpectSameAnswers();
}

// A graft gives a commit other parents, or none.
TEST_F(GitConfigurationTest, GraftsDoNotHideCommits) {
  Write(".git/info/grafts", second_ + "\n");
  ExpectSameAnswers();
}

TEST_F(GitConfigurationTest, StartsNoProgramThatWatchesTheWorkTree) {
  Write("watch", "#!/bin/sh\n: >started\nprintf 'x\\0/\\0'\n");
  std::filesystem::permissions(PathOf("watch"), std::filesystem::perms::owner_all);
  Git({"config", "core.fsmonitor", PathOf("watch")});
  ExpectSameAnswers();
  EXPECT_FALSE(std::filesystem::exists(PathOf("started")));
}

// A tag with the name of a commit would be read instead of it.
TEST_F(GitConfigurationTest, TagsNamedLikeACommitAreNotReadInstead) {
  for (const std::string& name : {first_, first_.substr(0, 7), second_.substr(0, 7)}) Git({"tag", name, "HEAD"});
  const Outcome history = Run(kHistory);
  EXPECT_EQ(history.exit_code, 1) << history.err;
  EXPECT_THAT(history.out, testing::HasSubstr("3 versions"));
}

}  // namespace
}  // namespace tool_test
