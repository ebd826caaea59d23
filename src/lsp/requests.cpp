// Tested by tests/lsp/server_test.cpp.
#include "lsp/requests.h"

#include "lsp/baseline_address.h"
#include "lsp/code_actions.h"
#include "lsp/code_lens.h"
#include "lsp/complete.h"
#include "lsp/hover.h"
#include "lsp/navigation.h"

namespace korvel::lsp {
namespace {

// The text of a file of the baseline, to which diagnostics refer.
Json TextOfBaseline(Session& /*session*/, const Json& params) {
  return {{"text", BaselineText(params.at("uri").get<std::string>())}};
}

}  // namespace

std::span<const Request> Requests() {
  static constexpr Request kRequests[] = {
      {"codeAction/resolve", ResolveCodeAction},
      {"textDocument/codeAction", CodeActions},
      {"textDocument/codeLens", CodeLenses},
      {"textDocument/completion", Complete},
      {"textDocument/definition", Definition},
      {"textDocument/documentSymbol", DocumentSymbols},
      {"textDocument/hover", Hover},
      {"textDocument/prepareRename", PrepareRename},
      {"textDocument/references", References},
      {"textDocument/rename", Rename},
      {"workspace/textDocumentContent", TextOfBaseline},
  };
  return kRequests;
}

Json Capabilities(const Client& client) {
  constexpr int kIncremental = 2;
  Json capabilities = {
      {"positionEncoding", "utf-16"},
      {"textDocumentSync", {{"openClose", true}, {"change", kIncremental}, {"save", true}}},
      {"hoverProvider", true},
      {"completionProvider", {{"triggerCharacters", {"<", " ", "\"", "'"}}}},
      {"definitionProvider", true},
      {"referencesProvider", true},
      {"documentSymbolProvider", true},
      {"renameProvider", {{"prepareProvider", true}}},
      {"codeLensProvider", {{"resolveProvider", false}}},
      {"executeCommandProvider", {{"commands", Json::array({kReportCommand})}}},
      {"codeActionProvider", {{"codeActionKinds", {"quickfix", "source.fixAll"}}, {"resolveProvider", true}}},
      {"workspace", {{"textDocumentContent", {{"schemes", Json::array({"korvelcheck"})}}}}},
  };
  if (client.pulls_diagnostics) {
    capabilities["diagnosticProvider"] = {
        {"identifier", "korvelcheck"}, {"interFileDependencies", true}, {"workspaceDiagnostics", false}};
  }
  return capabilities;
}

}  // namespace korvel::lsp
