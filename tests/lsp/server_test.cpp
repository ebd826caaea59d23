// Diagnostics: when they are sent, for what, and what they say.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "diagnostic_summaries.h"
#include "lsp/frames.h"
#include "server_fixture.h"

namespace lsp_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char kSmallPrice[] = "3:30-3:35 1 field.size";

class DiagnosticsTest : public ServerTest {
 protected:
  Client client_;
};

TEST_F(DiagnosticsTest, ShowRefusedChangesWhileTyping) {
  client_.Initialize();
  client_.Open(Uri("shop.xml"), kShop);
  EXPECT_EQ(client_.Diagnostics(Uri("shop.xml")), Json::array());
  client_.Change(Uri("shop.xml"), SmallPrice());
  const Json diagnostics = client_.Diagnostics(Uri("shop.xml"));
  ASSERT_THAT(Summaries(diagnostics), ElementsAre(kSmallPrice));
  const Json& one = diagnostics[0];
  EXPECT_EQ(one["source"], "korvelcheck");
  EXPECT_THAT(one["codeDescription"]["href"], testing::EndsWith("/docs/rules/field-size.md"));
  EXPECT_THAT(one["message"], StartsWith("a field's size was reduced: items.price\n"
                                         "checker: The size of entry can't be reduced! entry:'price' metaname:'items'\n"));
  EXPECT_THAT(one["message"], HasSubstr("\nsuggestion: keep price as it is; add a new field price_2"));
  const Json& related = one["relatedInformation"][0];
  EXPECT_EQ(related["location"]["range"], one["range"]);
  const std::string uri = related["location"]["uri"];
  EXPECT_EQ(client_.Result("workspace/textDocumentContent", {{"uri", uri}})["text"], kShop);
  client_.Change(Uri("shop.xml"), kShop);
  EXPECT_EQ(client_.Diagnostics(Uri("shop.xml")), Json::array());
}

// Regression: VS Code removes an empty "//" and escapes '/' in the query, so the server did not find the text. It shows the last
// part of the path as the name of the file.
TEST_F(DiagnosticsTest, GiveFilesOfTheBaselineAddressesThatEditorsKeep) {
  Write("korvelcheck.toml", Replaced(kProject, "*.xml", "sub/*.xml"));
  std::filesystem::create_directory(PathOf("sub"));
  Write("sub/a shop.xml", kShop);
  Commit("Add another shop");
  client_.Initialize();
  client_.Open(Uri("sub/a shop.xml"), SmallPrice());
  const std::string uri = client_.Diagnostics(Uri("sub/a shop.xml")).at(0)["relatedInformation"][0]["location"]["uri"];
  EXPECT_THAT(uri, testing::MatchesRegex("korvelcheck:/[^/].*/sub/a%20shop[.]xml[?]git%3AHEAD%3Asub/a%20shop[.]xml"));
  const std::string escaped = Replaced(uri, "%3Asub/", "%3Asub%2F");
  EXPECT_EQ(client_.Result("workspace/textDocumentContent", {{"uri", escaped}})["text"], kShop);
}

TEST_F(DiagnosticsTest, ShowFaultsOfTheText) {
  client_.Initialize();
  client_.Open(Uri("shop.xml"), Replaced(kShop, "uint32", "unit32"));
  const Json diagnostics = client_.Diagnostics(Uri("shop.xml"));
  ASSERT_THAT(Summaries(diagnostics), ElementsAre("2:28-2:34 1 schema.invalid"));
  EXPECT_THAT(diagnostics[0]["message"], HasSubstr("unit32"));
  client_.Change(Uri("shop.xml"), Replaced(kShop, "<meta ", "<meta <"));
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("shop.xml"))), ElementsAre(testing::EndsWith(" 1 schema.syntax")));
}

TEST_F(DiagnosticsTest, CountUtf16CodeUnitsBehindACharacterOfFourBytes) {
  client_.Initialize();
  const std::string text = Replaced(kShop, "<entry name=\"price\"", "<!-- \xF0\x9F\x9A\x97 --><entry name=\"price\"");
  client_.Open(Uri("shop.xml"), Replaced(text, "int64", "int32"));
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("shop.xml"))), ElementsAre("3:41-3:46 1 field.size"));
}

TEST_F(DiagnosticsTest, TakeEditsOfPieces) {
  client_.Initialize();
  client_.Open(Uri("shop.xml"), Replaced(kShop, "shop", "\xF0\x9F\x9A\x97"));
  client_.Diagnostics(Uri("shop.xml"));
  const auto range = [](int line, int begin, int end) {
    return Json{{"start", {{"line", line}, {"character", begin}}}, {"end", {{"line", line}, {"character", end}}}};
  };
  client_.Notify(
      "textDocument/didChange",
      {{"textDocument", {{"uri", Uri("shop.xml")}, {"version", 2}}},
       {"contentChanges", {{{"range", range(0, 15, 17)}, {"text", "shop"}}, {{"range", range(3, 30, 35)}, {"text", "int32"}}}}});
  const Json params = client_.Notification("textDocument/publishDiagnostics");
  EXPECT_EQ(params["version"], 2);
  EXPECT_THAT(Summaries(params["diagnostics"]), ElementsAre(kSmallPrice));
}

