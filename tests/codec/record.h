// Values of one record, as a reader has them: a tree that follows the metas of a library.
//
// An integer is kept at the width of its type, a string without its terminating zero. A union has one present field; how a reader
// knows which is no business of a schema, so records of both forms say it.
#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "qmx/qmx_types.h"

namespace codec {

struct Value;

struct FieldValue {
  LPQMXMETAENTRY entry = nullptr;
  bool present = false;  // whether the record holds it; what it does not hold has default values, in a union no elements
  std::vector<Value> elements;
};

struct Value {
  int type = QMX_TYPE_NONE;
  std::string bytes = {};               // of a simple type, little endian
  std::vector<FieldValue> fields = {};  // of a structure or union: one for each entry, in declaration order
};

bool IsInteger(int type);
bool IsSigned(int type);

// The meta of a composite entry of `meta`.
LPQMXMETA InnerMeta(LPQMXMETA meta, LPQMXMETAENTRY entry);

// Zeros, empty texts, and structures of these; a union without a present field.
Value DefaultElement(LPQMXMETA meta, LPQMXMETAENTRY entry);
bool IsDefault(const Value& value);

// A structure or union with a field for each entry of `meta`, none of them present and without elements.
Value Unread(LPQMXMETA meta);

// How many elements `entry` has: what its refer field holds, else its count. Nothing if the refer field holds more than the count
// or less than none. REQUIRES: the fields of `record` before `entry` have their elements.
std::optional<std::size_t> ElementsOf(const Value& record, LPQMXMETAENTRY entry);

// A record of `meta`, its integers often the least or greatest of their type.
Value RandomRecord(LPQMXMETA meta, std::mt19937_64& random);

}  // namespace codec
