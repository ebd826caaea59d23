// Tested by tests/lsp/features_test.cpp.
#include "lsp/hover.h"

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include "base/text.h"
#include "lsp/outline.h"
#include "lsp/symbols.h"
#include "qmx/qmx_metalib_kernel.h"
#include "report/render/render.h"
#include "report/result/layout.h"
#include "report/result/words.h"
#include "rule_docs/rule_docs.h"
#include "schema/model.h"
#include "schema/xml_writer.h"

namespace korvel::lsp {
namespace {

using Kind = qmx::ElementId::Kind;

constexpr char kParagraph[] = "\n\n";

// A name or value as Markdown that is also easy to read as it is, as some editors show it.
std::string CodeOf(std::string_view text) {
  const std::string shown = OneLine(text);
  std::size_t longest = 0;  // run of backticks
  for (std::size_t i = 0, run = 0; i < shown.size(); ++i) {
    run = shown[i] == '`' ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  const std::string fence(longest + 1, '`');
  return longest == 0 ? fence + shown + fence : fence + " " + shown + " " + fence;
}

// A page with links that lead to where it is published: those to other pages are relative.
std::string WithWholeLinks(std::string_view page) {
  std::string text;
  for (std::size_t link = page.find("]("); link != std::string_view::npos; link = page.find("](")) {
    text.append(page.substr(0, link + 2));
    page.remove_prefix(link + 2);
    if (!page.starts_with("http")) text.append(RulePagesUrl());
  }
  return text.append(page);
}

// "type: int64 -> int32, version: 1 -> 2"; "" for the same attributes.
std::string ChangesOf(const std::vector<AttributeText>& before, const std::vector<AttributeText>& after) {
  const auto shown = [](const AttributeText& one) { return one.value ? CodeOf(*one.value) : std::string("none"); };
  std::string changes;
  for (std::size_t i = 0; i < after.size(); ++i) {
    if (before[i].value == after[i].value) continue;
    AppendPart(changes, ", ", std::string(after[i].name) + ": " + shown(before[i]) + " -> " + shown(after[i]));
  }
  return changes;
}

// --- Entries and structures ---

const EntryModel* Find(const MetaModel& meta, const std::string& entry) {
  const auto found = std::ranges::find(meta.entries, entry, &EntryModel::name);
  return found == meta.entries.end() ? nullptr : &*found;
}

// What happened since the baselines: one line for each.
template <class Describe>
std::string SinceBaselines(const WellFormed& state, const Describe& describe) {
  return Join(state.baselines, kParagraph,
              [&](const BaselineFile& one) { return "Since " + CodeOf(one.baseline) + ": " + describe(one.source); });
}

std::string SizeOf(const TableLayout& layout, const std::string& entry) {
  const auto field = std::ranges::find(layout.fields, entry, &FieldLayout::path);
  if (field == layout.fields.end()) return "";
  std::string size = Counted(field->size, "byte");
  if (layout.tlv) return size;
  return "offset " + std::to_string(field->offset) + ", " + size + ", " + Percent(field->in_record, layout.size) + " % of " +
         Counted(layout.size, "byte");
}

std::string AboutEntry(const WellFormed& state, const std::string& meta, const std::string& name) {
  const auto model = [](const Source& source, const std::string& of) {
    return MetaOf(source.Library(), qmx_get_meta_by_name(source.Library(), of.c_str()));
  };
  if (!state.source->HasMeta(meta)) return "";
  const MetaModel now = model(*state.source, meta);
  const EntryModel* const entry = Find(now, name);
  if (entry == nullptr) return "";
  std::string text = "**" + CodeOf(meta + "." + name) + "** " + CodeOf(entry->type) + kParagraph;
  text += SizeOf(LayoutOf(*state.source, meta), name) + ", version " + std::to_string(entry->version);
  if (entry->id >= 0) text += ", id " + std::to_string(entry->id);
  const auto describe = [&](const Source& source) -> std::string {
    if (!source.HasMeta(meta)) return "new";
    const MetaModel before = model(source, meta);
    const EntryModel* const old_entry = Find(before, name);
    if (old_entry == nullptr) return "new";
    const std::string changes = ChangesOf(AttributesOf(*old_entry), AttributesOf(*entry));
    return changes.empty() ? "unchanged" : changes;
  };
  AppendPart(text, kParagraph, SinceBaselines(state, describe));
  return text;
}

std::string AboutStructure(const WellFormed& state, const std::string& name) {
  LPQMXMETA meta = qmx_get_meta_by_name(state.source->Library(), name.c_str());
  if (meta == nullptr) return "";
  const auto fields = [](LPQMXMETA one) {
    return Counted(static_cast<std::size_t>(qmx_get_entry_num(one)), "field") + ", " + Counted(one->iUnitSize, "byte");
  };
  std::string text = "**" + CodeOf(name) + "**" + kParagraph + fields(meta);
  const auto describe = [&](const Source& source) -> std::string {
    LPQMXMETA before = qmx_get_meta_by_name(source.Library(), name.c_str());
    if (before == nullptr) return "new";
    return fields(before) == fields(meta) ? "the same size" : "was " + fields(before);
  };
  AppendPart(text, kParagraph, SinceBaselines(state, describe));
  return text;
}

// About the element itself, or what a name in it stands for.
std::string AboutSymbol(const WellFormed* state, const Outline& outline, std::size_t offset) {
  const bool is_known = state != nullptr && state->source;
  const std::optional<Symbol> symbol = is_known ? SymbolAt(outline, offset) : std::nullopt;
  if (!symbol) return "";
  if (symbol->kind == Kind::kEntry) return AboutEntry(*state, symbol->structure, symbol->name);
  return symbol->kind == Kind::kMeta ? AboutStructure(*state, symbol->name) : "";
}

// --- The format ---

bool Contains(const qmx::Span& span, std::size_t offset) { return span.begin <= offset && offset <= span.end; }

std::string_view DocOf(const qmx::AttributeForm& attribute, std::string_view value) {
  const auto choice = std::ranges::find(attribute.choices, value, &qmx::ChoiceForm::value);
  if (choice != attribute.choices.end()) return choice->doc;
  const qmx::SimpleType* const type = attribute.id == qmx::Attribute::kType ? qmx::FindSimpleType(std::string(value)) : nullptr;
  return type == nullptr ? std::string_view() : type->doc;
}

// The meaning of the element, attribute or value at an offset.
std::string AboutFormat(const Outline& outline, ElementIndex index, std::size_t offset) {
  const Element& element = outline.elements()[index];
  if (element.form == nullptr) return "";
  if (Contains(element.name(), offset)) return std::string(element.form->doc);
  for (const TagAttribute& one : outline.AttributesOf(index)) {
    const std::string name(outline.Piece(one.name()));
    const qmx::AttributeForm* const attribute = element.form->Find(name.c_str());
    const bool is_value = one.HasValue() && Contains(one.value(), offset);
    if (attribute == nullptr || !(is_value || Contains(one.name(), offset))) continue;
    std::string text = "**" + name + "**: " + std::string(attribute->doc);
    const std::string_view value = is_value ? DocOf(*attribute, outline.Piece(one.value())) : std::string_view();
    if (!value.empty()) text += std::string(kParagraph) + CodeOf(outline.Piece(one.value())) + ": " + std::string(value);
    return text;
  }
  return "";
}

// --- Diagnostics ---

// The pages of the rules whose findings are at an offset.
std::string RulesAt(const DocumentCheck& check, std::size_t offset) {
  std::string text;
  std::set<std::string> seen;
  for (const Issue& issue : check.issues->all()) {
    const bool is_here =
        issue.location.file == check.name && issue.location.span.end > 0 && Contains(issue.location.span, offset);
    const RuleDoc* const doc = is_here && seen.insert(issue.rule).second ? FindRuleDoc(issue.rule) : nullptr;
    if (doc != nullptr) AppendPart(text, "\n\n---\n\n", WithWholeLinks(doc->page));
  }
  return text;
}

}  // namespace

Json Hover(Session& session, const Json& params) {
  const Document& document = session.documents.Of(params);
  if (document.IsProjectFile()) return nullptr;
  const std::size_t offset = document.text.OffsetOf(PositionOf(params.at("position")));
  const DocumentCheck& check = session.CheckOf(document);
  if (!check.is_schema) return nullptr;
  const Outline outline(document.text.bytes());
  const ElementIndex element = outline.ElementAt(offset);
  if (element == kNoElement || offset > outline.elements()[element].tag_end) return nullptr;
  std::string text = AboutSymbol(session.StateOf(document), outline, offset);
  for (const std::string& part : {AboutFormat(outline, element, offset), RulesAt(check, offset)}) {
    if (!part.empty()) AppendPart(text, "\n\n---\n\n", part);
  }
  if (text.empty()) return nullptr;
  return {{"contents", {{"kind", "markdown"}, {"value", text}}}};
}

}  // namespace korvel::lsp
