// Writes and reads packed records. Tested by codec_test.cpp.
#include "codec/packed.h"

#include <algorithm>
#include <limits>

#include "codec/bytes.h"
#include "qmx/qmx_metalib_kernel.h"

namespace codec {
namespace {

bool IsText(int type) { return type == QMX_TYPE_STRING || type == QMX_TYPE_BYTES; }

// The maximum length of a text: the terminating zero of a string is not written.
std::size_t MaxLength(LPQMXMETAENTRY entry) {
  return qmx_get_entry_unitsize(entry) - (qmx_get_entry_type(entry) == QMX_TYPE_STRING ? 1 : 0);
}

void PutStructure(std::string& out, const Value& value, int version);

void PutElements(std::string& out, const FieldValue& field, int version) {
  for (const Value& element : field.elements) {
    if (!element.fields.empty()) {
      PutStructure(out, element, version);
    } else if (IsText(element.type)) {
      PutRun(out, element.bytes);
    } else {
      out += element.bytes;
    }
  }
}

void PutStructure(std::string& out, const Value& value, int version) {
  const auto is_written = [version](const FieldValue& field) { return qmx_get_entry_version(field.entry) <= version; };
  if (value.type == QMX_TYPE_UNION) {
    const auto held = std::ranges::find(value.fields, true, &FieldValue::present);
    if (held == value.fields.end() || !is_written(*held)) return PutRun(out, "");
    PutRun(out, qmx_get_entry_name(held->entry));
    return PutElements(out, *held, version);
  }
  for (const FieldValue& field : value.fields) {
    if (is_written(field)) PutElements(out, field, version);
  }
}

class Reader {
 public:
  Reader(std::string_view rest, int version) : rest_(rest), version_(version) {}

  bool AtEnd() const { return rest_.empty(); }

  std::optional<Value> Structure(LPQMXMETA meta) {
    Value value = Unread(meta);
    const bool is_read = meta->iType == QMX_TYPE_UNION ? Union(meta, value) : Fields(meta, value);
    return is_read ? std::optional(std::move(value)) : std::nullopt;
  }

 private:
  bool Union(LPQMXMETA meta, Value& value) {
    const std::optional<std::string_view> name = TakeRun(rest_);
    if (!name || name->empty()) return name.has_value();
    const auto is_it = [&name](const FieldValue& field) { return *name == qmx_get_entry_name(field.entry); };
    const auto held = std::ranges::find_if(value.fields, is_it);
    return held != value.fields.end() && Elements(meta, value, *held);
  }

  bool Fields(LPQMXMETA meta, Value& value) {
    return std::ranges::all_of(value.fields, [&](FieldValue& field) { return Elements(meta, value, field); });
  }

  bool Elements(LPQMXMETA meta, const Value& record, FieldValue& field) {
    const std::optional<std::size_t> count = ElementsOf(record, field.entry);
    if (!count) return false;
    field.present = qmx_get_entry_version(field.entry) <= version_;
    if (!field.present) {
      field.elements.resize(*count, DefaultElement(meta, field.entry));
      return true;
    }
    for (std::size_t i = 0; i < *count; ++i) {
      std::optional<Value> element = Element(meta, field.entry);
      if (!element) return false;
      field.elements.push_back(std::move(*element));
    }
    return true;
  }

  std::optional<Value> Element(LPQMXMETA meta, LPQMXMETAENTRY entry) {
    if (const LPQMXMETA inner = InnerMeta(meta, entry)) return Structure(inner);
    const int type = qmx_get_entry_type(entry);
    const std::optional<std::string_view> bytes = IsText(type) ? TakeRun(rest_) : TakeBytes(rest_, qmx_get_entry_unitsize(entry));
    if (!bytes || (IsText(type) && bytes->size() > MaxLength(entry))) return std::nullopt;
    return Value{.type = type, .bytes = std::string(*bytes)};
  }

  std::string_view rest_;
  int version_;
};

}  // namespace

std::string WritePacked(const Value& record, int version) {
  std::string out;
  PutNumber(out, static_cast<std::uint32_t>(version));
  PutStructure(out, record, version);
  return out;
}

std::string PackElements(const FieldValue& field) {
  std::string out;
  PutElements(out, field, std::numeric_limits<int>::max());
  return out;
}

std::optional<Value> ReadPacked(std::string_view bytes, LPQMXMETA meta) {
  const std::optional<std::uint32_t> version = TakeNumber(bytes);
  if (!version) return std::nullopt;
  Reader reader(bytes, static_cast<int>(*version));
  std::optional<Value> record = reader.Structure(meta);
  return reader.AtEnd() ? record : std::nullopt;
}

}  // namespace codec
