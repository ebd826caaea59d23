// Tested by tests/lsp/server_test.cpp.
#include "lsp/session.h"

#include <algorithm>
#include <utility>

#include "report/render/render.h"

namespace korvel::lsp {
namespace {

void RequireSchema(const Document& document) {
  if (document.IsProjectFile()) throw RequestError(kRequestFailed, "this is a project file, not a schema");
}

}  // namespace

std::shared_ptr<const DocumentCheck> Session::Run(const Document& document, Texts texts) {
  documents.SetChecked(document.uri);
  return checks_.Check(document, texts);
}

void Session::Check(const Document& document) {
  Result result;
  if (document.IsProjectFile()) {
    result.diagnostics.emplace(document.uri, DiagnosticsOfProjectFile(document, links_));
  } else {
    result.check = Run(document);
    result.diagnostics = DiagnosticsOf(*result.check, document, documents);
  }
  results_.insert_or_assign(document.uri, std::move(result));
}

const DocumentCheck& Session::CheckOf(const Document& document) {
  RequireSchema(document);
  const auto known = results_.find(document.uri);
  if (known == results_.end() || known->second.check == nullptr || known->second.check->revision != document.revision)
    Check(document);
  return *results_.find(document.uri)->second.check;
}

std::shared_ptr<const DocumentCheck> Session::CheckWith(const Document& document, const std::string& text) {
  // Exchanges the texts for as long as the check takes.
  struct OtherText {
    OtherText(Documents& all, const std::string& of, const std::string& bytes) : documents(all), uri(of), other(bytes) {
      documents.SwapText(uri, other);
    }
    OtherText(const OtherText&) = delete;
    OtherText& operator=(const OtherText&) = delete;
    ~OtherText() { documents.SwapText(uri, other); }
    Documents& documents;
    const std::string& uri;
    Text other;
  };
  const OtherText other(documents, document.uri, text);
  return Run(document);
}

std::string Session::PageOf(const Document& document) {
  if (document.path.empty()) throw RequestError(kRequestFailed, "the document is not a file; allowed: a file with a schema");
  RequireSchema(document);
  const std::shared_ptr<const DocumentCheck> check = Run(document, Texts::kShown);
  if (!check->is_schema) throw RequestError(kRequestFailed, "this file is not checked; allowed: a schema of the project");
  return RenderHtml(check->report);
}

const WellFormed* Session::StateOf(const Document& document) {
  CheckOf(document);
  states_.Take(document, results_.find(document.uri)->second.check);
  return states_.Of(document.uri);
}

void Session::Forget(const std::string& uri) {
  results_.erase(uri);
  states_.Forget(uri);
  checks_.ForgetUnusedProjects();
}

void Session::ForgetChecks() {
  for (auto& [uri, result] : results_) result.check = nullptr;
}

std::set<std::string> Session::AddressesOf(const std::string& uri) const {
  std::set<std::string> addresses;
  const auto known = results_.find(uri);
  if (known == results_.end()) return addresses;
  for (const auto& [address, diagnostics] : known->second.diagnostics) addresses.insert(address);
  return addresses;
}

Json Session::DiagnosticsFrom(const std::string& document, const std::string& address) const {
  const auto known = results_.find(document);
  if (known == results_.end()) return Json::array();
  const auto found = known->second.diagnostics.find(address);
  return found == known->second.diagnostics.end() ? Json::array() : found->second;
}

Json Session::DiagnosticsAt(const std::string& uri) const {
  Json all = Json::array();
  for (const auto& [document, result] : results_) {
    const auto found = result.diagnostics.find(uri);
    if (found == result.diagnostics.end()) continue;
    for (const Json& one : found->second) {
      if (std::ranges::find(all, one) == all.end()) all.push_back(one);
    }
  }
  return all;
}

}  // namespace korvel::lsp
