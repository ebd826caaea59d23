// Finds the attributes of a start tag again in the bytes of a file that an XML parser has accepted so far.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "qmx/qmx_source_map.h"

namespace qmx {

struct AttributeSpans {
  Span name;
  Span value;  // between the quotes
};

// Iterates over the attributes of one tag, in order.
class TagScanner {
 public:
  // `element` is the offset of the tag's '<'.
  TagScanner(std::string_view text, std::size_t element);

  // The next attribute; nullopt after the last one. Never reads outside the text, whatever it contains.
  std::optional<AttributeSpans> Next();

 private:
  void SkipTo(std::string_view any_of);
  void SkipBlanks();

  std::string_view text_;
  std::size_t at_;
};

}  // namespace qmx
