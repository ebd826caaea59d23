// What the server knows between messages.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>

#include "lsp/diagnostics.h"
#include "lsp/document_check.h"
#include "lsp/documents.h"
#include "lsp/json.h"
#include "lsp/open_project.h"
#include "lsp/well_formed.h"

namespace korvel::lsp {

// What the editor can do.
struct Client {
  bool pulls_diagnostics = false;        // requests diagnostics itself, so none are sent
  bool refreshes_diagnostics = false;    // requests them again when told to
  bool takes_related_documents = false;  // takes diagnostics about other files with those of a document
  bool resolves_edits = false;           // requests the edit of a code action when it is chosen
  bool takes_snippets = false;
  bool shows_documents = false;  // opens an address outside of the editor
};

class Session {
 public:
  // `options` must outlive the session.
  explicit Session(const Options& options) : links_(options.links), checks_(options, documents) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Documents documents = {};
  Client client = {};

  // Checks a document anew.
  void Check(const Document& document);

  // The check of the document as it is now, done before or now.
  const DocumentCheck& CheckOf(const Document& document);

  // What the check would be with another text.
  std::shared_ptr<const DocumentCheck> CheckWith(const Document& document, const std::string& text);

  // The report about the document as a page. Throws RequestError for one that is not a file with a schema.
  std::string PageOf(const Document& document);

  // The last state of the document without a fault; null for one that is no schema.
  const WellFormed* StateOf(const Document& document);

  // Drops everything about a document. REQUIRES: it was closed.
  void Forget(const std::string& uri);
  // Something besides the documents has changed: their checks are not used any more.
  void ForgetChecks();

  // The addresses that the last check of a document shows diagnostics in; none without a check.
  std::set<std::string> AddressesOf(const std::string& uri) const;

  // The diagnostics of all documents checked so far in one address, each once.
  Json DiagnosticsAt(const std::string& uri) const;
  // Those of one document.
  Json DiagnosticsFrom(const std::string& document, const std::string& address) const;

 private:
  struct Result {
    std::shared_ptr<const DocumentCheck> check;  // null: not checked since the last change
    Diagnostics diagnostics;
  };

  std::shared_ptr<const DocumentCheck> Run(const Document& document, Texts texts = Texts::kWhenNeeded);

  Links links_;
  DocumentChecks checks_;
  WellFormedStates states_;
  std::map<std::string, Result> results_;  // by the address of the document
};

}  // namespace korvel::lsp
