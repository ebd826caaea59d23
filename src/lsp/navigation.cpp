// Tested by tests/lsp/features_test.cpp.
#include "lsp/navigation.h"

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/text.h"
#include "lsp/rename.h"
#include "lsp/symbols.h"

namespace korvel::lsp {
namespace {

using Kind = qmx::ElementId::Kind;

// A document and the name at a position of it.
struct NameAt {
  NameAt(Session& session, const Json& params)
      : document(session.documents.Of(params)),
        outline(document.text.bytes()),
        symbol(document.IsProjectFile() ? std::nullopt
                                        : SymbolAt(outline, document.text.OffsetOf(PositionOf(params.at("position"))))) {}

  Json LocationOf(qmx::Span span) const { return {{"uri", document.uri}, {"range", ToJson(document.text, span)}}; }

  const Document& document;
  const Outline outline;
  const std::optional<Symbol> symbol;
};

// SymbolKind of the protocol.
int NumberOf(Kind kind) {
  enum { kPackage = 4, kProperty = 7, kField = 8, kArray = 18, kKey = 20, kStruct = 23 };
  switch (kind) {
    case Kind::kMetalib:
      return kPackage;
    case Kind::kMeta:
      return kStruct;
    case Kind::kEntry:
      return kField;
    case Kind::kPrimaryKey:
    case Kind::kSplittableKey:
      return kKey;
    case Kind::kIndex:
      return kArray;
    case Kind::kColumn:
      return kProperty;
  }
  return kField;
}

Json ToJson(const std::vector<DocumentSymbol>& symbols, const Text& text) {
  Json list = Json::array();
  for (const DocumentSymbol& one : symbols) {
    list.push_back({{"name", OneLine(one.name)},
                    {"detail", OneLine(one.detail)},
                    {"kind", NumberOf(one.kind)},
                    {"range", lsp::ToJson(text, one.span)},
                    {"selectionRange", lsp::ToJson(text, one.name_span)},
                    {"children", ToJson(one.children, text)}});
  }
  return list;
}

// The problems of each rule.
std::map<std::string, std::size_t> CountByRule(const DocumentCheck& check) {
  std::map<std::string, std::size_t> counts;
  for (const Issue& issue : check.issues->all()) {
    if (!issue.waived) ++counts[issue.rule];
  }
  return counts;
}

// A name that a baseline has is known to records and clients: the checker decides what changes without it. Throws RequestError if
// the document gets more problems of a rule, or if that is not known.
void RequireAllowed(Session& session, const Document& document, const std::string& renamed) {
  const DocumentCheck& now = session.CheckOf(document);
  if (!now.report.faults.empty()) {
    throw RequestError(kRequestFailed, "this file cannot be checked: " + now.report.faults.front().message +
                                           "; allowed: renaming in a file that can be checked");
  }
  std::map<std::string, std::size_t> before = CountByRule(now);
  const std::shared_ptr<const DocumentCheck> then = session.CheckWith(document, renamed);
  const std::map<std::string, std::size_t> after = CountByRule(*then);
  const auto more = std::ranges::find_if(after, [&](const auto& rule) { return rule.second > before[rule.first]; });
  if (more == after.end()) return;
  const auto issue = std::ranges::find(then->issues->all(), more->first, &Issue::rule);
  throw RequestError(kRequestFailed,
                     issue->summary + " [" + issue->rule + "]; allowed: renaming what the baseline does not have");
}

std::string Applied(const std::string& text, const std::vector<TextEdit>& edits) {
  std::string result;
  std::size_t end = 0;
  for (const TextEdit& edit : edits) {
    result.append(text, end, edit.span.begin - end).append(edit.text);
    end = edit.span.end;
  }
  return result.append(text, end);
}

const Symbol& RequireSymbol(const NameAt& name) {
  if (!name.symbol) throw RequestError(kRequestFailed, "there is no name here; allowed: a structure, entry or index");
  return *name.symbol;
}

}  // namespace

Json Definition(Session& session, const Json& params) {
  const NameAt name(session, params);
  return name.symbol ? name.LocationOf(DeclarationOf(name.outline, *name.symbol)) : Json();
}

Json References(Session& session, const Json& params) {
  const NameAt name(session, params);
  Json list = Json::array();
  if (!name.symbol) return list;
  const bool with_declaration = params.at("context").value("includeDeclaration", true);
  for (const qmx::Span span : ReferencesTo(name.outline, *name.symbol, with_declaration)) list.push_back(name.LocationOf(span));
  return list;
}

Json DocumentSymbols(Session& session, const Json& params) {
  const Document& document = session.documents.Of(params);
  if (document.IsProjectFile()) return Json::array();
  return ToJson(DocumentSymbolsOf(Outline(document.text.bytes())), document.text);
}

Json PrepareRename(Session& session, const Json& params) {
  const NameAt name(session, params);
  const Symbol& symbol = RequireSymbol(name);
  return {{"range", ToJson(name.document.text, symbol.span)}, {"placeholder", symbol.name}};
}

Json Rename(Session& session, const Json& params) {
  const NameAt name(session, params);
  const Symbol& symbol = RequireSymbol(name);
  const auto& new_name = params.at("newName").get_ref<const std::string&>();
  if (const std::string fault = FaultOfName(name.outline, symbol, new_name); !fault.empty()) {
    throw RequestError(kRequestFailed, fault);
  }
  const std::vector<TextEdit> renames = RenameEdits(name.outline, symbol, new_name);
  RequireAllowed(session, name.document, Applied(name.document.text.bytes(), renames));
  Json edits = Json::array();
  for (const TextEdit& edit : renames) {
    edits.push_back({{"range", ToJson(name.document.text, edit.span)}, {"newText", edit.text}});
  }
  return {{"changes", {{name.document.uri, std::move(edits)}}}};
}

}  // namespace korvel::lsp
