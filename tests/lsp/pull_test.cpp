// Diagnostics for an editor that requests them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "diagnostic_summaries.h"
#include "server_fixture.h"

namespace lsp_test {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

constexpr char kSmallPrice[] = "3:30-3:35 1 field.size";
const Json kPulls = {{"textDocument", {{"diagnostic", Json::object()}}}};

class PullTest : public ServerTest {
 protected:
  Json Pull(const std::string& file) {
    return client_.Result("textDocument/diagnostic", {{"textDocument", {{"uri", Uri(file)}}}});
  }

  Client client_;
};

TEST_F(PullTest, GivesDiagnostics) {
  const Json capabilities = client_.Initialize(kPulls);
  EXPECT_EQ(capabilities["diagnosticProvider"]["identifier"], "korvelcheck");
  client_.Open(Uri("shop.xml"), SmallPrice());
  const Json report = Pull("shop.xml");
  EXPECT_EQ(report["kind"], "full");
  EXPECT_THAT(Summaries(report["items"]), ElementsAre(kSmallPrice));
  client_.Notify("textDocument/didSave", {{"textDocument", {{"uri", Uri("shop.xml")}}}});
  Pull("shop.xml");
  EXPECT_FALSE(client_.HasReceived("textDocument/publishDiagnostics"));
  EXPECT_FALSE(client_.HasReceived("workspace/diagnostic/refresh"));
}

TEST_F(PullTest, IsRepeatedWhenTheProjectFileChanges) {
  client_.Initialize(
      {{"textDocument", {{"diagnostic", Json::object()}}}, {"workspace", {{"diagnostics", {{"refreshSupport", true}}}}}});
  client_.Open(Uri("shop.xml"), SmallPrice());
  client_.Open(Uri("korvelcheck.toml"), kProject);
  const Json refresh = client_.Message("workspace/diagnostic/refresh");
  EXPECT_TRUE(refresh.contains("id"));
  EXPECT_FALSE(refresh.contains("params"));
  const Json report = Pull("korvelcheck.toml");
  EXPECT_EQ(report["items"], Json::array());
}

TEST_F(PullTest, ShowsOtherFilesUntilTheirProblemsAreGone) {
  Write("korvelcheck.toml", std::string(kProject) + kExpired);
  client_.Initialize({{"textDocument", {{"diagnostic", {{"relatedDocumentSupport", true}}}}}});
  client_.Open(Uri("shop.xml"), SmallPrice());
  const Json report = Pull("shop.xml");
  EXPECT_THAT(Summaries(report["items"]), ElementsAre(kSmallPrice));
  EXPECT_THAT(Summaries(report["relatedDocuments"][Uri("korvelcheck.toml")]["items"]),
              ElementsAre(EndsWith(" 1 waiver.expired")));
  Write("korvelcheck.toml", kProject);
  EXPECT_EQ(Pull("shop.xml")["relatedDocuments"],
            (Json{{Uri("korvelcheck.toml"), {{"kind", "full"}, {"items", Json::array()}}}}));
  EXPECT_FALSE(Pull("shop.xml").contains("relatedDocuments"));
}

TEST_F(PullTest, ShowsProblemsOfOtherFilesInTheDocument) {
  Write("korvelcheck.toml", std::string(kProject) + kExpired);
  client_.Initialize(kPulls);
  client_.Open(Uri("shop.xml"), SmallPrice());
  const Json report = Pull("shop.xml");
  EXPECT_FALSE(report.contains("relatedDocuments"));
  ASSERT_THAT(Summaries(report["items"]), ElementsAre(kSmallPrice, "0:0-0:0 1 waiver.expired"));
  EXPECT_THAT(report["items"][1]["message"], StartsWith("korvelcheck.toml:4: "));
}

TEST_F(PullTest, SendsNothingWhenTheDocumentIsClosed) {
  client_.Initialize(kPulls);
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Summaries(Pull("shop.xml")["items"]), ElementsAre(kSmallPrice));
  client_.Close(Uri("shop.xml"));
  client_.Error("textDocument/diagnostic", {{"textDocument", {{"uri", Uri("shop.xml")}}}});
  EXPECT_FALSE(client_.HasReceived("textDocument/publishDiagnostics"));
}

}  // namespace
}  // namespace lsp_test
