// The commands that errors suggest in clones that lack commits, tags or branches: they must work.
#include <gtest/gtest.h>

#include <filesystem>
#include <string_view>

#include "git_repository.h"

namespace tool_test {
namespace {

// A clone with depth 1, as in pipelines.
class ShallowTest : public GitTest {
 protected:
  ShallowTest() {
    first_ = Commit("first");
    Git({"branch", "base"});
    Commit("second");
    Git({"clone", "-q", "--depth=1", "file://" + PathOf("").string(), "clone"});
  }
  void ExpectHelped(const std::string& revision, const std::string& what, const std::string& command) const {
    const std::string argument = "git:" + revision + ":old.xml";
    ExpectInputError(Run({"lint", argument}, "clone"),
                     "korvelcheck: " + argument + ": " + what + "; fetch it with: " + command + "\n");
    GitIn("clone", Words(command.substr(4)));
    EXPECT_EQ(Run({"lint", argument}, "clone").exit_code, 0) << command;
  }
  static std::vector<std::string> Words(std::string text) {
    std::vector<std::string> words;
    for (std::size_t end = text.find(' '); end != std::string::npos; end = text.find(' ')) {
      words.push_back(text.substr(0, end));
      text.erase(0, end + 1);
    }
    words.push_back(text);
    return words;
  }

  std::string first_;
};

TEST_F(ShallowTest, PrintedCommandFetchesMissingCommit) {
  ExpectHelped(first_, "commit " + first_ + " is not in this clone", "git fetch --depth=1 origin " + first_);
}

TEST_F(ShallowTest, PrintedCommandFetchesRestOfHistory) {
  ExpectHelped("HEAD~1", "'HEAD~1' is older than the oldest commit of this shallow clone", "git fetch --unshallow");
}

TEST_F(ShallowTest, PrintedCommandFetchesAnotherBranch) {
  ExpectHelped("origin/base", "unknown revision 'origin/base'", "git fetch --depth=1 origin base:refs/remotes/origin/base");
}

// Regression: the error was only "unknown revision".
TEST_F(ShallowTest, PrintedCommandsFetchATagOrABranch) {
  Git({"tag", "v1.0.0", "base"});
  const auto text = [](const std::string& name, const std::string& depth) {
    return "korvelcheck: git:" + name + ":old.xml: unknown revision '" + name + "'; if it is a tag, fetch it with: git fetch " +
           depth + "origin tag " + name + "; if it is a branch, fetch it with: git fetch " + depth + "origin " + name +
           ":refs/remotes/origin/" + name + " and use origin/" + name + "\n";
  };
  ExpectInputError(Run({"lint", "git:v1.0.0:old.xml"}, "clone"), text("v1.0.0", "--depth=1 "));
  GitIn("clone", {"fetch", "-q", "--depth=1", "origin", "tag", "v1.0.0"});
  EXPECT_EQ(Run({"lint", "git:v1.0.0:old.xml"}, "clone").exit_code, 0);
  ExpectInputError(Run({"lint", "git:base:old.xml"}, "clone"), text("base", "--depth=1 "));
  GitIn("clone", {"fetch", "-q", "--depth=1", "origin", "base:refs/remotes/origin/base"});
  EXPECT_EQ(Run({"lint", "git:origin/base:old.xml"}, "clone").exit_code, 0);
  Git({"clone", "-q", "--single-branch", "file://" + PathOf("").string(), "single"});
  ExpectInputError(Run({"lint", "git:base:old.xml"}, "single"), text("base", ""));
  Git({"clone", "-q", "file://" + PathOf("").string(), "full"});
  ExpectInputError(Run({"lint", "git:elsewhere:old.xml"}, "full"),
                   "korvelcheck: git:elsewhere:old.xml: unknown revision 'elsewhere'\n");
}

// Regression: names of remotes and branches were not quoted, so a pasted command ran what a name contained.
TEST_F(ShallowTest, PrintedCommandsAreQuotedForTheShell) {
  const std::string branch = "it's;touch$IFS'x'&\xE2\x80\xAE";
  Git({"branch", branch});
  GitIn("clone", {"remote", "rename", "origin", "o;'$(touch${IFS}x)"});
  const std::string argument = "git:o;'$(touch${IFS}x)/" + branch + ":old.xml";
  const std::string error = Run({"lint", argument}, "clone").err;
  constexpr std::string_view kBefore = "; fetch it with: ";
  const std::size_t begin = error.find(kBefore);
  ASSERT_NE(begin, std::string::npos) << error;
  const std::string command = error.substr(begin + kBefore.size());
  const Outcome done = RunProgram(
      Call{.arguments = {}, .directory = PathOf("clone"), .launcher = {"/bin/sh", "-c", command}, .environment = environment_});
  EXPECT_EQ(done.exit_code, 0) << command << done.err;
  EXPECT_EQ(Run({"lint", argument}, "clone").exit_code, 0);
  EXPECT_FALSE(std::filesystem::exists(PathOf("clone/x")));
}

}  // namespace
}  // namespace tool_test
