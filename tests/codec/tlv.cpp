// Writes and reads TLV records. Tested by codec_test.cpp.
#include "codec/tlv.h"

#include <algorithm>

#include "codec/bytes.h"
#include "qmx/qmx_metalib_kernel.h"

namespace codec {
namespace {

// An integer extended to a width according to its type; nullopt if it is wider than that.
std::optional<std::string> Widened(std::string_view bytes, int type, std::size_t width) {
  if (bytes.empty() || bytes.size() > width) return std::nullopt;
  const bool is_negative = IsSigned(type) && (static_cast<unsigned char>(bytes.back()) & 0x80) != 0;
  std::string wide(bytes);
  wide.resize(width, is_negative ? '\xff' : '\0');
  return wide;
}

std::optional<Value> ReadElement(std::string_view bytes, LPQMXMETA meta, LPQMXMETAENTRY entry) {
  if (const LPQMXMETA inner = InnerMeta(meta, entry)) return ReadTlv(bytes, inner);
  const int type = qmx_get_entry_type(entry);
  const std::size_t size = qmx_get_entry_unitsize(entry);
  std::optional<std::string> value;
  if (IsInteger(type)) {
    value = Widened(bytes, type, size);
  } else if (type == QMX_TYPE_STRING  ? bytes.size() < size
             : type == QMX_TYPE_BYTES ? bytes.size() <= size
                                      : bytes.size() == size) {
    value = std::string(bytes);
  }
  if (!value) return std::nullopt;
  return Value{.type = type, .bytes = *value};
}

// Adds an element. In a union it replaces the field that was present.
bool Add(std::uint32_t id, std::string_view bytes, LPQMXMETA meta, Value& record) {
  const auto is_it = [id](const FieldValue& field) { return static_cast<std::uint32_t>(qmx_get_entry_id(field.entry)) == id; };
  const auto field = std::ranges::find_if(record.fields, is_it);
  if (field == record.fields.end()) return true;
  std::optional<Value> element = ReadElement(bytes, meta, field->entry);
  if (!element) return false;
  const auto position = static_cast<std::size_t>(field - record.fields.begin());
  if (record.type == QMX_TYPE_UNION && !field->present) record = Unread(meta);
  FieldValue& target = record.fields[position];
  target.present = true;
  target.elements.push_back(std::move(*element));
  return true;
}

bool Complete(LPQMXMETA meta, Value& record) {
  return std::ranges::all_of(record.fields, [&](FieldValue& field) {
    if (record.type == QMX_TYPE_UNION && !field.present) return true;
    const std::optional<std::size_t> count = ElementsOf(record, field.entry);
    if (count) field.elements.resize(*count, DefaultElement(meta, field.entry));
    return count.has_value();
  });
}

}  // namespace

std::string WriteTlv(const Value& record) {
  std::string out;
  for (const FieldValue& field : record.fields) {
    for (const Value& element : field.elements) {
      PutNumber(out, static_cast<std::uint32_t>(qmx_get_entry_id(field.entry)));
      PutRun(out, element.fields.empty() ? element.bytes : WriteTlv(element));
    }
  }
  return out;
}

std::optional<Value> ReadTlv(std::string_view bytes, LPQMXMETA meta) {
  Value record = Unread(meta);
  while (!bytes.empty()) {
    const std::optional<std::uint32_t> id = TakeNumber(bytes);
    const std::optional<std::string_view> value = id ? TakeRun(bytes) : std::nullopt;
    if (!value || !Add(*id, *value, meta, record)) return std::nullopt;
  }
  return Complete(meta, record) ? std::optional(std::move(record)) : std::nullopt;
}

}  // namespace codec
