// The diagnostics that the client shows: what a check changes in them, and the answers to requests for them.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "lsp/session.h"

namespace korvel::lsp {

// Functions that return lists return the parameters of textDocument/publishDiagnostics: nothing that the client shows already,
// and nothing for a client that requests diagnostics.
class ShownDiagnostics {
 public:
  // The session must outlive it.
  explicit ShownDiagnostics(Session& session) : session_(session) {}

  // Checks a document.
  std::vector<Json> Check(const Document& document);

  // After a document was closed.
  std::vector<Json> Close(const std::string& uri);

  // Before the first check of a document that was opened.
  void Accept(const std::string& uri) { refused_.erase(uri); }

  // Shows until the document is closed or accepted that it is not checked, because too many are open.
  std::vector<Json> Refuse(const std::string& uri);

  // textDocument/diagnostic. Checks the document. Throws RequestError if it is not open.
  Json Pull(const Json& params);

 private:
  // The addresses that show diagnostics of a document, from before its last check and from now.
  std::set<std::string> TakeAddresses(const std::string& uri);
  Json ListAt(const std::string& address) const;
  std::vector<Json> Changes(const std::set<std::string>& addresses, const Document* document = nullptr);

  Session& session_;
  std::map<std::string, std::set<std::string>> addresses_;  // by the address of the document
  std::map<std::string, Json> published_;                   // by address
  std::set<std::string> refused_;
};

}  // namespace korvel::lsp
