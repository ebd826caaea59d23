// Lists elements and attributes; completion_values.cpp lists values. Tested by tests/lsp/completion_test.cpp.
#include "lsp/completion.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "lsp/completion_values.h"
#include "lsp/context.h"
#include "lsp/suggested_number.h"
#include "lsp/symbols.h"
#include "qmx/qmx_builder.h"

namespace korvel::lsp {
namespace {

using Place = Context::Place;

const qmx::ElementForm* FormNamed(std::string_view name) { return qmx::FindElement(std::string(name).c_str()); }

// Plain text and a snippet that are built together.
struct InsertText {
  std::string plain;
  std::string snippet;
  int stops = 0;

  void Append(std::string_view text) {
    plain += text;
    snippet += text;
  }
  void AppendStop() { snippet += "$" + std::to_string(++stops); }
  void AppendAttribute(std::string_view name, std::optional<std::int32_t> value) {
    Append(std::string(name) + "=\"");
    if (value) Append(std::to_string(*value));
    if (!value) AppendStop();
    Append("\"");
  }
  // To an item.
  void MoveTo(CompletionItem& item) {
    item.insert_text = std::move(plain);
    if (snippet != item.insert_text) item.snippet = std::move(snippet);
  }
};

class Completer {
 public:
  Completer(const Outline& outline, const Context& context, const CompletionFacts& facts)
      : outline_(outline), context_(context), facts_(facts) {}

  std::vector<CompletionItem> Run() {
    switch (context_.place) {
      case Place::kNothing:
        break;
      case Place::kContent:
        AddElements(context_.element, kNoElement);
        break;
      case Place::kElementName:
        AddElements(outline_.elements()[context_.element].parent, context_.element);
        break;
      case Place::kEndTagName:
        AddEndTag();
        break;
      case Place::kAttributeName:
        AddAttributes();
        break;
      case Place::kAttributeValue:
        return ValuesAt(outline_, context_, facts_);
    }
    return std::move(items_);
  }

 private:
  // The elements that `parent` may contain beside those that it does, or the outermost element without one. `self` is the element
  // whose name is typed, or kNoElement in front of a '<'.
  void AddElements(ElementIndex parent, ElementIndex self) {
    const qmx::ElementForm* const parent_form = parent == kNoElement ? nullptr : outline_.elements()[parent].form;
    if (parent != kNoElement && parent_form == nullptr) return;
    for (const std::string_view name : qmx::ChildNames(parent_form)) {
      const qmx::ElementForm& form = *FormNamed(name);
      if (IsUsedUp(form, parent, self)) continue;
      CompletionItem& item = items_.emplace_back(ItemOf(CompletionKind::kElement, name, 0, items_.size()));
      item.documentation = form.doc;
      ElementText(form, parent, self).MoveTo(item);
    }
  }

  bool IsUsedUp(const qmx::ElementForm& form, ElementIndex parent, ElementIndex self) const {
    const bool is_single = form.occurs == qmx::Occurs::kOnce || form.occurs == qmx::Occurs::kAtMostOnce;
    const ElementIndex begin = parent == kNoElement ? 0 : parent + 1;
    const ElementIndex end =
        parent == kNoElement ? static_cast<ElementIndex>(outline_.elements().size()) : outline_.EndOfContent(parent);
    for (ElementIndex element = begin; is_single && element < end; ++element) {
      const Element& other = outline_.elements()[element];
      if (element != self && other.parent == parent && other.Is(form.kind)) return true;
    }
    return false;
  }

  // Only the name where a tag is already.
  InsertText ElementText(const qmx::ElementForm& form, ElementIndex parent, ElementIndex self) const {
    InsertText text;
    if (self == kNoElement) text.Append("<");
    text.Append(std::string_view(form.name));
    if (self != kNoElement && (outline_.elements()[self].is_tag_closed || !outline_.AttributesOf(self).empty())) return text;
    const NumberPlace place{form.kind, kNoElement, parent};
    for (const qmx::AttributeForm& attribute : form.attributes) {
      const auto number = SuggestedNumber(outline_, place, attribute.id, facts_);
      if (!attribute.is_required && !(number && IsUsual(attribute.id, parent))) continue;
      text.Append(" ");
      text.AppendAttribute(attribute.name, number);
    }
    if (qmx::ChildNames(&form).empty()) {
      text.Append("/>");
    } else {
      text.Append(">\n");
      text.snippet += "  $0\n";
      text.Append("</" + std::string(form.name) + ">");
    }
    return text;
  }

