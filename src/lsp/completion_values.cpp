// Lists the values of attributes. Tested by tests/lsp/completion_test.cpp.
#include "lsp/completion_values.h"

#include <set>
#include <string>
#include <utility>

#include "lsp/containment.h"
#include "lsp/suggested_number.h"
#include "lsp/symbols.h"
#include "lsp/value_text.h"
#include "qmx/qmx_builder.h"
#include "schema/declaration.h"
#include "schema/xml_writer.h"

namespace korvel::lsp {
namespace {

using Kind = qmx::ElementId::Kind;

constexpr int kPositionDigits = 7;

class ValueCompleter {
 public:
  ValueCompleter(const Outline& outline, const Context& context, const CompletionFacts& facts)
      : outline_(outline), context_(context), facts_(facts) {}

  std::vector<CompletionItem> Run(const qmx::ElementForm& element, const qmx::AttributeForm& attribute) {
    for (const qmx::ChoiceForm& choice : attribute.choices) {
      CompletionItem* const item = Add(CompletionKind::kChoice, choice.value, 0);
      if (item != nullptr) item->documentation = choice.doc;
    }
    switch (attribute.id) {
      case qmx::Attribute::kType:
        AddSimpleTypes();
        AddStructures();
        break;
      case qmx::Attribute::kEntries:
        SkipListed();
        AddEntries();
        break;
      case qmx::Attribute::kEntry:
        SkipOtherColumns();
        AddEntries();
        break;
      case qmx::Attribute::kRefer:
        AddCounters();
        break;
      default:
        AddNumber(element.kind, attribute.id);
        break;
    }
    return std::move(items_);
  }

 private:
  // Adds a value unless an item has it already or it is to be skipped; null if it was not added.
  CompletionItem* Add(CompletionKind kind, std::string_view value, std::size_t group) {
    const std::optional<std::string> written = Written(value);
    if (!written || !taken_.emplace(value).second) return nullptr;
    CompletionItem item = ItemOf(kind, value, group, items_.size());
    item.insert_text = *written;
    return &items_.emplace_back(std::move(item));
  }

  // The value with the quotes that it needs; nullopt if XML cannot express it.
  std::optional<std::string> Written(std::string_view value) const {
    const TagAttribute& attribute = *context_.attribute;
    const bool is_quoted = attribute.quote != '\0';
    const char quote = is_quoted ? attribute.quote : '"';
    const bool is_closed =
        is_quoted && attribute.value_end < outline_.text().size() && outline_.text()[attribute.value_end] == quote;
    std::optional<std::string> text = EscapeForXml(value, quote);
    if (text && !is_quoted) text->insert(0, 1, quote);
    if (text && !is_closed && context_.replace.end == attribute.value_end) *text += quote;
    return text;
  }

  // The names of a list, except the one that is being typed.
  void SkipListed() {
    for (const ValueWord& word : WordsOf(outline_.text(), context_.attribute->value())) {
      if (word.span.begin != context_.replace.begin) taken_.insert(word.text);
    }
  }

  void SkipOtherColumns() {
    const ElementIndex index = outline_.elements()[context_.element].parent;
    if (index == kNoElement) return;
    for (const ElementIndex column : ItemsOf(outline_, index, Kind::kColumn)) {
      if (column != context_.element) taken_.insert(outline_.ValueOf(column, "entry"));
    }
  }

  void AddSimpleTypes() {
    for (const qmx::SimpleType& type : qmx::SimpleTypes()) {
      CompletionItem* const item = Add(CompletionKind::kSimpleType, type.name, 0);
      if (item == nullptr) continue;
      item->detail =
          type.unit_size == 0 ? "its size in bytes" : std::to_string(type.unit_size) + (type.unit_size == 1 ? " byte" : " bytes");
      item->documentation = type.doc;
    }
  }

  void AddStructures() {
    const ElementIndex structure = StructureOf(outline_, context_.element);
    if (structure != kNoElement) {
      for (const ElementIndex outer : StructuresAround(outline_, structure)) taken_.insert(outline_.ValueOf(outer, "name"));
    }
    for (const ElementIndex other : StructuresOf(outline_)) {
      const std::string detail = DetailOf(outline_, other);
      AddDeclared(CompletionKind::kStructure, other, detail == "table" ? 2 : 1, detail);
    }
  }

  void AddEntries() {
    for (const ElementIndex entry : DeclarationsFor(outline_, context_.element, Kind::kEntry)) AddEntry(entry);
  }

  void AddCounters() {
    for (const ElementIndex entry : DeclarationsFor(outline_, context_.element, Kind::kEntry)) {
      if (entry >= context_.element) return;
      const bool has_count = outline_.FindAttribute(entry, "count") != nullptr;
      const std::int32_t count = has_count ? NumberOf(outline_, entry, "count").value_or(0) : 1;
      if (CanHoldCount(outline_.ValueOf(entry, "type"), count)) AddEntry(entry);
    }
  }

  void AddEntry(ElementIndex entry) { AddDeclared(CompletionKind::kEntry, entry, 0, DetailOf(outline_, entry)); }

  void AddDeclared(CompletionKind kind, ElementIndex declaration, std::size_t group, const std::string& detail) {
    const std::string name = outline_.ValueOf(declaration, "name");
    if (name.empty()) return;
    CompletionItem* const item = Add(kind, name, group);
    if (item == nullptr) return;
    item->detail = detail;
    item->documentation = outline_.ValueOf(declaration, "desc");
  }

  void AddNumber(Kind kind, qmx::Attribute attribute) {
    const NumberPlace place{kind, context_.element, outline_.elements()[context_.element].parent};
    const std::optional<std::int32_t> number = SuggestedNumber(outline_, place, attribute, facts_);
    if (!number) return;
    CompletionItem* const item = Add(CompletionKind::kNumber, std::to_string(*number), 0);
    if (item != nullptr) item->detail = attribute == qmx::Attribute::kId ? "the next free id" : "the next version";
  }

  const Outline& outline_;
  const Context& context_;
  const CompletionFacts& facts_;
  std::set<std::string> taken_;
  std::vector<CompletionItem> items_;
};

}  // namespace

CompletionItem ItemOf(CompletionKind kind, std::string_view label, std::size_t group, std::size_t position) {
  CompletionItem item;
  item.label = label;
  item.kind = kind;
  const std::string digits = std::to_string(position);
  item.sort_key =
      std::to_string(group) + std::string(kPositionDigits - std::min<std::size_t>(digits.size(), kPositionDigits), '0') + digits;
  return item;
}

std::vector<CompletionItem> ValuesAt(const Outline& outline, const Context& context, const CompletionFacts& facts) {
  const qmx::ElementForm* const element = outline.elements()[context.element].form;
  if (element == nullptr) return {};
  const qmx::AttributeForm* const attribute = element->Find(std::string(outline.Piece(context.attribute->name())).c_str());
  if (attribute == nullptr) return {};
  return ValueCompleter(outline, context, facts).Run(*element, *attribute);
}

}  // namespace korvel::lsp
