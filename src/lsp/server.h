// The language server: receives messages, keeps the documents, sends diagnostics and answers.
//
// One thread. It reads every message that has arrived before it answers the first, so a request that was cancelled is not run,
// and only the newest text of a document is checked.
#pragma once

#include <chrono>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "lsp/frames.h"
#include "lsp/report_pages.h"
#include "lsp/session.h"
#include "lsp/shown_diagnostics.h"

namespace korvel::lsp {

// How long after the last change of a document its diagnostics are sent.
inline constexpr std::chrono::milliseconds kPause{150};

class Server {
 public:
  // Both must outlive the server.
  Server(Connection& connection, const Options& options) : connection_(connection), session_(options) {}

  // Serves until the client ends the connection. Whether it said so before, as it should. Throws FrameError, ConnectionError.
  bool Run();

 private:
  using Clock = std::chrono::steady_clock;

  struct Notification {
    const char* method;
    void (Server::*run)(const Json& params);
  };
  static const Notification kNotifications[];

  // --- Messages ---
  void Receive(const std::string& message);
  void Cancel(const Json& id);
  void Dispatch(const Json& message);
  void Notify(const std::string& method, const Json& params);
  void Answer(const Json& id, const std::string& method, const Json& params);
  Json ResultOf(const std::string& method, const Json& params);
  void Send(Json message);
  void Log(const std::string& text);
  void SendRequest(const char* method, Json params);
  void SendError(const Json& id, ErrorCode code, const std::string& text);

  // --- Notifications ---
  void Open(const Json& params);
  void RefuseDocument(const std::string& uri);
  void Change(const Json& params);
  void Save(const Json& params);
  void Close(const Json& params);
  void ChangeFiles(const Json& params);

  // --- Requests that change the server ---
  Json Initialize(const Json& params);
  Json Shutdown();
  Json Execute(const Json& params);

  // --- Diagnostics ---
  std::optional<std::chrono::milliseconds> UntilNextCheck() const;
  void TakeProjectFile(Document& document);
  void Schedule(const std::string& uri, Clock::time_point when);
  void ScheduleAll();
  void CheckDue();
  void Publish(std::vector<Json> changes);

  Connection& connection_;
  Session session_;
  std::deque<Json> queue_;
  std::map<std::string, Clock::time_point> due_;  // documents to check, by their addresses
  ShownDiagnostics shown_{session_};
  bool is_initialized_ = false;
  bool is_shut_down_ = false;
  bool has_exited_ = false;
  bool has_refused_document_ = false;
  int requests_ = 0;  // sent to the client
  ReportPages pages_;
};

}  // namespace korvel::lsp
