// The protocol: begin and end of a session, and what is no valid message.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>

#include "lsp/json.h"
#include "server_fixture.h"

namespace lsp_test {
namespace {

using korvel::lsp::ErrorCode;

TEST(ProtocolTest, RefusesRequestsBeforeTheSessionBegins) {
  Client client;
  EXPECT_EQ(client.Error("textDocument/hover", Json::object())["code"], ErrorCode::kNotInitialized);
  client.Initialize();
  EXPECT_EQ(client.Error("initialize", Json::object())["code"], ErrorCode::kInvalidRequest);
}

TEST(ProtocolTest, RefusesRequestsAfterTheSessionEnded) {
  Client client;
  client.Initialize();
  client.Result("shutdown", nullptr);
  EXPECT_EQ(client.Error("textDocument/codeAction", Json::object())["code"], ErrorCode::kInvalidRequest);
  client.Notify("exit", nullptr);
  EXPECT_EQ(client.End(), true);
}

TEST(ProtocolTest, NoticesAnEndThatWasNotAnnounced) {
  Client client;
  client.Initialize();
  EXPECT_EQ(client.End(), false);
}

TEST(ProtocolTest, EndsWithAStreamThatHasNoMessages) {
  Client client;
  client.SendBytes("GET / HTTP/1.1\r\n\r\n");
  EXPECT_EQ(client.End(), std::nullopt);
}

TEST(ProtocolTest, AnswersMessagesOfAWrongForm) {
  Client client;
  client.Initialize();
  EXPECT_EQ(client.Error("no/method", Json::object())["code"], ErrorCode::kMethodNotFound);
  EXPECT_EQ(client.Error("textDocument/codeAction", Json::object())["code"], ErrorCode::kInvalidParams);
  EXPECT_EQ(client.Error("textDocument/codeAction", 7)["code"], ErrorCode::kInvalidParams);
  // Without a number, the answer has none.
  for (const auto& [message, code] : {std::pair{"{", ErrorCode::kParseError},
                                      {"\xFF", ErrorCode::kParseError},
                                      {"[]", ErrorCode::kInvalidRequest},
                                      {"{}", ErrorCode::kInvalidRequest}}) {
    client.SendBytes(korvel::lsp::Framed(message));
    EXPECT_EQ(client.AnswerTo(nullptr)["error"]["code"], code) << message;
  }
}

TEST(ProtocolTest, LimitsTheNestingOfMessages) {
  Client client;
  client.Initialize();
  const auto nested = [](std::size_t levels) {
    return R"({"id":7,"method":"a","params":)" + std::string(levels, '[') + std::string(levels, ']') + "}";
  };
  client.SendBytes(korvel::lsp::Framed(nested(99)));
  EXPECT_EQ(client.AnswerTo(7)["error"]["code"], ErrorCode::kMethodNotFound);
  client.SendBytes(korvel::lsp::Framed(nested(1'000'000)));
  EXPECT_EQ(client.AnswerTo(nullptr)["error"]["code"], ErrorCode::kParseError);
  // Brackets in texts are none.
  client.SendBytes(korvel::lsp::Framed(R"({"id":8,"method":"\"[[","params":[]})"));
  EXPECT_EQ(client.AnswerTo(8)["error"]["code"], ErrorCode::kMethodNotFound);
}

// Those whose parameters are a list ended the server.
TEST(ProtocolTest, IgnoresCancellationsOfAWrongForm) {
  Client client;
  client.Initialize();
  for (const Json& params : {Json(), Json(1), Json({1}), Json::object()}) client.Notify("$/cancelRequest", params);
  EXPECT_EQ(client.Error("$/cancelRequest", Json::object())["code"], ErrorCode::kMethodNotFound);
}

// An editor may split a character of two code units.
TEST(ProtocolTest, TakesHalvesOfCharacters) {
  Client client;
  client.Initialize();
  const auto symbol_of = [&](const std::string& name) {
    client.SendBytes(korvel::lsp::Framed(
        R"({"method":"textDocument/didOpen","params":{"textDocument":{"uri":"untitled:a","languageId":"xml","version":1,"text":"<metalib name=')" +
        name + R"('/>"}}})"));
    const Json symbols = client.Result("textDocument/documentSymbol", {{"textDocument", {{"uri", "untitled:a"}}}});
    return symbols.at(0).at("name").get<std::string>();
  };
  EXPECT_EQ(symbol_of(R"(a\ud83db)"),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(symbol_of(R"(\ude97\ud83d\ude97\ud83d)"), "\xEF\xBF\xBD\xF0\x9F\x9A\x97\xEF\xBF\xBD");
  EXPECT_EQ(symbol_of(R"(\\ud83d)"), R"(\ud83d)");  // no escape of a character
}

TEST(ProtocolTest, RefusesIdsThatAreNone) {
  Client client;
  client.Initialize();
  for (const char* const id : {"true", "1.5", "[]", "{}"}) {
    client.SendBytes(korvel::lsp::Framed(R"({"method":"no/method","id":)" + std::string(id) + "}"));
    EXPECT_EQ(client.AnswerTo(nullptr)["error"]["code"], ErrorCode::kInvalidRequest) << id;
  }
}

TEST(ProtocolTest, RefusesNumbersThatAreNoPositions) {
  Client client;
  client.Initialize();
  client.Open("file:///nowhere.xml", "<metalib/>");
  for (const Json& number : {Json(-1), Json(1e300), Json(0.5), Json("1"), Json()}) {
    const Json params = {{"textDocument", {{"uri", "file:///nowhere.xml"}}}, {"position", {{"line", number}, {"character", 0}}}};
    EXPECT_EQ(client.Error("textDocument/definition", params)["code"], ErrorCode::kInvalidParams) << number;
  }
}

TEST(ProtocolTest, AnswersARequestThatIsCancelledBeforeItRuns) {
  Client client;
  client.Initialize();
  // Both arrive together.
  const Json request = {{"jsonrpc", "2.0"}, {"id", "a"}, {"method", "textDocument/hover"}, {"params", Json::object()}};
  const Json cancel = {{"jsonrpc", "2.0"}, {"method", "$/cancelRequest"}, {"params", {{"id", "a"}}}};
  client.SendBytes(korvel::lsp::Framed(request.dump()) + korvel::lsp::Framed(cancel.dump()));
  EXPECT_EQ(client.AnswerTo("a")["error"]["code"], ErrorCode::kRequestCancelled);
}

}  // namespace
}  // namespace lsp_test
