// Looks up elements and attributes. outline_scanner.cpp finds them. Tested by tests/lsp/outline_test.cpp.
#include "lsp/outline.h"

#include <algorithm>

#include "lsp/outline_scanner.h"
#include "lsp/value_text.h"
#include "qmx/qmx_limits.h"

namespace korvel::lsp {

Outline::Outline(std::string_view text) : text_(text.substr(0, qmx::kMaxFileBytes)) { OutlineScanner(*this).Run(); }

std::span<const TagAttribute> Outline::AttributesOf(ElementIndex element) const {
  const std::size_t begin = elements_[element].first_attribute;
  const std::size_t end = element + 1 < elements_.size() ? elements_[element + 1].first_attribute : attributes_.size();
  return std::span(attributes_).subspan(begin, end - begin);
}

const TagAttribute* Outline::FindAttribute(ElementIndex element, std::string_view name) const {
  for (const TagAttribute& attribute : AttributesOf(element)) {
    if (Piece(attribute.name()) == name) return &attribute;
  }
  return nullptr;
}

const TagAttribute* Outline::AttributeAt(ElementIndex element, std::size_t offset) const {
  for (const TagAttribute& attribute : AttributesOf(element)) {
    if (attribute.HasValue() && offset >= attribute.value_begin && offset <= attribute.value_end) return &attribute;
  }
  return nullptr;
}

std::string Outline::ValueOf(ElementIndex element, std::string_view attribute) const {
  const TagAttribute* const found = FindAttribute(element, attribute);
  return found == nullptr ? "" : DecodeValue(Piece(found->value()));
}

bool Outline::HasValue(ElementIndex element, std::string_view attribute, std::string_view value) const {
  const TagAttribute* const found = FindAttribute(element, attribute);
  return found != nullptr && found->HasValue() && IsValue(Piece(found->value()), value);
}

ElementIndex Outline::EndOfContent(ElementIndex element) const {
  const auto first = elements_.begin() + element + 1;
  const auto end = std::ranges::lower_bound(first, elements_.end(), elements_[element].end, {}, &Element::begin);
  return static_cast<ElementIndex>(end - elements_.begin());
}

ElementIndex Outline::ElementAt(std::size_t offset) const {
  const auto contains = [&](const Element& element) {
    return offset < element.end || (offset == element.end && !element.is_closed);
  };
  const auto behind = std::ranges::lower_bound(elements_, offset, {}, &Element::begin);
  if (behind == elements_.begin()) return kNoElement;
  auto element = static_cast<ElementIndex>(behind - elements_.begin() - 1);
  while (element != kNoElement && !contains(elements_[element])) element = elements_[element].parent;
  return element;
}

}  // namespace korvel::lsp
