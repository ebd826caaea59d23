// Tested by tests/lsp/server_test.cpp.
#include "lsp/shown_diagnostics.h"

#include <utility>

#include "base/paths.h"
#include "base/uri.h"

namespace korvel::lsp {
namespace {

// A diagnostic about another file, at the begin of a document.
Json AtBegin(Json diagnostic, const std::string& address) {
  const std::size_t line = diagnostic["range"]["start"]["line"].get<std::size_t>() + 1;
  const std::string place = FileNameOf(PathOf(address).value_or(address)) + ":" + std::to_string(line) + ": ";
  diagnostic["message"] = place + diagnostic["message"].get<std::string>();
  diagnostic["range"] = ToJson(Text(), {0, 0});
  return diagnostic;
}

}  // namespace

std::set<std::string> ShownDiagnostics::TakeAddresses(const std::string& uri) {
  std::set<std::string> now = session_.AddressesOf(uri);
  std::set<std::string> all = std::exchange(addresses_[uri], now);
  all.merge(now);
  return all;
}

Json ShownDiagnostics::ListAt(const std::string& address) const {
  if (!refused_.contains(address)) return session_.DiagnosticsAt(address);
  return Json::array({FailedCheck("not checked: too many documents are open; allowed: " + std::to_string(kMaxDocuments))});
}

// `document` is the one that was checked.
std::vector<Json> ShownDiagnostics::Changes(const std::set<std::string>& addresses, const Document* document) {
  std::vector<Json> changes;
  if (session_.client.pulls_diagnostics) return changes;
  for (const std::string& address : addresses) {
    Json params = {{"uri", address}, {"diagnostics", ListAt(address)}};
    if (document != nullptr && document->uri == address && document->version) params["version"] = *document->version;
    if (std::exchange(published_[address], params) == params) continue;
    if (params["diagnostics"].empty() && session_.documents.Find(address) == nullptr) published_.erase(address);
    changes.push_back(std::move(params));
  }
  return changes;
}

std::vector<Json> ShownDiagnostics::Check(const Document& document) {
  session_.Check(document);
  return Changes(TakeAddresses(document.uri), &document);
}

std::vector<Json> ShownDiagnostics::Close(const std::string& uri) {
  refused_.erase(uri);
  const auto closed = addresses_.extract(uri);
  return closed.empty() ? std::vector<Json>() : Changes(closed.mapped());
}

std::vector<Json> ShownDiagnostics::Refuse(const std::string& uri) {
  refused_.insert(uri);
  addresses_[uri].insert(uri);
  return Changes({uri});
}

Json ShownDiagnostics::Pull(const Json& params) {
  const std::string uri = params.at("textDocument").at("uri");
  Json result = {{"kind", "full"}, {"items", Json::array()}};
  if (refused_.contains(uri)) {
    result["items"] = ListAt(uri);
    return result;
  }
  session_.Check(session_.documents.Of(params));
  result["items"] = ListAt(uri);
  for (const std::string& address : TakeAddresses(uri)) {
    if (address == uri) continue;
    if (session_.client.takes_related_documents) {
      result["relatedDocuments"][address] = {{"kind", "full"}, {"items", ListAt(address)}};
      continue;
    }
    for (Json& one : session_.DiagnosticsFrom(uri, address)) result["items"].push_back(AtBegin(std::move(one), address));
  }
  return result;
}

}  // namespace korvel::lsp
