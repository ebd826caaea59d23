#include "client.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

#include "project/baseline.h"

namespace lsp_test {
namespace {

korvel::lsp::Options OfProject() {
  return {.baselines = [](const korvel::Project* project) {
    return project == nullptr ? std::vector<std::string>() : korvel::BaselinesOf(*project);
  }};
}

// Only a server that does not answer takes so long.
constexpr std::chrono::milliseconds kPatience{120'000};

}  // namespace

Client::Client() : Client(OfProject()) {}

Client::Client(korvel::lsp::Options options) : options_(std::move(options)) {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) != 0) throw std::runtime_error("socketpair");
  server_end_.Reset(ends[0]);
  client_end_.Reset(ends[1]);
  connection_ = std::make_unique<korvel::lsp::Connection>(client_end_.get(), client_end_.get());
  server_ = std::thread([this] {
    try {
      outcome_ = korvel::lsp::Serve(server_end_.get(), server_end_.get(), options_);
    } catch (const korvel::lsp::FrameError&) {
      outcome_.reset();
    }
    server_end_.Reset();
  });
}

Client::~Client() {
  if (!server_.joinable()) return;
  EXPECT_EQ(Result("shutdown", nullptr), nullptr);
  Notify("exit", nullptr);
  EXPECT_EQ(End(), true);
}

std::optional<bool> Client::End() {
  ::shutdown(client_end_.get(), SHUT_WR);
  server_.join();
  return outcome_;
}

Json Client::Initialize(const Json& capabilities) {
  const Json result = Result("initialize", {{"processId", nullptr}, {"rootUri", nullptr}, {"capabilities", capabilities}});
  Notify("initialized", Json::object());
  return result.at("capabilities");
}

void Client::Send(const Json& message) { connection_->Write(message.dump()); }

void Client::SendBytes(const std::string& bytes) { ASSERT_EQ(korvel::WriteAll(client_end_.get(), bytes), 0); }

void Client::Notify(const std::string& method, const Json& params) {
  Send({{"jsonrpc", "2.0"}, {"method", method}, {"params", params}});
}

int Client::Ask(const std::string& method, const Json& params) {
  Send({{"jsonrpc", "2.0"}, {"id", ++last_id_}, {"method", method}, {"params", params}});
  return last_id_;
}

Json Client::AnswerTo(const Json& id) {
  return Next([&](const Json& message) { return !message.contains("method") && message.at("id") == id; });
}

Json Client::Result(const std::string& method, const Json& params) {
  const Json answer = AnswerTo(Ask(method, params));
  EXPECT_TRUE(answer.contains("result")) << answer;
  return answer.value("result", Json());
}

Json Client::Error(const std::string& method, const Json& params) {
  const Json answer = AnswerTo(Ask(method, params));
  EXPECT_TRUE(answer.contains("error")) << answer;
  return answer.value("error", Json());
}

Json Client::Message(const std::string& method) {
  return Next([&](const Json& message) { return message.value("method", "") == method; });
}

Json Client::Notification(const std::string& method) { return Message(method).at("params"); }

bool Client::HasReceived(const std::string& method) const {
  return std::ranges::any_of(received_, [&](const Json& message) { return message.value("method", "") == method; });
}

bool Client::HasReceivedAtEnd(const std::string& method) {
  connection_->Wait(kPatience);
  while (const std::optional<std::string> message = connection_->Next()) received_.push_back(Json::parse(*message));
  return HasReceived(method);
}

void Client::Open(const std::string& uri, const std::string& text) {
  versions_[uri] = 1;
  Notify("textDocument/didOpen", {{"textDocument", {{"uri", uri}, {"languageId", "xml"}, {"version", 1}, {"text", text}}}});
}

void Client::Change(const std::string& uri, const std::string& text) {
  Notify("textDocument/didChange",
         {{"textDocument", {{"uri", uri}, {"version", ++versions_[uri]}}}, {"contentChanges", {{{"text", text}}}}});
}

void Client::Close(const std::string& uri) {
  versions_.erase(uri);
  Notify("textDocument/didClose", {{"textDocument", {{"uri", uri}}}});
}

Json Client::Diagnostics(const std::string& uri) {
  return Next([&](const Json& message) {
    return message.value("method", "") == "textDocument/publishDiagnostics" && message["params"]["uri"] == uri &&
           message["params"].value("version", 0) == versions_[uri];
  })["params"]["diagnostics"];
}

Json Client::DiagnosticsAt(const std::string& uri) {
  return Next([&](const Json& message) {
    return message.value("method", "") == "textDocument/publishDiagnostics" && message["params"]["uri"] == uri;
  })["params"]["diagnostics"];
}

Json Client::Next(const std::function<bool(const Json& message)>& is_wanted) {
  for (;;) {
    const auto found = std::ranges::find_if(received_, is_wanted);
    if (found != received_.end()) {
      Json message = std::move(*found);
      received_.erase(found);
      return message;
    }
    connection_->Wait(kPatience);
    const std::optional<std::string> message = connection_->Next();
    if (!message) {
      ADD_FAILURE() << "the server does not answer";
      return {{"params", Json::object()}};
    }
    received_.push_back(Json::parse(*message));
  }
}

}  // namespace lsp_test
