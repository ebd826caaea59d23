// Records of tags, lengths and values. A tag is the id of an entry; each element has a tag of its own.
//
// A structure is the records of its fields, one behind the other; a union is that of the one field that it holds. Tags that the
// reader's schema does not have are passed over, elements that are not there have default values, and an integer may be shorter
// than its type.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "codec/record.h"

namespace codec {

std::string WriteTlv(const Value& record);

// Nothing if the bytes are no records, or a value does not fit its entry.
std::optional<Value> ReadTlv(std::string_view bytes, LPQMXMETA meta);

}  // namespace codec
