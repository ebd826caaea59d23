// Defaults and random values. Tested by codec_test.cpp.
#include "codec/record.h"

#include <algorithm>
#include <cstring>

#include "common/meta_view.h"
#include "qmx/qmx_metalib_kernel.h"

namespace codec {
namespace {

std::int64_t NumberOf(const Value& value) {
  std::int64_t number = 0;
  std::memcpy(&number, value.bytes.data(), value.bytes.size());
  const auto unused = static_cast<int>(64 - 8 * value.bytes.size());
  if (!IsSigned(value.type)) return number;  // above the maximum of int64 it becomes negative, which is out of range, too
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(number) << unused) >> unused;
}

class Random {
 public:
  explicit Random(std::mt19937_64& random) : random_(random) {}

  Value Structure(LPQMXMETA meta) {
    Value value = Unread(meta);
    if (meta->iType == QMX_TYPE_UNION) {
      Fill(meta, value, value.fields[Below(value.fields.size())]);
    } else {
      for (FieldValue& field : value.fields) Fill(meta, value, field);
    }
    return value;
  }

 private:
  std::size_t Below(std::size_t bound) { return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_); }

  void Fill(LPQMXMETA meta, const Value& record, FieldValue& field) {
    field.present = true;
    if (const std::optional<std::size_t> limit = MaxCounted(meta, field.entry)) {
      field.elements = {DefaultElement(meta, field.entry)};
      field.elements.front().bytes.front() = static_cast<char>(Below(*limit + 1));
      return;
    }
    const std::size_t count = ElementsOf(record, field.entry).value_or(0);
    for (std::size_t i = 0; i < count; ++i) field.elements.push_back(Element(meta, field.entry));
  }

  // The smallest count, at most 100, of the entries that `entry` counts.
  static std::optional<std::size_t> MaxCounted(LPQMXMETA meta, LPQMXMETAENTRY entry) {
    std::optional<std::size_t> limit;
    for (const auto [index, one] : korvel::Entries(meta)) {
      if (qmx_get_entry_refer(one) != entry) continue;
      limit = std::min(limit.value_or(100), static_cast<std::size_t>(qmx_get_entry_count(one)));
    }
    return limit;
  }

  Value Element(LPQMXMETA meta, LPQMXMETAENTRY entry) {
    if (const LPQMXMETA inner = InnerMeta(meta, entry)) return Structure(inner);
    Value value = DefaultElement(meta, entry);
    const std::size_t size = qmx_get_entry_unitsize(entry);
    if (value.type == QMX_TYPE_STRING) {
      value.bytes.resize(Below(size));
      for (char& byte : value.bytes) byte = static_cast<char>('a' + Below(26));
      return value;
    }
    if (value.type == QMX_TYPE_BYTES) value.bytes.resize(Below(size + 1));
    const std::size_t kind = Below(4);
    for (char& byte : value.bytes) byte = static_cast<char>(kind == 0 ? 0xff : kind == 1 ? 0 : Below(256));
    return value;
  }

  std::mt19937_64& random_;
};

}  // namespace

bool IsInteger(int type) { return type >= QMX_TYPE_INT8 && type <= QMX_TYPE_UINT64; }

bool IsSigned(int type) {
  return type == QMX_TYPE_INT8 || type == QMX_TYPE_INT16 || type == QMX_TYPE_INT32 || type == QMX_TYPE_INT64;
}

LPQMXMETA InnerMeta(LPQMXMETA meta, LPQMXMETAENTRY entry) { return qmx_get_entry_type_meta(korvel::OwnerOf(meta), entry); }

Value Unread(LPQMXMETA meta) {
  Value value{.type = meta->iType};
  for (const auto [index, entry] : korvel::Entries(meta)) value.fields.emplace_back().entry = entry;
  return value;
}

Value DefaultElement(LPQMXMETA meta, LPQMXMETAENTRY entry) {
  const LPQMXMETA inner = InnerMeta(meta, entry);
  if (inner == nullptr) {
    Value value{.type = qmx_get_entry_type(entry)};
    if (value.type != QMX_TYPE_STRING && value.type != QMX_TYPE_BYTES) value.bytes.resize(qmx_get_entry_unitsize(entry));
    return value;
  }
  Value value = Unread(inner);
  if (inner->iType == QMX_TYPE_UNION) return value;
  for (FieldValue& field : value.fields) {
    field.elements.resize(ElementsOf(value, field.entry).value_or(0), DefaultElement(inner, field.entry));
  }
  return value;
}

bool IsDefault(const Value& value) {
  const bool is_union = value.type == QMX_TYPE_UNION;
  return std::ranges::all_of(value.bytes, [](char byte) { return byte == 0; }) &&
         std::ranges::all_of(value.fields, [is_union](const FieldValue& field) {
           return !(is_union && field.present) && std::ranges::all_of(field.elements, IsDefault);
         });
}

std::optional<std::size_t> ElementsOf(const Value& record, LPQMXMETAENTRY entry) {
  const auto count = static_cast<std::size_t>(qmx_get_entry_count(entry));
  const LPQMXMETAENTRY refer = qmx_get_entry_refer(entry);
  if (refer == nullptr) return count;
  const auto counter = std::ranges::find(record.fields, refer, &FieldValue::entry);
  if (counter->elements.empty()) return 0;  // in a union that contains another field
  const std::int64_t number = NumberOf(counter->elements.front());
  if (number < 0 || static_cast<std::size_t>(number) > count) return std::nullopt;
  return static_cast<std::size_t>(number);
}

Value RandomRecord(LPQMXMETA meta, std::mt19937_64& random) { return Random(random).Structure(meta); }

}  // namespace codec
