// The values of attributes as the reader takes them from a text, which may be broken.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "qmx/qmx_source_map.h"

namespace korvel::lsp {

// What stands between the quotes, with references such as "&amp;" and "&#65;" and white space replaced by what they stand for. A
// malformed reference is taken literally.
std::string DecodeValue(std::string_view raw);

// Whether `raw` decodes to `value`.
bool IsValue(std::string_view raw, std::string_view value);

struct ValueWord {
  qmx::Span span;    // in the text
  std::string text;  // decoded
};

// The words of the value at `value` of a text: the names in a list such as `entries`, which white space separates.
std::vector<ValueWord> WordsOf(std::string_view text, const qmx::Span& value);

}  // namespace korvel::lsp
