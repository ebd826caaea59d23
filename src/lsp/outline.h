// The elements and attributes in the text of a schema file, found also while somebody types it. Not a parser: it reports no
// errors and takes broken markup for what was probably meant.
//
// - A tag without '>' ends in front of the next '<' and has no content.
// - A value without a closing quote ends in front of the next attribute, the end of the line or the end of the tag.
// - An element without an end tag ends where its parent ends, or in front of an element that belongs into an outer one.
// - An end tag without a start tag is ignored.
// - An element at the greatest depth that the reader allows, qmx::kMaxElementDepth, has no content.
//
// For well-formed schema files it finds the same elements as the reader. Never throws anything but std::bad_alloc.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "qmx/qmx_source_map.h"
#include "qmx_xml/schema_form.h"

namespace korvel::lsp {

using ElementIndex = std::uint32_t;
inline constexpr ElementIndex kNoElement = std::numeric_limits<ElementIndex>::max();

// An attribute of a start tag. Offsets take 32 bits: a text may have a million attributes.
struct TagAttribute {
  std::uint32_t name_begin = 0;
  std::uint32_t name_end = 0;
  std::uint32_t value_begin = 0;
  std::uint32_t value_end = 0;
  char quote = '\0';  // around the value; zero without quotes

  qmx::Span name() const { return {name_begin, name_end}; }
  // Between the quotes. Empty, and directly behind the name or the '=', without a value.
  qmx::Span value() const { return {value_begin, value_end}; }
  bool HasValue() const { return value_begin > name_end; }
};

struct Element {
  std::uint32_t begin = 0;  // of the '<'
  std::uint32_t name_end = 0;
  std::uint32_t tag_end = 0;
  std::uint32_t end = 0;
  ElementIndex parent = kNoElement;
  std::uint32_t first_attribute = 0;
  const qmx::ElementForm* form = nullptr;  // null for an unknown name
  bool is_tag_closed = false;              // by a '>'
  bool is_self_closed = false;             // by "/>"
  bool is_closed = false;                  // by "/>" or an end tag

  bool Is(qmx::ElementId::Kind kind) const { return form != nullptr && form->kind == kind; }

  qmx::Span name() const { return {begin + std::size_t{1}, name_end}; }
  qmx::Span tag() const { return {begin, tag_end}; }  // from its '<' to behind its '>'
  qmx::Span whole() const { return {begin, end}; }    // to behind the end tag
};

// A piece of markup that is no element.
struct OtherMarkup {
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
  bool is_end_tag = false;  // otherwise a comment, processing instruction, CDATA section or declaration
  bool is_closed = false;
};

class Outline {
 public:
  // Linear. Borrows the text; what lies behind its first qmx::kMaxFileBytes is ignored.
  explicit Outline(std::string_view text);

  std::string_view text() const { return text_; }
  // REQUIRES: the span is one of this outline.
  std::string_view Piece(const qmx::Span& span) const { return text_.substr(span.begin, span.end - span.begin); }

  // In the order of the text, so that the elements inside an element directly follow it.
  const std::vector<Element>& elements() const { return elements_; }
  const std::vector<OtherMarkup>& other_markup() const { return other_markup_; }

  std::span<const TagAttribute> AttributesOf(ElementIndex element) const;
  // The first attribute of that name; null without one.
  const TagAttribute* FindAttribute(ElementIndex element, std::string_view name) const;
  // The attribute of the element with the offset in, or directly behind, its value; null without one.
  const TagAttribute* AttributeAt(ElementIndex element, std::size_t offset) const;
  // The decoded value of an attribute; "" without one.
  std::string ValueOf(ElementIndex element, std::string_view attribute) const;
  bool HasValue(ElementIndex element, std::string_view attribute, std::string_view value) const;

  // Behind the last element inside an element. Logarithmic.
  ElementIndex EndOfContent(ElementIndex element) const;

  // The innermost element with the offset between its '<' and its end; kNoElement outside of all elements. An offset behind an
  // element that is not closed is inside it.
  ElementIndex ElementAt(std::size_t offset) const;

 private:
  friend class OutlineScanner;

  std::string_view text_;
  std::vector<Element> elements_;
  std::vector<TagAttribute> attributes_;
  std::vector<OtherMarkup> other_markup_;
};

}  // namespace korvel::lsp
