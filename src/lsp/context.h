// What an offset in the text of a schema file is in: where a person who types there is.
#pragma once

#include <cstddef>
#include <string_view>

#include "lsp/outline.h"

namespace korvel::lsp {

struct Context {
  enum class Place {
    kNothing,         // a comment or other markup, or a place in a tag where no word can begin
    kContent,         // of `element`, or outside of all elements
    kElementName,     // of the start tag of `element`
    kEndTagName,      // of an end tag inside `element`
    kAttributeName,   // in the start tag of `element`; `attribute` is the one that is there, or null
    kAttributeValue,  // of `attribute` of `element`
  };

  Place place = Place::kNothing;
  ElementIndex element = kNoElement;
  const TagAttribute* attribute = nullptr;  // of the outline
  qmx::Span replace;                        // the word at the offset: the whole name, or the word of a value
  std::string_view prefix;                  // the part of it in front of the offset
};

// `offset` is at most the size of the text. Logarithmic, except in long tags.
Context ContextAt(const Outline& outline, std::size_t offset);

}  // namespace korvel::lsp
