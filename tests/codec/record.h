// The values of one record: a tree that follows the metas of a library.
//
// An integer has the width of its type, a string has no terminating zero. A union has one present field, and records of both
// forms name it, because the schema does not.
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
  bool present = false;  // whether the record contains it; otherwise it has default values, or no elements in a union
  std::vector<Value> elements;
};

struct Value {
  int type = QMX_TYPE_NONE;
  std::string bytes = {};               // of a simple type, little-endian
  std::vector<FieldValue> fields = {};  // of a structure or union: one for each entry, in declaration order
};

bool IsInteger(int type);
bool IsSigned(int type);

// The meta of a composite entry of `meta`.
LPQMXMETA InnerMeta(LPQMXMETA meta, LPQMXMETAENTRY entry);

// Zero, an empty text, or a structure of these; for a union, no present field.
Value DefaultElement(LPQMXMETA meta, LPQMXMETAENTRY entry);
bool IsDefault(const Value& value);

// A structure or union in which every entry of `meta` is absent and has no elements.
Value Unread(LPQMXMETA meta);

// The number of elements of `entry`: the value of its refer field, else its count. nullopt if the refer field is negative or
// above the count. REQUIRES: the fields of `record` before `entry` have their elements.
std::optional<std::size_t> ElementsOf(const Value& record, LPQMXMETAENTRY entry);

// A record of `meta`. Its integers are often the minimum or maximum of their type.
Value RandomRecord(LPQMXMETA meta, std::mt19937_64& random);

}  // namespace codec
