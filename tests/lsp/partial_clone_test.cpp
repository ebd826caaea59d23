// The program in a partial clone, whose git fetches files only when they are read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "../tool/process.h"
#include "lsp/frames.h"
#include "server_fixture.h"

namespace lsp_test {
namespace {

using testing::HasSubstr;
using testing::Not;
using tool_test::Outcome;

class PartialCloneTest : public ServerTest {
 protected:
  // A clone that lacks the file of the baseline. Its configuration names a program that leaves a mark when git fetches.
  void MakeClone(const std::string& filter) {
    Git({"tag", "released"});
    Write("korvelcheck.toml", Replaced(kProject, "git:HEAD", "git:released"));
    Write("shop.xml", std::string(kShop) + "<!-- later -->\n");
    Commit("Change shop");
    for (const char* const setting : {"uploadpack.allowFilter", "uploadpack.allowAnySHA1InWant"})
      Git({"config", setting, "true"});
    Git({"clone", "-q", "--filter=" + filter, "file://" + PathOf("").string(), PathOf("clone").string()});
    const std::string mark = "touch '" + PathOf("fetched").string() + "'; git-upload-pack";
    GitIn("clone", {"config", "remote.origin.uploadpack", mark});
    GitIn("clone", {"config", "protocol.file.allow", "always"});
  }

  bool HasFetched() const { return std::filesystem::exists(PathOf("fetched")); }

  // The answers of the server about the file, which is open with another text.
  Outcome Serve() const {
    const auto message = [](const std::string& method, const Json& params, const Json& more = Json::object()) {
      Json all = {{"jsonrpc", "2.0"}, {"method", method}, {"params", params}};
      all.update(more);
      return korvel::lsp::Framed(all.dump());
    };
    const std::string uri = Uri("clone/shop.xml");
    const Json document = {{"uri", uri}, {"languageId", "xml"}, {"version", 1}, {"text", SmallPrice()}};
    const std::string input = message("initialize", {{"capabilities", Json::object()}}, {{"id", 1}}) +
                              message("textDocument/didOpen", {{"textDocument", document}}) +
                              message("textDocument/diagnostic", {{"textDocument", {{"uri", uri}}}}, {{"id", 2}}) +
                              message("shutdown", nullptr, {{"id", 3}}) + message("exit", nullptr);
    return tool_test::RunProgram(
        {.arguments = {"lsp"}, .directory = PathOf("clone").string(), .input = input, .environment = environment_});
  }
};

// Regression: git fetched the file with the program that the configuration names.
TEST_F(PartialCloneTest, FetchesNothing) {
  MakeClone("blob:none");
  const Outcome outcome = Serve();
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("git:released:shop.xml: git cat-file"));
  EXPECT_THAT(outcome.out, HasSubstr("this partial clone lacks an object, and the network is not used; "
                                     "fetch it by a call of 'korvelcheck check'"));
  EXPECT_FALSE(HasFetched());
}

TEST_F(PartialCloneTest, ComparesWithAFileThatTheToolHasFetched) {
  MakeClone("blob:none");
  EXPECT_EQ(Run({"check"}, "clone").exit_code, 0);
  EXPECT_TRUE(HasFetched());
  const Outcome outcome = Serve();
  EXPECT_THAT(outcome.out, HasSubstr("field.size"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("partial clone")));
}

TEST_F(PartialCloneTest, FetchesNoDirectories) {
  MakeClone("tree:0");
  const Outcome outcome = Serve();
  EXPECT_THAT(outcome.out, HasSubstr("this partial clone lacks an object"));
  EXPECT_FALSE(HasFetched());
}

}  // namespace
}  // namespace lsp_test
