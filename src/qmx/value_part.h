// Finds a part of the value of an attribute in the text from which an XML parser read it.
#pragma once

#include <optional>
#include <string_view>

#include "qmx/qmx_source_map.h"

namespace qmx {

// The bytes of `text` from which bytes `part` of a value were read. `value` is the text of the whole value, between its quotes.
// In it, references such as "&amp;" and "&#59;" stand for one character each, and a line end, CR LF included, for a space.
// nullopt if the part is not inside the value, or begins or ends inside a character reference. Linear in the length of the value.
std::optional<Span> FindValuePart(std::string_view text, const Span& value, const Span& part);

}  // namespace qmx
