// The last state of a document without a fault, and its baselines: while its text is broken, they answer questions about it.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "lsp/document_check.h"
#include "lsp/documents.h"
#include "schema/source.h"

namespace korvel::lsp {

// The file in a state that the document is compared with.
struct BaselineFile {
  std::string baseline;  // "git:main"
  Source source;
};

struct WellFormed {
  std::shared_ptr<const DocumentCheck> check;  // of this state
  std::optional<Source> source;                // nullopt if no text of the document was without a fault since it was opened
  std::vector<BaselineFile> baselines;         // those that have the file
};

class WellFormedStates {
 public:
  // Takes the state of a document if it has no fault, or if it is the first one. Changes the working directory.
  void Take(const Document& document, const std::shared_ptr<const DocumentCheck>& check);

  // Null for a document that was never taken, and for one that is no schema.
  const WellFormed* Of(const std::string& uri) const;

  void Forget(const std::string& uri) { states_.erase(uri); }

 private:
  std::map<std::string, WellFormed> states_;  // by the address of the document
};

}  // namespace korvel::lsp
