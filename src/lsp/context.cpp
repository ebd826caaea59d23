// Finds what an offset is in. Tested by tests/lsp/completion_test.cpp.
#include "lsp/context.h"

#include <algorithm>

#include "lsp/value_text.h"

namespace korvel::lsp {
namespace {

using Place = Context::Place;

constexpr std::string_view kWhiteSpace = " \t\r\n";

bool IsWhiteSpace(char byte) { return kWhiteSpace.find(byte) != std::string_view::npos; }

// The word of a list that the offset touches.
qmx::Span WordAt(const Outline& outline, const qmx::Span& value, std::size_t offset) {
  for (const ValueWord& word : WordsOf(outline.text(), value)) {
    if (word.span.begin <= offset && offset <= word.span.end) return word.span;
  }
  return {offset, offset};
}

Context InValue(const Outline& outline, ElementIndex element, const TagAttribute& attribute, std::size_t offset) {
  const bool is_list = outline.Piece(attribute.name()) == "entries";
  const qmx::Span replace = is_list ? WordAt(outline, attribute.value(), offset) : attribute.value();
  return {Place::kAttributeValue, element, &attribute, replace, outline.Piece({replace.begin, offset})};
}

// In a start tag, behind its name.
Context InTag(const Outline& outline, ElementIndex element, std::size_t offset) {
  if (const TagAttribute* const attribute = outline.AttributeAt(element, offset)) {
    return InValue(outline, element, *attribute, offset);
  }
  for (const TagAttribute& attribute : outline.AttributesOf(element)) {
    if (attribute.name_begin < offset && offset <= attribute.name_end) {
      return {Place::kAttributeName, element, &attribute, attribute.name(), outline.Piece({attribute.name_begin, offset})};
    }
  }
  const bool is_apart = IsWhiteSpace(outline.text()[offset - 1]);
  return {is_apart ? Place::kAttributeName : Place::kNothing, element, nullptr, {offset, offset}, ""};
}

// The end tag or other piece of markup that the offset is inside; null without one.
const OtherMarkup* OtherMarkupAt(const Outline& outline, std::size_t offset) {
  const auto behind = std::ranges::lower_bound(outline.other_markup(), offset, {}, &OtherMarkup::begin);
  if (behind == outline.other_markup().begin()) return nullptr;
  const OtherMarkup& last = *(behind - 1);
  return offset < last.end || (offset == last.end && !last.is_closed) ? &last : nullptr;
}

Context InOther(const Outline& outline, const OtherMarkup& markup, std::size_t offset) {
  const ElementIndex element = outline.ElementAt(markup.begin + std::size_t{1});
  const std::size_t name = markup.begin + std::size_t{2};
  const std::string_view content = outline.Piece({name, markup.end});
  const std::size_t end = name + std::min(content.find_first_of(" \t\r\n>"), content.size());
  if (!markup.is_end_tag || offset < name || offset > end) return {Place::kNothing, element, nullptr, {offset, offset}, ""};
  return {Place::kEndTagName, element, nullptr, {name, end}, outline.Piece({name, offset})};
}

}  // namespace

Context ContextAt(const Outline& outline, std::size_t offset) {
  offset = std::min(offset, outline.text().size());
  if (const OtherMarkup* const markup = OtherMarkupAt(outline, offset)) return InOther(outline, *markup, offset);
  const ElementIndex index = outline.ElementAt(offset);
  const Context content = {Place::kContent, index, nullptr, {offset, offset}, ""};
  if (index == kNoElement) return content;
  const Element& element = outline.elements()[index];
  if (offset > element.begin && offset <= element.name_end) {
    return {Place::kElementName, index, nullptr, element.name(), outline.Piece({element.name().begin, offset})};
  }
  const bool is_in_tag = offset < element.tag_end || (offset == element.tag_end && !element.is_tag_closed);
  return is_in_tag ? InTag(outline, index, offset) : content;
}

}  // namespace korvel::lsp
