// Packed records: the version of the library that they were written with, then the fields in declaration order.
//
// A field whose version is above that of the record is absent. Strings, bytes and counted elements take their actual length, not
// their maximum length. A fixed count is written in full. A union consists of the name of its present field and that field.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "codec/record.h"

namespace codec {

// The record of a library of this version.
std::string WritePacked(const Value& record, int version);

// All elements of a field, as in a packed record.
std::string PackElements(const FieldValue& field);

// nullopt if the bytes are not exactly one record of `meta`.
std::optional<Value> ReadPacked(std::string_view bytes, LPQMXMETA meta);

}  // namespace codec
