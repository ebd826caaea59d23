// Diagnostics while the repository, the project files and the files on the disk change, and in repositories of unusual forms.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "server_fixture.h"

namespace lsp_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr char kRefused[] = "3:30 1 field.size";
constexpr char kFailed[] = "0:0 1 check.failed";
constexpr char kUnreadable[] = "0:0 1 schema.unreadable";

class SituationsTest : public ServerTest {
 protected:
  SituationsTest() { client_.Initialize({{"textDocument", {{"diagnostic", {{"relatedDocumentSupport", true}}}}}}); }

  Json Pull(const std::string& file) {
    return client_.Result("textDocument/diagnostic", {{"textDocument", {{"uri", Uri(file)}}}}).at("items");
  }

  // "LINE:CHARACTER SEVERITY CODE" of each diagnostic, requested now.
  std::vector<std::string> Found(const std::string& file) {
    std::vector<std::string> found;
    for (const Json& one : Pull(file)) {
      const Json& begin = one.at("range").at("start");
      found.push_back(std::to_string(begin.at("line").get<int>()) + ":" + std::to_string(begin.at("character").get<int>()) + " " +
                      std::to_string(one.at("severity").get<int>()) + " " + one.at("code").get<std::string>());
    }
    return found;
  }

  std::string FirstMessage(const std::string& file) {
    const Json diagnostics = Pull(file);
    return diagnostics.empty() ? "" : diagnostics[0].at("message").get<std::string>();
  }

  // Moves the file away and leaves a link to it.
  void ReplaceByLink(const std::string& file) const {
    std::filesystem::rename(PathOf(file), PathOf(file + ".moved"));
    std::filesystem::create_symlink(PathOf(file + ".moved"), PathOf(file));
  }

  void MakeDirectory(const std::string& directory) const { std::filesystem::create_directories(PathOf(directory)); }
  void Remove(const std::string& file) const { std::filesystem::remove_all(PathOf(file)); }

  Client client_;
};

TEST_F(SituationsTest, FollowsCommits) {
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  Write("shop.xml", SmallPrice());
  Commit("Reduce the price");
  EXPECT_THAT(Found("shop.xml"), IsEmpty());
  Git({"checkout", "-q", "-b", "other", "HEAD~1"});
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  Write("shop.xml", SmallPrice());
  Git({"commit", "-q", "-a", "--amend", "-m", "Add shop with a small price"});
  EXPECT_THAT(Found("shop.xml"), IsEmpty());
  Git({"checkout", "-q", "--detach", "main~1"});
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
}

TEST_F(SituationsTest, FollowsTags) {
  Write("korvelcheck.toml", Replaced(kProject, "git:HEAD", "git-tag:v*"));
  Git({"tag", "v1"});
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  Write("shop.xml", SmallPrice());
  Commit("Reduce the price");
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  Git({"tag", "v2"});
  EXPECT_THAT(Found("shop.xml"), IsEmpty());
}

TEST_F(SituationsTest, FollowsProjectFilesOnTheDisk) {
  Remove("korvelcheck.toml");
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Found("shop.xml"), IsEmpty());
  Write("korvelcheck.toml", kProject);
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  Write("korvelcheck.toml", "[schemas]\nagainst = 7\n");
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kFailed));
  Write("korvelcheck.toml", kProject);
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  Remove("korvelcheck.toml");
  EXPECT_THAT(Found("shop.xml"), IsEmpty());
}

constexpr char kWaiver[] =
    "[schemas]\npaths = [\"*.xml\"]\n"
    "[[waivers]]\nrule = \"field.size\"\ntable = \"items\"\nentry = \"price\"\nreason = \"no records yet\"\nuntil = "
    "\"2999-01-31\"\n";

TEST_F(SituationsTest, FollowsNestedProjectFiles) {
  MakeDirectory("sub");
  Write("korvelcheck.toml", Replaced(kProject, "*.xml", "**/*.xml"));
  Write("sub/shop.xml", kShop);
  Commit("Add another shop");
  client_.Open(Uri("sub/shop.xml"), SmallPrice());
  EXPECT_THAT(Found("sub/shop.xml"), ElementsAre(kRefused));
  Write("sub/korvelcheck.toml", kWaiver);
  EXPECT_THAT(Found("sub/shop.xml"), ElementsAre("3:30 3 field.size"));
  Write("sub/korvelcheck.toml", Replaced(kWaiver, "price", "number"));
  EXPECT_THAT(Found("sub/shop.xml"), ElementsAre(kRefused));
  Write("sub/korvelcheck.toml", kWaiver);
  EXPECT_THAT(Found("sub/shop.xml"), ElementsAre("3:30 3 field.size"));
  // It judges only the files below it.
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  Remove("sub/korvelcheck.toml");
  EXPECT_THAT(Found("sub/shop.xml"), ElementsAre(kRefused));
}

