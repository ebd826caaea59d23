// Documents: their number and size, changes in every order, and the end of the connection at any time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "../tool/process.h"
#include "lsp/documents.h"
#include "lsp/frames.h"
#include "server_fixture.h"

namespace lsp_test {
namespace {

using testing::HasSubstr;
using tool_test::Outcome;
using tool_test::RunProgram;
using tool_test::Stream;

class LimitsTest : public ServerTest {
 protected:
  LimitsTest() { client_.Initialize(); }

  std::size_t CountNow(const std::string& uri) {
    return client_.Result("textDocument/diagnostic", {{"textDocument", {{"uri", uri}}}}).at("items").size();
  }

  std::string NextLog() { return client_.Notification("window/logMessage").at("message"); }

  static Json ChangeOf(const std::string& uri, int version, const std::string& text) {
    return {{"textDocument", {{"uri", uri}, {"version", version}}}, {"contentChanges", {{{"text", text}}}}};
  }

  static std::string Framed(const std::string& method, const Json& params, const Json& more = Json::object()) {
    Json message = {{"jsonrpc", "2.0"}, {"method", method}, {"params", params}};
    message.update(more);
    return korvel::lsp::Framed(message.dump());
  }

  Client client_;
};

TEST_F(LimitsTest, ShowsThatADocumentTooManyIsNotChecked) {
  for (std::size_t i = 0; i < korvel::lsp::kMaxDocuments; ++i) client_.Open("untitled:" + std::to_string(i), "");
  client_.Open(Uri("other.xml"), SmallPrice());
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_EQ(client_.Notification("window/showMessage")["message"],
            "korvelcheck checks at most 1000 open documents; close some, then open this one again");
  const Json diagnostic = client_.DiagnosticsAt(Uri("shop.xml")).at(0);
  EXPECT_EQ(diagnostic["message"], "not checked: too many documents are open; allowed: 1000");
  EXPECT_EQ(diagnostic["severity"], 1);
  EXPECT_EQ(CountNow(Uri("shop.xml")), 1U);  // the same on request
  EXPECT_FALSE(client_.HasReceived("window/showMessage"));
  client_.Close("untitled:0");
  client_.Close(Uri("shop.xml"));
  EXPECT_EQ(client_.DiagnosticsAt(Uri("shop.xml")), Json::array());
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_EQ(CountNow(Uri("shop.xml")), 1U);
}

TEST_F(LimitsTest, ChecksALargeDocument) {
  const std::string comment = "<!-- " + std::string(8'000'000, 'x') + " -->\n";
  client_.Open(Uri("shop.xml"), kShop + comment);
  EXPECT_EQ(CountNow(Uri("shop.xml")), 0U);
  client_.Change(Uri("shop.xml"), SmallPrice() + comment);
  EXPECT_EQ(CountNow(Uri("shop.xml")), 1U);
}

TEST_F(LimitsTest, EndsAtAMessageThatIsTooLong) {
  client_.SendBytes("Content-Length: " + std::to_string(korvel::lsp::kMaxMessage + 1) + "\r\n\r\n");
  EXPECT_EQ(client_.End(), std::nullopt);
}

TEST_F(LimitsTest, TakesTheNewestTextOfADocumentThatIsOpenedTwice) {
  client_.Open(Uri("shop.xml"), kShop);
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_EQ(CountNow(Uri("shop.xml")), 1U);
  client_.Close(Uri("shop.xml"));
  const Json params = {{"textDocument", {{"uri", Uri("shop.xml")}}}};
  EXPECT_THAT(client_.Error("textDocument/diagnostic", params)["message"], HasSubstr("the document is not open"));
}

TEST_F(LimitsTest, ReportsAChangeOfAClosedDocument) {
  client_.Open(Uri("shop.xml"), kShop);
  client_.Close(Uri("shop.xml"));
  client_.Notify("textDocument/didChange", ChangeOf(Uri("shop.xml"), 2, SmallPrice()));
  EXPECT_EQ(NextLog(), "textDocument/didChange: the document is not open");
  client_.Open(Uri("shop.xml"), SmallPrice());
  EXPECT_EQ(CountNow(Uri("shop.xml")), 1U);
}

TEST_F(LimitsTest, ChecksTheTextOfTheLastMessageWhateverItsVersion) {
  client_.Open(Uri("shop.xml"), kShop);
  client_.Notify("textDocument/didChange", ChangeOf(Uri("shop.xml"), 9, kShop));
  EXPECT_EQ(CountNow(Uri("shop.xml")), 0U);
  client_.Notify("textDocument/didChange", ChangeOf(Uri("shop.xml"), 3, SmallPrice()));
  EXPECT_EQ(CountNow(Uri("shop.xml")), 1U);
}

// All messages are written at once, and so small that the server receives them together.
TEST_F(LimitsTest, ChecksOnlyTheNewestOfManyChanges) {
  const Json document = {{"uri", Uri("shop.xml")}, {"languageId", "xml"}, {"version", 1}, {"text", SmallPrice()}};
  const Json range = {{"start", {{"line", 0}, {"character", 0}}}, {"end", {{"line", 0}, {"character", 0}}}};
  std::string messages = Framed("textDocument/didOpen", {{"textDocument", document}});
  for (int i = 2; i <= 201; ++i) {
    messages += Framed("textDocument/didChange", {{"textDocument", {{"uri", Uri("shop.xml")}, {"version", i}}},
                                                  {"contentChanges", {{{"range", range}, {"text", "\n"}}}}});
  }
  ASSERT_LT(messages.size(), 64'000U);
  client_.SendBytes(messages);
  const Json params = client_.Notification("textDocument/publishDiagnostics");
  EXPECT_EQ(params["version"], 201);
  ASSERT_EQ(params["diagnostics"].size(), 1U);
  EXPECT_EQ(params["diagnostics"][0]["range"]["start"]["line"], 203);
}

TEST_F(LimitsTest, EndsWhileACheckIsDue) {
  client_.Open(Uri("shop.xml"), kShop);
  client_.Change(Uri("shop.xml"), SmallPrice());
  client_.SendBytes(Framed("shutdown", nullptr, {{"id", "end"}}) + Framed("exit", nullptr));
  EXPECT_EQ(client_.AnswerTo("end")["result"], nullptr);
  EXPECT_EQ(client_.End(), true);
}

// --- The program ---

class LspStreamsTest : public LimitsTest {
 protected:
  static std::string Request() { return Framed("initialize", {{"capabilities", Json::object()}}, {{"id", 1}}); }
};

TEST_F(LspStreamsTest, EndsWhenNobodyReads) {
  const Outcome outcome = RunProgram({.arguments = {"lsp"}, .input = Request(), .output = Stream::kReaderGone});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_EQ(outcome.err, "korvelcheck: cannot write a message: Broken pipe\n");
}

TEST_F(LspStreamsTest, EndsWithoutInput) {
  const Outcome outcome = RunProgram({.arguments = {"lsp"}, .input_closed = true});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_EQ(outcome.err, "korvelcheck: cannot read messages: Bad file descriptor\n");
}

TEST_F(LspStreamsTest, EndsWithoutOutput) {
  const Outcome closed = RunProgram({.arguments = {"lsp"}, .input = Request(), .output = Stream::kClosed});
  EXPECT_EQ(closed.exit_code, 3);
  EXPECT_EQ(closed.err, "korvelcheck: cannot write a message: Bad file descriptor\n");
  const Outcome full = RunProgram({.arguments = {"lsp"}, .input = Request(), .output = Stream::kFull});
  EXPECT_EQ(full.exit_code, 3);
  EXPECT_EQ(full.err, "korvelcheck: cannot write a message: No space left on device\n");
}

TEST_F(LspStreamsTest, TellsHowTheConnectionEnded) {
  const std::string end = Framed("shutdown", nullptr, {{"id", 2}}) + Framed("exit", nullptr);
  EXPECT_EQ(RunProgram({.arguments = {"lsp"}, .input = Request() + end}).exit_code, 0);
  EXPECT_EQ(RunProgram({.arguments = {"lsp"}, .input = Request() + Framed("exit", nullptr)}).exit_code, 1);
  EXPECT_EQ(RunProgram({.arguments = {"lsp"}, .input = Request()}).exit_code, 1);
  const Outcome cut = RunProgram({.arguments = {"lsp"}, .input = Request() + "Content-Length: 9\r\n\r\n{"});
  EXPECT_EQ(cut.exit_code, 2);
  EXPECT_EQ(cut.err, "korvelcheck: lsp: the input ends inside a message\n");
}

}  // namespace
}  // namespace lsp_test
