// Tested by tests/lsp/server_test.cpp and tests/lsp/client.
#include "lsp/server.h"

#include <algorithm>
#include <utility>

#include "base/input_error.h"
#include "base/text.h"
#include "base/uri.h"
#include "lsp/code_lens.h"
#include "lsp/request_failure.h"
#include "lsp/requests.h"
#include "project/project.h"

namespace korvel::lsp {
namespace {

// A capability of the client: "textDocument.diagnostic".
bool Has(const Json& params, const char* pointer) {
  const Json capabilities = params.value("capabilities", Json::object());
  const Json::json_pointer path(pointer);
  return capabilities.contains(path) && capabilities[path] != false && !capabilities[path].is_null();
}

bool ResolvesEdits(const Json& params) {
  const Json::json_pointer path("/capabilities/textDocument/codeAction/resolveSupport/properties");
  const Json properties = params.contains(path) ? params[path] : Json();
  return properties.is_array() && std::ranges::find(properties, "edit") != properties.end();
}

// The id of the request that a message cancels; null if it is no such message.
Json CancelledId(const Json& message) {
  if (message.value("method", Json()) != "$/cancelRequest" || message.contains("id")) return nullptr;
  const Json params = message.value("params", Json());
  return params.is_object() ? params.value("id", Json()) : nullptr;
}

}  // namespace

constexpr Server::Notification Server::kNotifications[] = {
    {"textDocument/didOpen", &Server::Open},
    {"textDocument/didChange", &Server::Change},
    {"textDocument/didSave", &Server::Save},
    {"textDocument/didClose", &Server::Close},
    {"workspace/didChangeWatchedFiles", &Server::ChangeFiles},
};

bool Server::Run() {
  while (!has_exited_) {
    connection_.Wait(UntilNextCheck());
    while (const std::optional<std::string> message = connection_.Next()) Receive(*message);
    if (queue_.empty()) {
      if (connection_.HasEnded()) return false;
      CheckDue();
    } else {
      const Json message = std::move(queue_.front());
      queue_.pop_front();
      Dispatch(message);
    }
  }
  return is_shut_down_;
}

// --- Messages ---

void Server::Receive(const std::string& message) {
  try {
    Json json = ParseMessage(message);
    if (!json.is_object()) throw RequestError(kInvalidRequest, "the message is not an object");
    const Json request = json.value("id", Json());
    if (!(request.is_null() || request.is_number_integer() || request.is_string()))
      throw RequestError(kInvalidRequest, "the id of the message is not a whole number or string");
    const Json id = CancelledId(json);
    if (!id.is_null()) return Cancel(id);
    queue_.push_back(std::move(json));
  } catch (const RequestError& error) {
    SendError(nullptr, error.code, error.what());
  }
}

// A request that waits is answered at once.
void Server::Cancel(const Json& id) {
  const auto waiting = std::ranges::find_if(queue_, [&](const Json& one) { return one.contains("id") && one["id"] == id; });
  if (waiting == queue_.end()) return;
  queue_.erase(waiting);
  SendError(id, kRequestCancelled, "cancelled");
}

void Server::Dispatch(const Json& message) {
  const Json method = message.value("method", Json());
  if (!method.is_string()) {
    // Answers of the client need no action.
    if (!message.contains("result") && !message.contains("error")) {
      SendError(message.value("id", Json()), kInvalidRequest, "the message has no method");
    }
    return;
  }
  const Json params = message.value("params", Json::object());
  if (message.contains("id")) {
    Answer(message["id"], method, params);
  } else {
    Notify(method, params);
  }
}

void Server::Notify(const std::string& method, const Json& params) {
  if (method == "exit") has_exited_ = true;
  const auto* const known = std::ranges::find(kNotifications, method, &Notification::method);
  if (!is_initialized_ || is_shut_down_ || known == std::end(kNotifications)) return;
  if (const auto failure = FailureOf([&] { (this->*known->run)(params); })) Log(method + ": " + failure->text);
}

void Server::Answer(const Json& id, const std::string& method, const Json& params) {
  Json result;
  if (const auto failure = FailureOf([&] { result = ResultOf(method, params); })) {
    SendError(id, failure->code, failure->text);
  } else {
    Send({{"id", id}, {"result", std::move(result)}});
  }
}

Json Server::ResultOf(const std::string& method, const Json& params) {
  if (is_shut_down_) throw RequestError(kInvalidRequest, "the server is shut down");
  if (method == "initialize") return Initialize(params);
  if (!is_initialized_) throw RequestError(kNotInitialized, "the server is not initialized");
  if (method == "shutdown") return Shutdown();
  if (method == "textDocument/diagnostic") return shown_.Pull(params);
  if (method == "workspace/executeCommand") return Execute(params);
  const auto known = std::ranges::find(Requests(), method, &Request::method);
  if (known == Requests().end()) throw RequestError(kMethodNotFound, "unknown method " + Quote(method));
  return known->answer(session_, params);
}

// Texts of the client may contain bytes that are not UTF-8; they become U+FFFD.
void Server::Send(Json message) {
  message["jsonrpc"] = "2.0";
  connection_.Write(message.dump(-1, ' ', false, Json::error_handler_t::replace));
}

// The answer is not needed. Parameters that are null are left out.
void Server::SendRequest(const char* method, Json params) {
  Json request = {{"id", "korvelcheck-" + std::to_string(++requests_)}, {"method", method}};
  if (!params.is_null()) request["params"] = std::move(params);
  Send(std::move(request));
}

void Server::Log(const std::string& text) {
  constexpr int kErrorMessage = 1;
  Send({{"method", "window/logMessage"}, {"params", {{"type", kErrorMessage}, {"message", text}}}});
}

void Server::SendError(const Json& id, ErrorCode code, const std::string& text) {
  Send({{"id", id}, {"error", {{"code", code}, {"message", text}}}});
}

// --- Notifications ---

void Server::Open(const Json& params) {
  const Json& item = params.at("textDocument");
  if (!session_.documents.HasRoomFor(item.at("uri"))) return RefuseDocument(item.at("uri"));
  Document& document = session_.documents.Open(item);
  shown_.Accept(document.uri);
  if (document.IsProjectFile()) {
    document.good_text = document.text.bytes();
    ScheduleAll();
  }
  Schedule(document.uri, Clock::now());
}

// Without diagnostics, it would look allowed.
void Server::RefuseDocument(const std::string& uri) {
  Publish(shown_.Refuse(uri));
  if (std::exchange(has_refused_document_, true)) return;
  const std::string text =
      "korvelcheck checks at most " + std::to_string(kMaxDocuments) + " open documents; close some, then open this one again";
  Send({{"method", "window/showMessage"}, {"params", {{"type", 1}, {"message", text}}}});
}

void Server::Change(const Json& params) {
  Document& document = session_.documents.Change(params);
  if (document.IsProjectFile()) TakeProjectFile(document);
  Schedule(document.uri, Clock::now() + kPause);
}

// Schemas are checked with the last text of a project file that has no error.
void Server::TakeProjectFile(Document& document) {
  try {
    ParseProject(kProjectFileName, document.text.bytes());
  } catch (const InputError&) {
    return;
  }
  document.good_text = document.text.bytes();
  ScheduleAll();
}

void Server::Save(const Json& /*params*/) { ScheduleAll(); }

void Server::ChangeFiles(const Json& /*params*/) { ScheduleAll(); }

void Server::Close(const Json& params) {
  const std::string uri = params.at("textDocument").at("uri");
  const Document* const document = session_.documents.Find(uri);
  const bool is_project_file = document != nullptr && document->IsProjectFile();
  session_.documents.Close(uri);
  session_.Forget(uri);
  due_.erase(uri);
  if (is_project_file) ScheduleAll();
  Publish(shown_.Close(uri));
}

// --- Requests ---

Json Server::Shutdown() {
  is_shut_down_ = true;
  due_.clear();
  return nullptr;
}

Json Server::Initialize(const Json& params) {
  if (is_initialized_) throw RequestError(kInvalidRequest, "the server is initialized already");
  Client& client = session_.client;
  client.pulls_diagnostics = Has(params, "/textDocument/diagnostic");
  client.takes_related_documents = Has(params, "/textDocument/diagnostic/relatedDocumentSupport");
  client.refreshes_diagnostics = client.pulls_diagnostics && Has(params, "/workspace/diagnostics/refreshSupport");
  client.resolves_edits = ResolvesEdits(params);
  client.takes_snippets = Has(params, "/textDocument/completion/completionItem/snippetSupport");
  client.shows_documents = Has(params, "/window/showDocument/support");
  is_initialized_ = true;
  return {{"capabilities", Capabilities(client)}, {"serverInfo", {{"name", "korvelcheck"}, {"version", KORVEL_VERSION}}}};
}

// Opens the report about a document. The result is the address of the page, for clients that have to open it themselves.
Json Server::Execute(const Json& params) {
  const Json& command = params.at("command");
  if (command != kReportCommand) throw RequestError(kInvalidParams, "unknown command; allowed: " + std::string(kReportCommand));
  const Document& document = session_.documents.Of({{"textDocument", {{"uri", params.at("arguments").at(0)}}}});
  const std::string page = session_.PageOf(document);
  const std::string uri = UriOf(pages_.Write(document.path, page));
  if (session_.client.shows_documents) {
    SendRequest("window/showDocument", {{"uri", uri}, {"external", true}});
  } else {
    Send({{"method", "window/showMessage"}, {"params", {{"type", 3}, {"message", "The report is " + uri}}}});
  }
  return uri;
}

// --- Diagnostics ---

std::optional<std::chrono::milliseconds> Server::UntilNextCheck() const {
  using std::chrono::milliseconds;
  if (!queue_.empty()) return milliseconds(0);
  if (due_.empty()) return std::nullopt;
  const auto next = std::ranges::min_element(due_, {}, [](const auto& one) { return one.second; });
  return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(next->second - Clock::now()));
}

