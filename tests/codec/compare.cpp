// Compares two values of a record field by field. Tested by codec_test.cpp.
#include "codec/compare.h"

#include <algorithm>

#include "common/meta_view.h"

namespace codec {
namespace {

// The number with its sign, one byte wider than the widest type.
std::string Number(const Value& value) {
  const bool is_negative = IsSigned(value.type) && (static_cast<unsigned char>(value.bytes.back()) & 0x80) != 0;
  std::string number = value.bytes;
  number.resize(9, is_negative ? '\xff' : '\0');
  return number;
}

bool SameSimple(const Value& before, const Value& after) {
  if (IsInteger(before.type) && IsInteger(after.type)) return Number(before) == Number(after);
  return before.type == after.type && before.bytes == after.bytes;
}

std::string Name(const FieldValue& field) { return qmx_get_entry_name(field.entry); }

const FieldValue* Counterpart(const FieldValue& field, const Value& other, Match match) {
  const auto is_it = [&](const FieldValue& one) {
    return match == Match::kName ? korvel::SameName(qmx_get_entry_name(one.entry), qmx_get_entry_name(field.entry))
                                 : qmx_get_entry_id(one.entry) == qmx_get_entry_id(field.entry);
  };
  const auto found = std::ranges::find_if(other.fields, is_it);
  return found == other.fields.end() ? nullptr : &*found;
}

std::string DifferentElement(const Value& before, const Value& after, Match match) {
  if (before.fields.empty() != after.fields.empty()) return " is another type";
  if (before.fields.empty()) return SameSimple(before, after) ? "" : " is another value";
  const std::string inner = Difference(before, after, match);
  return inner.empty() ? "" : "." + inner;
}

std::string DifferentField(const FieldValue& before, const FieldValue& after, Match match) {
  if (!before.present) return std::ranges::all_of(after.elements, IsDefault) ? "" : " is not default";
  const std::size_t kept = before.elements.size();
  const std::size_t found = after.elements.size();
  if (qmx_get_entry_refer(after.entry) == nullptr ? found < kept : found != kept) return " has another number of elements";
  for (std::size_t i = 0; i < kept; ++i) {
    const std::string where = DifferentElement(before.elements[i], after.elements[i], match);
    if (!where.empty()) return "[" + std::to_string(i) + "]" + where;
  }
  const auto added = after.elements.begin() + static_cast<std::ptrdiff_t>(kept);
  return std::all_of(added, after.elements.end(), IsDefault) ? "" : " has additional elements that are not default";
}

}  // namespace

std::string Difference(const Value& before, const Value& after, Match match) {
  for (const FieldValue& field : before.fields) {
    const FieldValue* counterpart = Counterpart(field, after, match);
    if (counterpart == nullptr) {
      if (match == Match::kName && field.present) return Name(field) + " is lost";
      continue;
    }
    const std::string where = DifferentField(field, *counterpart, match);
    if (!where.empty()) return Name(field) + where;
  }
  for (const FieldValue& field : after.fields) {
    if (Counterpart(field, before, match) == nullptr && !std::ranges::all_of(field.elements, IsDefault)) {
      return Name(field) + " is new and not default";
    }
  }
  return "";
}

}  // namespace codec
