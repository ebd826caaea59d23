// The simple types of schema files.
#include <algorithm>

#include "qmx/qmx_builder.h"

namespace qmx {

const std::vector<SimpleType>& SimpleTypes() {
  static const std::vector<SimpleType> types = {
      {"int8", QMX_TYPE_INT8, 1},     {"uint8", QMX_TYPE_UINT8, 1},   {"int16", QMX_TYPE_INT16, 2},
      {"uint16", QMX_TYPE_UINT16, 2}, {"int32", QMX_TYPE_INT32, 4},   {"uint32", QMX_TYPE_UINT32, 4},
      {"int64", QMX_TYPE_INT64, 8},   {"uint64", QMX_TYPE_UINT64, 8}, {"float", QMX_TYPE_FLOAT, 4},
      {"double", QMX_TYPE_DOUBLE, 8}, {"bool", QMX_TYPE_BOOL, 1},     {"datetime", QMX_TYPE_DATETIME, 8},
      {"string", QMX_TYPE_STRING, 0}, {"bytes", QMX_TYPE_BYTES, 0},
  };
  return types;
}

const SimpleType* FindSimpleType(std::string_view name) {
  const auto found = std::ranges::find_if(SimpleTypes(), [name](const SimpleType& type) { return name == type.name; });
  return found == SimpleTypes().end() ? nullptr : &*found;
}

const SimpleType* FindSimpleType(int code) {
  const auto found = std::ranges::find_if(SimpleTypes(), [code](const SimpleType& type) { return code == type.code; });
  return found == SimpleTypes().end() ? nullptr : &*found;
}

bool IsIntegerType(int code) { return code >= QMX_TYPE_INT8 && code <= QMX_TYPE_UINT64; }

}  // namespace qmx
