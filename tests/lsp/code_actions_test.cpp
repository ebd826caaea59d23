// Quick fixes. Each is applied and its result checked by the program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "lsp/text.h"
#include "server_fixture.h"

namespace lsp_test {
namespace {

using korvel::lsp::Text;
using testing::ElementsAre;
using testing::HasSubstr;

class CodeActionsTest : public ServerTest {
 protected:
  CodeActionsTest() {
    client_.Initialize({{"textDocument", {{"codeAction", {{"resolveSupport", {{"properties", {"edit"}}}}}}}}});
  }

  // The actions for the price.
  Json Actions(const Json& only = nullptr) { return Actions(client_, only); }
  Json Actions(Client& client, const Json& only) {
    const Json position = {{"line", 3}, {"character", 32}};
    Json context = {{"diagnostics", Json::array()}};
    if (only != nullptr) context["only"] = only;
    return client.Result("textDocument/codeAction", {{"textDocument", {{"uri", Uri("shop.xml")}}},
                                                     {"range", {{"start", position}, {"end", position}}},
                                                     {"context", context}});
  }

  // The quick fixes after the project file on the disk has changed.
  Json ActionsWith(const std::string& project) {
    Write("korvelcheck.toml", project);
    CheckAgain();
    return Actions({"quickfix"});
  }
  // Afterwards, no check is due while a test writes files.
  void CheckAgain() {
    client_.Change(Uri("shop.xml"), SmallPrice());
    client_.Diagnostics(Uri("shop.xml"));
  }

  // The text after the edits of an action.
  std::string Applied(const Json& action, const std::string& file, const std::string& before) const {
    const Text text(before);
    std::vector<std::pair<qmx::Span, std::string>> edits;
    for (const Json& one : action["edit"]["changes"][Uri(file)]) {
      edits.emplace_back(korvel::lsp::SpanOf(text, one["range"]), one["newText"]);
    }
    std::ranges::sort(edits, std::greater(), [](const auto& one) { return one.first.begin; });
    std::string after = before;
    for (const auto& [span, replacement] : edits) after.replace(span.begin, span.end - span.begin, replacement);
    return after;
  }

  void ExpectAllowed(const std::string& text) {
    Write("shop.xml", text);
    EXPECT_EQ(Run({"check"}).exit_code, 0) << text;
  }

