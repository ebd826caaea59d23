// Tested by tests/lsp/server_test.cpp and edits_test.cpp.
#include "lsp/documents.h"

#include <utility>

#include "base/paths.h"
#include "base/text.h"
#include "base/uri.h"
#include "project/project.h"
#include "project/project_path.h"

namespace korvel::lsp {
namespace {

std::optional<std::int64_t> VersionOf(const Json& document) {
  const Json version = document.value("version", Json());
  return version.is_number_integer() ? std::optional(version.get<std::int64_t>()) : std::nullopt;
}

bool HasLibrary(const Text& text) { return text.bytes().find("<metalib") != std::string::npos; }

}  // namespace

bool Document::IsProjectFile() const { return FileNameOf(path) == kProjectFileName; }

Document& Documents::Open(const Json& item) {
  const auto& uri = item.at("uri").get_ref<const std::string&>();
  const std::optional<std::string> path = PathOf(uri);
  Document document{.uri = uri,
                    .path = path ? AbsolutePath(*path).string() : "",
                    .revision = ++revisions_,
                    .version = VersionOf(item),
                    .text = Text(item.at("text").get<std::string>())};
  document.was_schema = HasLibrary(document.text);
  return by_uri_.insert_or_assign(uri, std::move(document)).first->second;
}

Document& Documents::Change(const Json& params) {
  const Json& id = params.at("textDocument");
  const auto found = by_uri_.find(id.at("uri").get_ref<const std::string&>());
  if (found == by_uri_.end()) throw RequestError(kInvalidParams, "the document is not open");
  Document& document = found->second;
  document.revision = ++revisions_;
  for (const Json& change : params.at("contentChanges")) {
    const auto& text = change.at("text").get_ref<const std::string&>();
    if (change.contains("range")) {
      document.text.Replace(SpanOf(document.text, change.at("range")), text);
    } else {
      document.text = Text(text);
    }
  }
  document.version = VersionOf(id);
  document.was_schema = document.was_schema || HasLibrary(document.text);
  return document;
}

const Document* Documents::Find(const std::string& uri) const {
  const auto found = by_uri_.find(uri);
  return found == by_uri_.end() ? nullptr : &found->second;
}

const Document* Documents::FindPath(const std::string& path) const {
  const Document* last = nullptr;
  for (const auto& [uri, document] : by_uri_) {
    if (document.path != path) continue;
    if (uri == checked_) return &document;
    if (last == nullptr || last->revision < document.revision) last = &document;
  }
  return last;
}

const Document& Documents::Of(const Json& params) const {
  const auto& uri = params.at("textDocument").at("uri").get_ref<const std::string&>();
  const Document* const document = Find(uri);
  if (document == nullptr) throw RequestError(kInvalidParams, "the document is not open: " + Quote(uri));
  return *document;
}

}  // namespace korvel::lsp