TEST_F(DiagnosticsTest, AreClearedWhenTheDocumentIsClosed) {
  client_.Initialize();
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("shop.xml"))), ElementsAre(kSmallPrice));
  client_.Close(Uri("shop.xml"));
  EXPECT_EQ(client_.DiagnosticsAt(Uri("shop.xml")), Json::array());
}

TEST_F(DiagnosticsTest, AreNotSentAfterShutdown) {
  client_.Initialize();
  const Json document = {{"uri", Uri("shop.xml")}, {"languageId", "xml"}, {"version", 1}, {"text", SmallPrice()}};
  const Json open = {{"jsonrpc", "2.0"}, {"method", "textDocument/didOpen"}, {"params", {{"textDocument", document}}}};
  const Json shutdown = {{"jsonrpc", "2.0"}, {"id", 100}, {"method", "shutdown"}};
  client_.SendBytes(korvel::lsp::Framed(open.dump()) + korvel::lsp::Framed(shutdown.dump()));  // arrive together
  EXPECT_EQ(client_.AnswerTo(100)["result"], nullptr);
  client_.Notify("exit", nullptr);
  EXPECT_EQ(client_.End(), true);
  EXPECT_FALSE(client_.HasReceivedAtEnd("textDocument/publishDiagnostics"));
}

// Regression: a request between the change and the check hid that the other file had a diagnostic.
TEST_F(DiagnosticsTest, AreClearedInTheProjectFile) {
  Write("korvelcheck.toml", std::string(kProject) + kExpired);
  client_.Initialize();
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Summaries(client_.DiagnosticsAt(Uri("korvelcheck.toml"))), ElementsAre(testing::EndsWith(" 1 waiver.expired")));
  Write("korvelcheck.toml", kProject);
  client_.Change(Uri("shop.xml"), kShop);
  client_.Result("textDocument/codeLens", {{"textDocument", {{"uri", Uri("shop.xml")}}}});
  EXPECT_EQ(client_.DiagnosticsAt(Uri("korvelcheck.toml")), Json::array());
}

TEST_F(DiagnosticsTest, ShowWaivedFindingsAsInformation) {
  Write("korvelcheck.toml", std::string(kProject) +
                                "[[waivers]]\nrule = \"field.size\"\ntable = \"items\"\nentry = \"price\"\n"
                                "reason = \"no records yet\"\nuntil = \"2999-01-31\"\n");
  client_.Initialize();
  client_.Open(Uri("shop.xml"), SmallPrice());
  const Json diagnostics = client_.Diagnostics(Uri("shop.xml"));
  ASSERT_THAT(Summaries(diagnostics), ElementsAre("3:30-3:35 3 field.size"));
  EXPECT_THAT(diagnostics[0]["message"], HasSubstr("until 2999-01-31: no records yet"));
}

TEST_F(DiagnosticsTest, FollowTheProjectFileThatIsBeingEdited) {
  client_.Initialize();
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("shop.xml"))), ElementsAre(kSmallPrice));
  client_.Open(Uri("korvelcheck.toml"), kProject);
  EXPECT_EQ(client_.Diagnostics(Uri("korvelcheck.toml")), Json::array());
  // An error does not change how schemas are checked.
  client_.Change(Uri("korvelcheck.toml"), "[schemas]\npath = [\"*.xml\"]\n");
  const Json diagnostics = client_.Diagnostics(Uri("korvelcheck.toml"));
  ASSERT_THAT(Summaries(diagnostics), ElementsAre("1:0-1:4 1 project.invalid"));
  EXPECT_THAT(diagnostics[0]["message"], HasSubstr("did you mean 'paths'?"));
  client_.Change(Uri("korvelcheck.toml"), Replaced(kProject, "*.xml", "other/*.xml") + "exclude = [\"shop.xml\"]\n");
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("shop.xml"))), ElementsAre("0:0-0:0 3 project.excluded"));
}

TEST_F(DiagnosticsTest, FollowTheBaseline) {
  client_.Initialize();
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("shop.xml"))), ElementsAre(kSmallPrice));
  Write("shop.xml", SmallPrice());
  Commit("Reduce the price");
  client_.Notify("textDocument/didSave", {{"textDocument", {{"uri", Uri("shop.xml")}}}});
  EXPECT_EQ(client_.Diagnostics(Uri("shop.xml")), Json::array());
}

