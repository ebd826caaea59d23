// A project file that applies although the call does not name it must belong to the user or to root: otherwise, a waiver of
// somebody else in a parent directory such as /tmp turns refused into a successful call.
#include <gtest/gtest.h>
#include <unistd.h>

#include "project_repository.h"

namespace tool_test {
namespace {

constexpr uid_t kOther = 12345;

constexpr char kWaiver[] =
    "[[waivers]]\nrule = \"primary-key.size\"\ntable = \"orders\"\nentry = \"uid\"\nreason = \"r\"\nuntil = \"2999-01-01\"\n";

std::string IsForeign(const std::string& file) {
  return "korvelcheck: " + file +
         ": belongs to user id 12345, who is neither you nor root; allowed: a project file that --project names, or "
         "--no-project\n";
}

class ProjectOwnerTest : public ProjectTest {
 protected:
  void SetUp() override {
    Write("given", "");
    const bool can_give = ::geteuid() == 0 && ::chown(PathOf("given").c_str(), kOther, static_cast<gid_t>(-1)) == 0;
    if (!can_give) GTEST_SKIP() << "only root can give a file to another user";
    Write("old.xml", Library(5, {Table()}));
    Write("wide.xml", Library(6, {Table({.key_type = "uint32"})}));
    std::filesystem::permissions(PathOf(""), std::filesystem::perms(0755));
    std::filesystem::create_directory(PathOf("sub"));
  }

  void Give(const std::string& path, uid_t user = kOther) const {
    EXPECT_EQ(::chown(PathOf(path).c_str(), user, static_cast<gid_t>(-1)), 0);
  }

  // As another user.
  Outcome RunAs(uid_t user, const std::vector<std::string>& arguments) const {
    const std::string id = std::to_string(user);
    return Korvelcheck(
        Call{.arguments = arguments, .launcher = {"/usr/bin/setpriv", "--reuid=" + id, "--regid=" + id, "--clear-groups"}});
  }
};

// Regression: the exit code was 0.
TEST_F(ProjectOwnerTest, FileAboveOfAnotherUserIsAnError) {
  const std::vector<std::string> check = {"check", "../old.xml", "../wide.xml"};
  Write("korvelcheck.toml", kWaiver);
  EXPECT_EQ(Run(check, "sub").exit_code, 0);
  Give("korvelcheck.toml");
  ExpectInputError(Run(Joined(check, {"--format", "json"}), "sub"), IsForeign("../korvelcheck.toml"));
  EXPECT_EQ(Run(Joined(check, {"--project", "../korvelcheck.toml"}), "sub").exit_code, 0);
  EXPECT_EQ(Run(Joined(check, {"--no-project"}), "sub").exit_code, 1);
}

TEST_F(ProjectOwnerTest, EveryCommandWithAProjectFileChecksTheOwner) {
  Write("korvelcheck.toml", kWaiver);
  Give("korvelcheck.toml");
  const std::vector<std::vector<std::string>> calls = {
      {"check", "old.xml", "wide.xml"},
      {"suggest", "old.xml", "wide.xml"},
      {"history", "old.xml", "wide.xml"},
      {"lint", "old.xml"},
      {"values", "old.xml", "wide.xml"},
      {"waivers", "old.xml", "wide.xml"},
      {"waive", "0123456789abcdef", "old.xml", "wide.xml", "--reason", "r", "--until", "2999-01-01"},
  };
  for (const std::vector<std::string>& call : calls) {
    const Outcome outcome = Run(call);
    EXPECT_EQ(outcome.exit_code, 2) << call.front();
    EXPECT_EQ(outcome.err, IsForeign("korvelcheck.toml")) << call.front();
  }
}

TEST_F(ProjectOwnerTest, OwnFilesAndThoseOfRootApply) {
  const std::vector<std::string> check = {"check", "old.xml", "wide.xml"};
  Write("korvelcheck.toml", kWaiver);
  if (RunAs(kOther, {"--version"}).exit_code != 0) GTEST_SKIP() << "the program cannot be run as another user";
  EXPECT_EQ(RunAs(kOther, check).exit_code, 0);
  Give("korvelcheck.toml");
  EXPECT_EQ(RunAs(kOther, check).exit_code, 0);
  EXPECT_EQ(RunAs(kOther + 1, check).err, IsForeign("korvelcheck.toml"));
}

TEST_F(ProjectOwnerTest, NestedFileOfAnotherUserIsAnError) {
  Write("schemas/deep/korvelcheck.toml", kWaiver);
  Give("schemas/deep/korvelcheck.toml");
  const std::string error = IsForeign("schemas/deep/korvelcheck.toml");
  EXPECT_EQ(Against().err, error);
  EXPECT_EQ(Against().exit_code, 2);
  EXPECT_EQ(Run({"lint", "schemas/deep/items.xml"}).err, error);
  EXPECT_EQ(Run({"lint", "schemas/orders.xml"}).exit_code, 0);
  EXPECT_EQ(Against({"--no-project", "schemas"}).exit_code, 0);
}

// In a container, root often checks a clone of another user.
TEST_F(ProjectOwnerTest, OwnerOfARepositoryThatGitAcceptsApplies) {
  Write("korvelcheck.toml", kWaiver);
  for (const std::string path : {"korvelcheck.toml", ".git", ""}) Give(path);
  const std::vector<std::string> check = {"check", "old.xml", "wide.xml"};
  ExpectInputError(Run(check), IsForeign("korvelcheck.toml"));
  Write(".gitconfig", "[safe]\n\tdirectory = *\n");
  for (std::string& variable : environment_) {
    if (variable.starts_with("GIT_CONFIG_GLOBAL=")) variable = "GIT_CONFIG_GLOBAL=" + PathOf(".gitconfig").string();
  }
  EXPECT_EQ(Run(check).exit_code, 0);
  Give("korvelcheck.toml", kOther + 1);
  EXPECT_EQ(Run(check).exit_code, 2);
}

// The call names the baseline, and its project files decide nothing but which files it selected.
TEST_F(ProjectOwnerTest, BaselineMayBelongToAnotherUser) {
  std::filesystem::create_directory(PathOf("released"));
  std::filesystem::copy(PathOf("schemas"), PathOf("released/schemas"), std::filesystem::copy_options::recursive);
  Write("released/korvelcheck.toml", Read("korvelcheck.toml"));
  Give("released/korvelcheck.toml");
  const Outcome outcome = Run({"check", "--against", "released"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
}

}  // namespace
}  // namespace tool_test
