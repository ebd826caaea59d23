// Quick fixes. Each is applied and its result checked by the program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
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
  CodeActionsTest() { client_.Initialize(); }

  // The actions for the price.
  Json Actions(const Json& only = nullptr) {
    const Json position = {{"line", 3}, {"character", 32}};
    Json context = {{"diagnostics", Json::array()}};
    if (only != nullptr) context["only"] = only;
    return client_.Result("textDocument/codeAction", {{"textDocument", {{"uri", Uri("shop.xml")}}},
                                                      {"range", {{"start", position}, {"end", position}}},
                                                      {"context", context}});
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
