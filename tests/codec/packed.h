// Packed records: the version of the library that they were written with, then the fields in declaration order.
//
// A field whose version is above the record's is absent. Strings, bytes and how many elements a refer field counts are as long as
// they are: nothing is padded to what the schema allows at most. A fixed count is written in full. A union is the name of the
// field that it holds and that field.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "codec/record.h"

namespace codec {

// Of a value of a meta in a library of this version.
std::string WritePacked(const Value& record, int version);

// All elements of a field, as they stand in a packed record.
std::string PackElements(const FieldValue& field);

// Nothing if the bytes are no record of `meta`, end too early or too late.
std::optional<Value> ReadPacked(std::string_view bytes, LPQMXMETA meta);

}  // namespace codec
