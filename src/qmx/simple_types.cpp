// The simple types of schema files.
#include <algorithm>

#include "qmx/qmx_builder.h"
#include "qmx/short_name.h"

namespace qmx {

namespace {

constexpr std::array<SimpleType, 14> kTypes = {{
    {"int8", QMX_TYPE_INT8, 1},
    {"uint8", QMX_TYPE_UINT8, 1},
    {"int16", QMX_TYPE_INT16, 2},
    {"uint16", QMX_TYPE_UINT16, 2},
    {"int32", QMX_TYPE_INT32, 4},
    {"uint32", QMX_TYPE_UINT32, 4},
    {"int64", QMX_TYPE_INT64, 8},
    {"uint64", QMX_TYPE_UINT64, 8},
    {"float", QMX_TYPE_FLOAT, 4},
    {"double", QMX_TYPE_DOUBLE, 8},
    {"bool", QMX_TYPE_BOOL, 1},
    {"datetime", QMX_TYPE_DATETIME, 8},
    {"string", QMX_TYPE_STRING, 0},
    {"bytes", QMX_TYPE_BYTES, 0},
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