TEST_F(DiagnosticsTest, SayThatTheBaselineIsUnknown) {
  Write("korvelcheck.toml", Replaced(kProject, "git:HEAD", "git:nowhere"));
  client_.Initialize();
  client_.Open(Uri("shop.xml"), kShop);
  const Json diagnostics = client_.Diagnostics(Uri("shop.xml"));
  ASSERT_THAT(Summaries(diagnostics), ElementsAre("0:0-0:0 1 check.failed"));
  EXPECT_THAT(diagnostics[0]["message"], HasSubstr("git:nowhere"));
}

TEST_F(DiagnosticsTest, CheckANewFileByItself) {
  client_.Initialize();
  client_.Open(Uri("new.xml"), kShop);
  EXPECT_EQ(client_.Diagnostics(Uri("new.xml")), Json::array());
  client_.Change(Uri("new.xml"), Replaced(kShop, "sku\"/", "nothing\"/"));
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("new.xml"))), ElementsAre("4:25-4:32 1 schema.invalid"));
}

TEST_F(DiagnosticsTest, StayWhenTheRootElementIsMisspelled) {
  Write("korvelcheck.toml", "[schemas]\nagainst = [\"git:HEAD\"]\n");
  client_.Initialize();
  client_.Open(Uri("shop.xml"), Replaced(kShop, "<metalib", "<metalb"));  // a schema, for the baseline has it as one
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("shop.xml"))),
              ElementsAre("0:0-0:7 1 schema.invalid", "6:2-6:9 1 schema.syntax"));
  client_.Open(Uri("new.xml"), kShop);
  client_.Diagnostics(Uri("new.xml"));
  client_.Change(Uri("new.xml"), "");  // a schema, for it was one
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("new.xml"))), ElementsAre("0:0-0:0 1 schema.syntax"));
}

TEST_F(DiagnosticsTest, CompareAFileThatNoPatternSelects) {
  std::filesystem::create_directory(PathOf("other"));
  Write("other/shop.xml", kShop);
  Commit("Add another shop");
  client_.Initialize();
  client_.Open(Uri("other/shop.xml"), SmallPrice());
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("other/shop.xml"))), ElementsAre(kSmallPrice));
}

TEST_F(DiagnosticsTest, SayThatAFileIsExcluded) {
  Write("korvelcheck.toml", std::string(kProject) + "exclude = [\"shop.xml\"]\n");
  client_.Initialize();
  client_.Open(Uri("shop.xml"), SmallPrice());
  const Json diagnostics = client_.Diagnostics(Uri("shop.xml"));
  ASSERT_THAT(Summaries(diagnostics), ElementsAre("0:0-0:0 3 project.excluded"));
  EXPECT_EQ(diagnostics[0]["message"], "not checked: korvelcheck.toml:4:12 excludes this file");
}

TEST_F(DiagnosticsTest, AreLimited) {
  const auto schema = [](const std::string& type) {
    std::string entries;
    for (int i = 0; i < 150; ++i) entries += "<entry name=\"e" + std::to_string(i) + "\" type=\"" + type + "\"/>\n";
    return Replaced(kShop, "    <entry name=\"price\" type=\"int64\"/>\n", entries);
  };
  Write("shop.xml", schema("int64"));
  Commit("Add entries");
  client_.Initialize();
  client_.Open(Uri("shop.xml"), schema("int32"));
  const std::vector<std::string> summaries = Summaries(client_.Diagnostics(Uri("shop.xml")));
  ASSERT_EQ(summaries.size(), 101U);
  EXPECT_THAT(summaries.back(), testing::EndsWith(" 1 report.limit"));
}

TEST_F(DiagnosticsTest, LeaveOtherFilesAlone) {
  client_.Initialize();
  Write("korvelcheck.toml", "[schemas]\nagainst = [\"git:HEAD\"]\n");
  client_.Open(Uri("pom.xml"), "<project><!-- no schema --></project>\n");
  EXPECT_EQ(client_.Diagnostics(Uri("pom.xml")), Json::array());
  client_.Open("untitled:1", SmallPrice());
  EXPECT_EQ(client_.Diagnostics("untitled:1"), Json::array());
}

TEST_F(DiagnosticsTest, NeedNoProject) {
  Git({"rm", "-q", "korvelcheck.toml"});
  client_.Initialize();
  client_.Open(Uri("shop.xml"), Replaced(kShop, "uint32", "unit32"));
  EXPECT_THAT(Summaries(client_.Diagnostics(Uri("shop.xml"))), ElementsAre("2:28-2:34 1 schema.invalid"));
  client_.Change(Uri("shop.xml"), SmallPrice());
  EXPECT_EQ(client_.Diagnostics(Uri("shop.xml")), Json::array());
}

}  // namespace
}  // namespace lsp_test