void Server::Schedule(const std::string& uri, Clock::time_point when) {
  if (!session_.client.pulls_diagnostics) due_.insert_or_assign(uri, when);
}

void Server::ScheduleAll() {
  session_.ForgetChecks();
  if (session_.client.refreshes_diagnostics) SendRequest("workspace/diagnostic/refresh", nullptr);
  if (session_.client.pulls_diagnostics) return;
  for (const auto& [uri, document] : session_.documents.all()) due_.try_emplace(uri, Clock::now());
}

// One document at a time: between two of them, messages are received.
void Server::CheckDue() {
  const auto due = std::ranges::find_if(due_, [now = Clock::now()](const auto& one) { return one.second <= now; });
  if (due == due_.end()) return;
  const Document* const document = session_.documents.Find(due->first);
  due_.erase(due);
  if (document == nullptr) return;
  std::vector<Json> changes;
  if (const auto failure = FailureOf([&] { changes = shown_.Check(*document); }))
    return Log(document->uri + ": " + failure->text);
  Publish(std::move(changes));
}

void Server::Publish(std::vector<Json> changes) {
  for (Json& params : changes) Send({{"method", "textDocument/publishDiagnostics"}, {"params", std::move(params)}});
}

bool Serve(int input, int output, const Options& options) {
  Connection connection(input, output, options.stop);
  return Server(connection, options).Run();
}

}  // namespace korvel::lsp
