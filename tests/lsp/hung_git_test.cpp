// A git that does not answer, as on a file system that hangs.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "project/child_process.h"
#include "project/git.h"
#include "server_fixture.h"

namespace lsp_test {
namespace {

using korvel::ChildProcess;

class HungGitTest : public ServerTest {
 protected:
  HungGitTest() : path_(std::getenv("PATH")) { ReplaceGit("kill -STOP $$"); }
  ~HungGitTest() override { RestoreGit(); }

  // From here on, git suspends itself and gives no output.
  void HangGit(std::chrono::milliseconds limit = std::chrono::milliseconds(100)) {
    SetPath(PathOf("bin").string() + ":" + path_);
    ChildProcess::SetOutputTimeout(limit);
  }

  // The real git gets no limit: it may take longer on a busy machine.
  void RestoreGit() {
    SetPath(path_);
    ChildProcess::SetOutputTimeout(std::chrono::milliseconds(-1));
  }

  static std::string FailureOf(const std::vector<std::string>& command) {
    try {
      return ChildProcess(command).ReadAll();
    } catch (const korvel::OutputTimeoutError& error) {
      return error.what();
    }
  }

 private:
  static void SetPath(const std::string& path) { ::setenv("PATH", path.c_str(), 1); }

  std::string path_;
};

TEST_F(HungGitTest, IsAnErrorUntilGitAnswersAgain) {
  Client client;
  client.Initialize({{"textDocument", {{"diagnostic", Json::object()}}}});
  HangGit();
  client.Open(Uri("shop.xml"), SmallPrice());
  const Json document = {{"textDocument", {{"uri", Uri("shop.xml")}}}};
  const Json failed = client.Result("textDocument/diagnostic", document).at("items");
  ASSERT_EQ(failed.size(), 1U) << failed;
  EXPECT_EQ(failed[0]["severity"], 1);
  EXPECT_EQ(failed[0]["message"], "git hung and was ended: it gave no output for 0 s");
  RestoreGit();
  client.Change(Uri("shop.xml"), SmallPrice() + "\n");
  const Json refused = client.Result("textDocument/diagnostic", document).at("items");
  ASSERT_EQ(refused.size(), 1U) << refused;
  EXPECT_EQ(refused[0]["code"], "field.size");
}

TEST_F(HungGitTest, StartsANewProcessForTheNextFile) {
  std::filesystem::current_path(PathOf(""));
  korvel::Git git;
  const std::vector<korvel::GitFile> files = git.Files("HEAD", "git:HEAD");
  const auto shop = std::ranges::find(files, "shop.xml", &korvel::GitFile::path);
  ASSERT_NE(shop, files.end());
  HangGit();
  EXPECT_THROW(git.ReadFile(*shop, "git:HEAD"), korvel::OutputTimeoutError);
  RestoreGit();
  EXPECT_EQ(git.ReadFile(*shop, "git:HEAD").View(), kShop);
}

// So that a check of many files does not wait for each of them.
TEST_F(HungGitTest, IsNotStartedAgainAtOnce) {
  HangGit(std::chrono::seconds(1));
  EXPECT_EQ(FailureOf({"git"}), "git hung and was ended: it gave no output for 1 s");
  EXPECT_EQ(FailureOf({"true"}), "true was not started, because a program hung a short time ago");
  RestoreGit();
  EXPECT_EQ(ChildProcess({"true"}).ReadAll(), "");
}

}  // namespace
}  // namespace lsp_test
