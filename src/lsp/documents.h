// The documents that are open in the editor.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "lsp/json.h"
#include "lsp/text.h"

namespace korvel::lsp {

inline constexpr std::size_t kMaxDocuments = 1000;

struct Document {
  std::string uri;
  std::string path;                     // absolute, without links in its directory; empty for a document that is no file
  std::uint64_t revision = 0;           // grows with each change of any document
  std::optional<std::int64_t> version;  // as the client counts; some do not
  Text text;
  bool was_schema = false;     // whether it has contained a library since it was opened
  std::string good_text = {};  // of a project file: the last text without an error, else that with which it was opened

  // Whether it is a project file (korvelcheck.toml), not a schema.
  bool IsProjectFile() const;
};

class Documents {
 public:
  // Whether a document can be opened, or is open.
  bool HasRoomFor(const std::string& uri) const { return by_uri_.size() < kMaxDocuments || by_uri_.contains(uri); }
  // Takes `textDocument` of a notification. REQUIRES: HasRoomFor it.
  Document& Open(const Json& item);
  // Applies the changes of a notification in their order. Returns the document.
  Document& Change(const Json& params);
  // Exchanges the text of an open document.
  void SwapText(const std::string& uri, Text& text) { std::swap(by_uri_.at(uri).text, text); }
  // The document that is being checked.
  void SetChecked(const std::string& uri) { checked_ = uri; }
  void Close(const std::string& uri) { by_uri_.erase(uri); }

  // Null if it is not open.
  const Document* Find(const std::string& uri) const;
  // Several addresses may lead to one file. Then it is the document that is being checked, else that which was changed last.
  const Document* FindPath(const std::string& path) const;
  // The document of a request, which has a `textDocument`. Throws RequestError if it is not open.
  const Document& Of(const Json& params) const;

  const std::map<std::string, Document>& all() const { return by_uri_; }

 private:
  std::map<std::string, Document> by_uri_;
  std::uint64_t revisions_ = 0;
  std::string checked_;  // address
};

}  // namespace korvel::lsp