// Regression: the text of an open project file was used, whatever is on the disk.
TEST_F(SituationsTest, RefusesAnOpenProjectFileThatIsALink) {
  client_.Open(Uri("korvelcheck.toml"), kProject);
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  ReplaceByLink("korvelcheck.toml");
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kUnreadable));
  EXPECT_THAT(FirstMessage("shop.xml"), StartsWith("korvelcheck.toml: is a symbolic link"));
  EXPECT_THAT(Found("korvelcheck.toml"), ElementsAre("0:0 1 project.invalid"));
  EXPECT_THAT(FirstMessage("korvelcheck.toml"), HasSubstr("is a symbolic link"));
  Remove("korvelcheck.toml");
  Write("korvelcheck.toml", kProject);
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  EXPECT_THAT(Found("korvelcheck.toml"), IsEmpty());
}

TEST_F(SituationsTest, RefusesAnOpenNestedProjectFileThatIsALink) {
  MakeDirectory("sub");
  Write("korvelcheck.toml", Replaced(kProject, "*.xml", "**/*.xml"));
  Write("sub/korvelcheck.toml", kWaiver);
  Write("sub/shop.xml", kShop);
  Commit("Add another shop");
  client_.Open(Uri("sub/korvelcheck.toml"), kWaiver);
  client_.Open(Uri("sub/shop.xml"), SmallPrice());
  EXPECT_THAT(Found("sub/shop.xml"), ElementsAre("3:30 3 field.size"));
  ReplaceByLink("sub/korvelcheck.toml");
  EXPECT_THAT(FirstMessage("sub/shop.xml"), StartsWith("sub/korvelcheck.toml: is a symbolic link"));
}

TEST_F(SituationsTest, RefusesAnOpenProjectFileOfAnotherUser) {
  constexpr uid_t kOther = 12345;
  if (::geteuid() != 0) GTEST_SKIP() << "only root can give a file to another user";
  client_.Open(Uri("korvelcheck.toml"), kProject);
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  ASSERT_EQ(::chown(PathOf("korvelcheck.toml").c_str(), kOther, static_cast<gid_t>(-1)), 0);
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kUnreadable));
  EXPECT_THAT(FirstMessage("shop.xml"), StartsWith("korvelcheck.toml: belongs to user id 12345"));
  EXPECT_THAT(FirstMessage("korvelcheck.toml"), HasSubstr("belongs to user id 12345"));
}

// Regression: the text of the document was compared, or the message said that the baseline has no schema file.
TEST_F(SituationsTest, RefusesASchemaThatIsALink) {
  client_.Open(Uri("shop.xml"), SmallPrice());
  ReplaceByLink("shop.xml");
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kUnreadable));
  EXPECT_THAT(FirstMessage("shop.xml"), StartsWith("is a symbolic link\nallowed: a file"));
  Commit("Use a link");
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kUnreadable));
  EXPECT_THAT(FirstMessage("shop.xml"), StartsWith("is a symbolic link\nallowed: a file"));
}

TEST_F(SituationsTest, ComparesAMovedFileWithItsOldPath) {
  Git({"mv", "shop.xml", "market.xml"});
  client_.Open(Uri("market.xml"), SmallPrice());
  EXPECT_THAT(Found("market.xml"), ElementsAre(kRefused));
}

TEST_F(SituationsTest, ChecksAFileThatWasOpenedThroughALink) {
  MakeDirectory("elsewhere");
  std::filesystem::create_directory_symlink(PathOf(""), PathOf("elsewhere/link"));
  client_.Open(Uri("elsewhere/link/shop.xml"), SmallPrice());
  EXPECT_THAT(Found("elsewhere/link/shop.xml"), ElementsAre(kRefused));
}

// Regression: the text of the first address in alphabetical order was checked for each of them.
TEST_F(SituationsTest, ChecksEachTextOfAFileWithSeveralAddresses) {
  MakeDirectory("elsewhere");
  std::filesystem::create_directory_symlink(PathOf(""), PathOf("elsewhere/link"));
  client_.Open(Uri("shop.xml"), SmallPrice());
  client_.Open(Uri("elsewhere/link/shop.xml"), kShop);
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  EXPECT_THAT(Found("elsewhere/link/shop.xml"), IsEmpty());
  client_.Change(Uri("shop.xml"), kShop);
  client_.Change(Uri("elsewhere/link/shop.xml"), SmallPrice());
  EXPECT_THAT(Found("shop.xml"), IsEmpty());
  EXPECT_THAT(Found("elsewhere/link/shop.xml"), ElementsAre(kRefused));
}

