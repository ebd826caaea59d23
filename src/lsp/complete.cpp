// Tested by tests/lsp/features_test.cpp; the items by tests/lsp/completion_test.cpp.
#include "lsp/complete.h"

#include <algorithm>

#include "lsp/completion.h"
#include "qmx/qmx_metalib_kernel.h"
#include "schema/model.h"

namespace korvel::lsp {
namespace {

// CompletionItemKind of the protocol.
int NumberOf(CompletionKind kind) {
  enum { kField = 5, kClass = 7, kProperty = 10, kValue = 12, kKeyword = 14, kEnumMember = 20, kStruct = 22 };
  switch (kind) {
    case CompletionKind::kElement:
      return kClass;
    case CompletionKind::kAttribute:
      return kProperty;
    case CompletionKind::kChoice:
      return kEnumMember;
    case CompletionKind::kNumber:
      return kValue;
    case CompletionKind::kSimpleType:
      return kKeyword;
    case CompletionKind::kStructure:
      return kStruct;
    case CompletionKind::kEntry:
      return kField;
  }
  return kValue;
}

// What the baselines know.
CompletionFacts FactsOf(const WellFormed* state) {
  CompletionFacts facts;
  if (state == nullptr) return facts;
  for (const BaselineFile& one : state->baselines) {
    LPQMXMETALIB library = one.source.Library();
    facts.baseline_version = std::max(facts.baseline_version.value_or(0), qmx_get_metalib_version(library));
    for (int i = 0; i < qmx_get_meta_num(library); ++i) {
      const MetaModel meta = MetaOf(library, qmx_get_meta_by_index(library, i));
      UsedFields& used = facts.used[meta.name];
      for (const EntryModel& entry : meta.entries) {
        used.names.insert(entry.name);
        if (entry.id >= 0) used.ids.insert(entry.id);
      }
    }
  }
  return facts;
}

Json ItemOf(const CompletionItem& item, const Json& range, bool takes_snippets) {
  enum { kPlainText = 1, kSnippet = 2 };
  const bool is_snippet = takes_snippets && !item.snippet.empty();
  Json json = {{"label", item.label},
               {"kind", NumberOf(item.kind)},
               {"sortText", item.sort_key},
               {"filterText", item.label},
               {"insertTextFormat", is_snippet ? kSnippet : kPlainText},
               {"textEdit", {{"range", range}, {"newText", is_snippet ? item.snippet : item.insert_text}}}};
  if (!item.detail.empty()) json["detail"] = item.detail;
  if (!item.documentation.empty()) json["documentation"] = item.documentation;
  return json;
}

}  // namespace

Json Complete(Session& session, const Json& params) {
  const Document& document = session.documents.Of(params);
  if (document.IsProjectFile()) return nullptr;
  const std::size_t offset = document.text.OffsetOf(PositionOf(params.at("position")));
  const CompletionFacts facts = FactsOf(session.StateOf(document));
  const Completions completions = CompletionsAt(Outline(document.text.bytes()), offset, facts);
  const Json range = ToJson(document.text, completions.replace);
  Json items = Json::array();
  for (const CompletionItem& item : completions.items) items.push_back(ItemOf(item, range, session.client.takes_snippets));
  return {{"isIncomplete", completions.is_incomplete}, {"items", std::move(items)}};
}

}  // namespace korvel::lsp
