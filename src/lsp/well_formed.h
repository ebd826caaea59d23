// The last state of a document without a fault: while its text is broken, this state answers questions about it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
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
  std::int64_t version = 0;  // of the document
  std::shared_ptr<const DocumentCheck> check;
  Source source;
  std::vector<BaselineFile> baselines;  // those that have the file
};

class WellFormedStates {
 public:
  // Takes the state of a document if it has no fault. Changes the working directory.
  void Take(const Document& document, const std::shared_ptr<const DocumentCheck>& check);

  // Null if no text of the document was without a fault since it was opened.
  const WellFormed* Of(const std::string& uri) const;

  void Forget(const std::string& uri) { states_.erase(uri); }

 private:
  std::map<std::string, WellFormed> states_;  // by the address of the document
};

}  // namespace korvel::lsp