TEST_F(SituationsTest, UsesTheProjectFileThatWasChangedLast) {
  MakeDirectory("elsewhere");
  std::filesystem::create_directory_symlink(PathOf(""), PathOf("elsewhere/link"));
  client_.Open(Uri("shop.xml"), SmallPrice());
  for (const std::string directory : {"", "elsewhere/link/", ""}) {
    client_.Open(Uri(directory + "korvelcheck.toml"), kProject);
    EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
    client_.Change(Uri(directory + "korvelcheck.toml"), kWaiver);
    EXPECT_THAT(Found("shop.xml"), IsEmpty());
  }
}

TEST_F(SituationsTest, ComparesWithADirectory) {
  MakeDirectory("store");
  MakeDirectory("released");
  Remove("korvelcheck.toml");
  Write("store/korvelcheck.toml", Replaced(kProject, "git:HEAD", "../released"));
  Write("released/shop.xml", kShop);
  Write("store/shop.xml", kShop);
  client_.Open(Uri("store/shop.xml"), SmallPrice());
  EXPECT_THAT(Found("store/shop.xml"), ElementsAre(kRefused));
  Write("released/shop.xml", SmallPrice());
  EXPECT_THAT(Found("store/shop.xml"), IsEmpty());
  Remove("released");
  EXPECT_THAT(Found("store/shop.xml"), ElementsAre(kFailed));
}

// Regression: the message said that the removed directory has no schema file.
TEST_F(SituationsTest, FollowsABaselineDirectory) {
  Write("korvelcheck.toml", Replaced(kProject, "git:HEAD", "released"));
  client_.Open(Uri("shop.xml"), SmallPrice());
  const std::string missing = FirstMessage("shop.xml");
  EXPECT_THAT(missing, HasSubstr("released"));
  EXPECT_THAT(missing, Not(HasSubstr("nothing was compared")));
  for (int i = 0; i < 2; ++i) {
    MakeDirectory("released");
    Write("released/shop.xml", kShop);
    EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
    Remove("released");
    EXPECT_EQ(FirstMessage("shop.xml"), missing);
  }
}

TEST_F(SituationsTest, SaysThatTheRepositoryIsBroken) {
  client_.Open(Uri("shop.xml"), SmallPrice());
  const std::string head = Read(".git/HEAD");
  Write(".git/HEAD", "nothing\n");
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kFailed));
  Write(".git/HEAD", head);
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  Write(".git/HEAD", "nothing\n");
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kFailed));
}

TEST_F(SituationsTest, SaysThatGitIsMissing) {
  const std::string path = std::getenv("PATH");
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
  ::setenv("PATH", "/nonexistent", 1);
  const Json diagnostics = Pull("shop.xml");
  ::setenv("PATH", path.c_str(), 1);
  ASSERT_EQ(diagnostics.size(), 1U);
  EXPECT_THAT(diagnostics[0]["message"], HasSubstr("needs git, which is not installed"));
  EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
}

TEST_F(SituationsTest, ChecksANewFileInANewDirectory) {
  client_.Open(Uri("a/b/new.xml"), kShop);
  EXPECT_THAT(Found("a/b/new.xml"), IsEmpty());
  client_.Change(Uri("a/b/new.xml"), Replaced(kShop, "uint32", "unit32"));
  EXPECT_THAT(Found("a/b/new.xml"), ElementsAre("2:28 1 schema.invalid"));
}

TEST_F(SituationsTest, ChecksFilesOfSeveralRepositories) {
  MakeDirectory("other");
  GitIn("other", {"init", "-q", "-b", "main"});
  Write("other/korvelcheck.toml", kProject);
  Write("other/shop.xml", SmallPrice());
  GitIn("other", {"add", "-A"});
  GitIn("other", {"commit", "-q", "-m", "Add another shop"});
  client_.Open(Uri("shop.xml"), SmallPrice());
  client_.Open(Uri("other/shop.xml"), SmallPrice());
  for (int i = 0; i < 3; ++i) {
    EXPECT_THAT(Found("shop.xml"), ElementsAre(kRefused));
    EXPECT_THAT(Found("other/shop.xml"), IsEmpty());
  }
}

}  // namespace
}  // namespace lsp_test
