// A client of the server, which runs on a thread of the test.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <thread>

#include "base/file_descriptor.h"
#include "lsp/frames.h"
#include "lsp/serve.h"

namespace lsp_test {

using Json = nlohmann::json;

class Client {
 public:
  // The server uses the baselines that the project file names.
  Client();
  explicit Client(korvel::lsp::Options options);
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  // Ends the server, which must end as announced.
  ~Client();

  // Starts the session. Returns the capabilities of the server.
  Json Initialize(const Json& capabilities = Json::object());

  void Send(const Json& message);
  void SendBytes(const std::string& bytes);
  void Notify(const std::string& method, const Json& params);
  // Sends a request. Returns its number.
  int Ask(const std::string& method, const Json& params);
  // The message with the answer.
  Json AnswerTo(const Json& id);
  // The result of a request, which must succeed; the error of one that must fail.
  Json Result(const std::string& method, const Json& params);
  Json Error(const std::string& method, const Json& params);
  // The next notification or request of that method; its parameters.
  Json Message(const std::string& method);
  Json Notification(const std::string& method);

  // Whether it arrived before the last answer.
  bool HasReceived(const std::string& method) const;
  // The same after End.
  bool HasReceivedAtEnd(const std::string& method);

  void Open(const std::string& uri, const std::string& text);
  // Replaces the whole text.
  void Change(const std::string& uri, const std::string& text);
  void Close(const std::string& uri);
  // The next diagnostics of a document as it is now.
  Json Diagnostics(const std::string& uri);
  // The same of any address.
  Json DiagnosticsAt(const std::string& uri);

  // Closes the connection. Whether the server says that it was announced; nullopt if it refused the stream.
  std::optional<bool> End();

 private:
  // The first message with the property, which has arrived or will. The test fails if none does.
  Json Next(const std::function<bool(const Json& message)>& is_wanted);

  korvel::lsp::Options options_;
  korvel::FileDescriptor server_end_;
  korvel::FileDescriptor client_end_;
  std::unique_ptr<korvel::lsp::Connection> connection_;
  std::optional<bool> outcome_ = std::nullopt;
  std::thread server_;
  std::deque<Json> received_;
  std::map<std::string, std::int64_t> versions_;  // of open documents
  int last_id_ = 0;
};

}  // namespace lsp_test