  // Whether a new entry of the structure should have a number that is not required.
  bool IsUsual(qmx::Attribute attribute, ElementIndex structure) const {
    if (attribute == qmx::Attribute::kId) return UsesIds(outline_, structure, facts_);
    return facts_.used.contains(outline_.ValueOf(structure, "name"));
  }

  void AddEndTag() {
    if (context_.element == kNoElement) return;
    const std::string_view name = outline_.Piece(outline_.elements()[context_.element].name());
    const bool is_closed = outline_.text().substr(context_.replace.end).starts_with(">");
    CompletionItem& item = items_.emplace_back(ItemOf(CompletionKind::kElement, name, 0, 0));
    item.insert_text = item.label + (is_closed ? "" : ">");
  }

  void AddAttributes() {
    const Element& element = outline_.elements()[context_.element];
    if (element.form == nullptr) return;
    for (const qmx::AttributeForm& attribute : element.form->attributes) {
      const TagAttribute* const present = outline_.FindAttribute(context_.element, attribute.name);
      const bool is_other = present != nullptr && present != context_.attribute;
      if (!is_other && !IsRefused(attribute.id)) AddAttribute(attribute, element);
    }
  }

  void AddAttribute(const qmx::AttributeForm& attribute, const Element& element) {
    const bool is_required = attribute.is_required || IsNeeded(attribute.id);
    CompletionItem& item =
        items_.emplace_back(ItemOf(CompletionKind::kAttribute, attribute.name, is_required ? 0 : 1, items_.size()));
    item.detail = is_required ? "required" : "optional";
    item.documentation = attribute.doc;
    if (context_.attribute != nullptr && context_.attribute->HasValue()) {
      item.insert_text = item.label;
      return;
    }
    InsertText text;
    const NumberPlace place{element.form->kind, context_.element, element.parent};
    text.AppendAttribute(attribute.name, SuggestedNumber(outline_, place, attribute.id, facts_));
    text.MoveTo(item);
  }

  // Whether the attribute is required here, although not everywhere.
  bool IsNeeded(qmx::Attribute attribute) const {
    if (attribute == qmx::Attribute::kId) return IsTlv(outline_);
    const qmx::SimpleType* const type = qmx::FindSimpleType(outline_.ValueOf(context_.element, "type"));
    return attribute == qmx::Attribute::kSize && type != nullptr && type->unit_size == 0;
  }

  // Whether the attribute is refused here, although not everywhere.
  bool IsRefused(qmx::Attribute attribute) const {
    const std::string type = outline_.ValueOf(context_.element, "type");
    return attribute == qmx::Attribute::kSize && !type.empty() && !IsNeeded(attribute);
  }

  const Outline& outline_;
  const Context& context_;
  const CompletionFacts& facts_;
  std::vector<CompletionItem> items_;
};

bool BeginsWith(const CompletionItem& item, std::string_view prefix) {
  return item.label.starts_with(prefix) || item.insert_text.starts_with(prefix);
}

}  // namespace

Completions CompletionsAt(const Outline& outline, std::size_t offset, const CompletionFacts& facts) {
  const Context context = ContextAt(outline, offset);
  Completions completions{context.replace, Completer(outline, context, facts).Run()};
  std::vector<CompletionItem>& items = completions.items;
  std::ranges::sort(items, {}, &CompletionItem::sort_key);
  if (items.size() <= kMaxCompletions) return completions;
  std::erase_if(items, [&](const CompletionItem& item) { return !BeginsWith(item, context.prefix); });
  completions.is_incomplete = true;
  if (items.size() > kMaxCompletions) items.resize(kMaxCompletions);
  return completions;
}

}  // namespace korvel::lsp