  Client client_;
};

std::vector<std::string> Titles(const Json& actions) {
  std::vector<std::string> titles;
  for (const Json& one : actions) titles.push_back(one["title"]);
  return titles;
}

TEST_F(CodeActionsTest, ApplyTheSuggestion) {
  client_.Open(Uri("shop.xml"), SmallPrice());
  const Json actions = Actions({"quickfix"});
  ASSERT_THAT(
      Titles(actions),
      ElementsAre("Fix: keep price as it is; add a new field price_2 (int32, version 2) for the new values", HasSubstr("Waive")));
  EXPECT_EQ(actions[0]["isPreferred"], true);
  const std::string fixed = Applied(actions[0], "shop.xml", SmallPrice());
  EXPECT_THAT(fixed, HasSubstr("name=\"price_2\" type=\"int32\" version=\"2\""));
  ExpectAllowed(fixed);
  client_.Change(Uri("shop.xml"), fixed);
  EXPECT_EQ(client_.Diagnostics(Uri("shop.xml")), Json::array());
}

TEST_F(CodeActionsTest, AddAWaiver) {
  Write("korvelcheck.toml", "[schemas]\r\npaths = [\"*.xml\"]\r\nagainst = [\"git:HEAD\"]\r\n");
  client_.Open(Uri("shop.xml"), SmallPrice());
  const Json action = Actions({"quickfix"})[1];
  EXPECT_THAT(action["title"], testing::MatchesRegex("Waive until ....-..-.. \\(give the reason in korvelcheck.toml\\)"));
  const std::string project = Applied(action, "korvelcheck.toml", Read("korvelcheck.toml"));
  EXPECT_THAT(project, HasSubstr("\r\n\r\n[[waivers]]\r\nrule = \"field.size\"\r\n"));
  client_.Open(Uri("korvelcheck.toml"), project);
  EXPECT_EQ(Actions({"quickfix"}).size(), 0U);  // the finding is waived now
  Write("korvelcheck.toml", project);
  ExpectAllowed(SmallPrice());
}

// Regression: the second waiver made the project file malformed.
TEST_F(CodeActionsTest, ExtendAWaiver) {
  client_.Open(Uri("shop.xml"), SmallPrice());
  CheckAgain();
  const std::string waived = Applied(Actions({"quickfix"})[1], "korvelcheck.toml", kProject);
  const std::string day = waived.substr(waived.find("until = ") + 9, 10);
  const std::string reason = "TODO: why this change is acceptable";
  // The same text in front of it, and a waiver of something else behind it.
  const std::string expired =
      Replaced(Replaced(waived, day, "2020-01-31"), reason, "2020-01-31") + "\n" + Replaced(kExpired, "price", "sku");
  const Json actions = ActionsWith(expired);
  ASSERT_THAT(Titles(actions), ElementsAre(HasSubstr("Fix"), "Extend the waiver until " + day));
  EXPECT_EQ(Applied(actions[1], "korvelcheck.toml", expired), Replaced(expired, "until = \"2020-01-31", "until = \"" + day));
  // A day that is written in another way is left to the author, and so is a malformed waiver.
  EXPECT_THAT(Titles(ActionsWith(Replaced(expired, "until = \"2020-01-31", "until = \"2020-01-3\\u0031"))),
              ElementsAre(HasSubstr("Fix")));
  EXPECT_THAT(Titles(ActionsWith(Replaced(expired, "reason = \"2020-01-31", "reason = \""))), ElementsAre(HasSubstr("Fix")));
}

TEST_F(CodeActionsTest, AddAWaiverOnlyToAReadableProjectFile) {
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_EQ(Actions({"quickfix"}).size(), 2U);
  client_.Open(Uri("korvelcheck.toml"), kProject);
  client_.Change(Uri("korvelcheck.toml"), "[schemas\n");
  EXPECT_THAT(Titles(Actions({"quickfix"})), ElementsAre(HasSubstr("Fix")));
  client_.Close(Uri("korvelcheck.toml"));
  CheckAgain();
  EXPECT_EQ(Actions({"quickfix"}).size(), 2U);
  std::filesystem::rename(PathOf("korvelcheck.toml"), PathOf("elsewhere.toml"));
  std::filesystem::create_symlink("elsewhere.toml", PathOf("korvelcheck.toml"));
  EXPECT_THAT(Titles(Actions({"quickfix"})), ElementsAre(HasSubstr("Fix")));
}

// --- Several baselines ---

class TwoBaselinesTest : public CodeActionsTest {
 protected:
  // Commits a second state of the shop, the newer baseline.
  void CommitNewer(const std::string& text) {
    Git({"tag", "old"});
    Write("korvelcheck.toml", Replaced(kProject, "\"git:HEAD\"", "\"git:old\", \"git:HEAD\""));
    Write("shop.xml", text);
    Commit("Change the shop");
  }
};

TEST_F(TwoBaselinesTest, OfferOneFix) {
  CommitNewer(Replaced(kShop, "shop\" version=\"1\"", "shop\" version=\"2\""));
  const std::string text = Replaced(Read("shop.xml"), "int64", "int32");
  client_.Open(Uri("shop.xml"), text);
  const Json diagnostics = client_.Diagnostics(Uri("shop.xml"));
  EXPECT_EQ(diagnostics.size(), 2U);
  const Json actions = client_.Result("textDocument/codeAction", {{"textDocument", {{"uri", Uri("shop.xml")}}},
                                                                  {"range", diagnostics[0]["range"]},
                                                                  {"context", {{"diagnostics", diagnostics}}}});
  ASSERT_THAT(Titles(actions), ElementsAre(HasSubstr("Fix: "), HasSubstr("Waive"), HasSubstr("Fix all")));
  EXPECT_EQ(actions[0]["diagnostics"], diagnostics);
  EXPECT_EQ(actions[1]["diagnostics"], diagnostics);
  ExpectAllowed(Applied(actions[0], "shop.xml", text));
}

// The older baseline wants version 2, which the newer one has already.
TEST_F(TwoBaselinesTest, OfferAFixThatBothAccept) {
  CommitNewer(Replaced(Replaced(kShop, "shop\" version=\"1\"", "shop\" version=\"2\""), "    <primarykey",
                       "    <entry name=\"stock\" type=\"uint16\" version=\"2\"/>\n    <primarykey"));
  const std::string text = Replaced(Read("shop.xml"), "int64", "int32");
  client_.Open(Uri("shop.xml"), text);
  const Json actions = Actions({"quickfix"});
  ASSERT_THAT(Titles(actions), ElementsAre(HasSubstr("Fix: "), HasSubstr("Waive")));
  const std::string fixed = Applied(actions[0], "shop.xml", text);
  EXPECT_THAT(fixed, HasSubstr("name=\"price_2\" type=\"int32\" version=\"3\""));
  ExpectAllowed(fixed);
}

// --- Selection and the whole file ---

TEST_F(CodeActionsTest, TheEmptyKindContainsAllKinds) {
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_EQ(Actions({""}), Actions());
  EXPECT_EQ(Actions().size(), 3U);
  EXPECT_EQ(Actions({"refactor"}), Json::array());
}

TEST_F(CodeActionsTest, FixTheWholeFileAtOnceForClientsThatDoNotResolve) {
  Client client;
  client.Initialize();
  client.Open(Uri("shop.xml"), SmallPrice());
  const Json actions = Actions(client, {"source.fixAll"});
  ASSERT_THAT(Titles(actions), ElementsAre("Fix all refused changes of this file"));
  ExpectAllowed(Applied(actions[0], "shop.xml", SmallPrice()));
}

TEST_F(CodeActionsTest, FixTheWholeFile) {
  const std::string text = Replaced(SmallPrice(), "\"uint32\"", "\"uint16\"");
  client_.Open(Uri("shop.xml"), text);
  const Json actions = Actions({"source.fixAll"});
  ASSERT_THAT(Titles(actions), ElementsAre("Fix all refused changes of this file"));
  const Json resolved = client_.Result("codeAction/resolve", actions[0]);
  const std::string fixed = Applied(resolved, "shop.xml", text);
  EXPECT_THAT(fixed, HasSubstr("name=\"sku\" type=\"uint32\""));
  Write("shop.xml", text);
  Run({"suggest", "--write"});
  EXPECT_EQ(fixed, Read("shop.xml"));
  ExpectAllowed(fixed);
}

// The server ended if the project could not be loaded any more.
TEST_F(CodeActionsTest, CannotFixAFileThatIsNotComparedAnyMore) {
  client_.Open(Uri("shop.xml"), SmallPrice());
  const Json action = Actions({"source.fixAll"})[0];
  Write("korvelcheck.toml", "[schemas");
  client_.Notify("textDocument/didSave", {{"textDocument", {{"uri", Uri("shop.xml")}}}});
  EXPECT_EQ(client_.Error("codeAction/resolve", action)["message"], "this file is not compared with a baseline any more");
}

TEST_F(CodeActionsTest, FitTheTextOfClientsWithoutVersions) {
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_EQ(Actions({"quickfix"}).size(), 2U);
  const std::string text = "<!-- a line -->" + SmallPrice();
  client_.Notify("textDocument/didChange",
                 {{"textDocument", {{"uri", Uri("shop.xml")}, {"version", nullptr}}}, {"contentChanges", {{{"text", text}}}}});
  ExpectAllowed(Applied(Actions({"quickfix"})[0], "shop.xml", text));
}

TEST_F(CodeActionsTest, BelongToTheirDiagnostics) {
  client_.Open(Uri("shop.xml"), SmallPrice());
  const Json diagnostics = client_.Diagnostics(Uri("shop.xml"));
  const Json actions = client_.Result("textDocument/codeAction", {{"textDocument", {{"uri", Uri("shop.xml")}}},
                                                                  {"range", diagnostics[0]["range"]},
                                                                  {"context", {{"diagnostics", diagnostics}}}});
  EXPECT_EQ(actions[0]["diagnostics"], diagnostics);
}

TEST_F(CodeActionsTest, AreOfferedOnlyWhereSomethingIsRefused) {
  client_.Open(Uri("shop.xml"), kShop);
  EXPECT_EQ(Actions(), Json::array());
  client_.Open(Uri("korvelcheck.toml"), kProject);
  EXPECT_EQ(client_.Result("textDocument/codeAction",
                           {{"textDocument", {{"uri", Uri("korvelcheck.toml")}}},
                            {"range", {{"start", {{"line", 0}, {"character", 0}}}, {"end", {{"line", 0}, {"character", 0}}}}},
                            {"context", {{"diagnostics", Json::array()}}}}),
            Json::array());
}

}  // namespace
}  // namespace lsp_test
