// Records of tags, lengths and values. A tag is the id of an entry; each element has a tag of its own.
//
// A structure consists of the records of its fields, a union of that of its present field. Unknown tags are skipped, missing
// elements have default values, and an integer may be shorter than its type.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "codec/record.h"

namespace codec {

std::string WriteTlv(const Value& record);

// nullopt if the bytes are not a sequence of records, or if a value does not fit its entry.
std::optional<Value> ReadTlv(std::string_view bytes, LPQMXMETA meta);

}  // namespace codec
