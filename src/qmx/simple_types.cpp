// The simple types of schema files.
#include <algorithm>

#include "qmx/qmx_builder.h"
#include "qmx/short_name.h"

namespace qmx {

namespace {

constexpr std::array<SimpleType, 14> kTypes = {{
    {"int8", QMX_TYPE_INT8, 1, "Signed integer of 8 bits, 1 byte."},
    {"uint8", QMX_TYPE_UINT8, 1, "Unsigned integer of 8 bits, 1 byte."},
    {"int16", QMX_TYPE_INT16, 2, "Signed integer of 16 bits, 2 bytes."},
    {"uint16", QMX_TYPE_UINT16, 2, "Unsigned integer of 16 bits, 2 bytes."},
    {"int32", QMX_TYPE_INT32, 4, "Signed integer of 32 bits, 4 bytes."},
    {"uint32", QMX_TYPE_UINT32, 4, "Unsigned integer of 32 bits, 4 bytes."},
    {"int64", QMX_TYPE_INT64, 8, "Signed integer of 64 bits, 8 bytes."},
    {"uint64", QMX_TYPE_UINT64, 8, "Unsigned integer of 64 bits, 8 bytes."},
    {"float", QMX_TYPE_FLOAT, 4, "Floating-point number of 32 bits, 4 bytes."},
    {"double", QMX_TYPE_DOUBLE, 8, "Floating-point number of 64 bits, 8 bytes."},
    {"bool", QMX_TYPE_BOOL, 1, "Truth value, 1 byte."},
    {"datetime", QMX_TYPE_DATETIME, 8, "Date and time, 8 bytes."},
    {"string", QMX_TYPE_STRING, 0, "Text; its size includes the terminating zero."},
    {"bytes", QMX_TYPE_BYTES, 0, "Bytes of any value, as many as its size says."},
}};

constexpr auto kShortNames = [] {
  std::array<std::uint64_t, kTypes.size()> names{};
  std::ranges::transform(kTypes, names.begin(), [](const SimpleType& type) { return ShortName(type.name); });
  return names;
}();

}  // namespace

const std::array<SimpleType, 14>& SimpleTypes() { return kTypes; }

const SimpleType* FindSimpleType(std::string_view name) {
  const std::uint64_t number = ShortName(name);
  const auto* const found = std::ranges::find(kShortNames, number);
  if (found == kShortNames.end()) return nullptr;
  const SimpleType& type = kTypes[static_cast<std::size_t>(found - kShortNames.begin())];
  return IsWholeName(number) || type.name == name ? &type : nullptr;
}

const SimpleType* FindSimpleType(int code) {
  const auto* const found = std::ranges::find(kTypes, code, &SimpleType::code);
  return found == kTypes.end() ? nullptr : found;
}

bool IsIntegerType(int code) { return code >= QMX_TYPE_INT8 && code <= QMX_TYPE_UINT64; }

}  // namespace qmx
