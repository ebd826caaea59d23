// Recognizes the kinds of exceptions. Tested by exceptions_test.cpp, which has the smallest change of each kind.
#include "codec/exceptions.h"

#include <algorithm>
#include <utility>

namespace codec {
namespace {

using support::Field;
using support::Library;
using support::Table;

struct Side {
  const Library& library;
  const Table& table;
};

const Table* Find(const Library& library, const std::string& name) {
  const auto found = std::ranges::find(library.tables, name, &Table::name);
  return found == library.tables.end() ? nullptr : &*found;
}

const Field* Find(const Table& table, const Field& field, Form form) {
  const auto found = form == Form::kPacked ? std::ranges::find(table.fields, field.name, &Field::name)
                                           : std::ranges::find(table.fields, field.id, &Field::id);
  return found == table.fields.end() ? nullptr : &*found;
}

// The field that counts the elements, as a reader of that form identifies it; empty: none.
std::string Counter(const Table& table, const Field& field, Form form) {
  if (field.refer.empty() || form == Form::kPacked) return field.refer;
  return std::to_string(std::ranges::find(table.fields, field.refer, &Field::name)->id);
}

bool HasOtherCounter(const Side& before, const Side& after, Form form) {
  return std::ranges::any_of(before.table.fields, [&](const Field& field) {
    const Field* counterpart = Find(after.table, field, form);
    if (counterpart == nullptr) return false;
    if (Counter(before.table, field, form) != Counter(after.table, *counterpart, form)) return true;
    const Table* inner_before = Find(before.library, field.type);
    const Table* inner_after = Find(after.library, counterpart->type);
    return inner_before != nullptr && inner_after != nullptr &&
           HasOtherCounter({before.library, *inner_before}, {after.library, *inner_after}, form);
  });
}

// A new field that is counted by a field of old records.
bool CountedByOldField(const Side& before, const Side& after, Form form) {
  return std::ranges::any_of(after.table.fields, [&](const Field& field) {
    const Field* counterpart = Find(before.table, field, form);
    if (counterpart == nullptr) {
      const auto counter = std::ranges::find(after.table.fields, field.refer, &Field::name);
      return counter != after.table.fields.end() && Find(before.table, *counter, form) != nullptr;
    }
    const Table* inner_before = Find(before.library, counterpart->type);
    const Table* inner_after = Find(after.library, field.type);
    return inner_before != nullptr && inner_after != nullptr &&
           CountedByOldField({before.library, *inner_before}, {after.library, *inner_after}, form);
  });
}

bool AddedCounted(const Change& change, const Broken& broken) {
  return CountedByOldField({change.old_lib, change.old_lib.tables.back()}, {change.new_lib, change.new_lib.tables.back()},
                           broken.form);
}

bool CounterChanged(const Change& change, const Broken& broken) {
  return HasOtherCounter({change.old_lib, change.old_lib.tables.back()}, {change.new_lib, change.new_lib.tables.back()},
                         broken.form);
}

// The same members in another order, or one of them twice.
bool KeyMembersChanged(const Change& change, const Broken& broken) {
  const std::vector<std::string>& before = change.old_lib.tables.back().key;
  const std::vector<std::string>& after = change.new_lib.tables.back().key;
  const auto was_member = [&](const std::string& name) { return std::ranges::find(before, name) != before.end(); };
  return broken.only_keys && before != after && before.size() == after.size() && std::ranges::all_of(after, was_member);
}

bool KindOfTableChanged(const Change& change, const Broken&) {
  return change.old_lib.tables.back().kind != change.new_lib.tables.back().kind;
}

bool ContainsUnion(const Library& library, const Table& table) {
  return table.kind == QMX_TYPE_UNION || std::ranges::any_of(table.fields, [&](const Field& field) {
           const Table* inner = Find(library, field.type);
           return inner != nullptr && ContainsUnion(library, *inner);
         });
}

// A structure in the key must only keep its size: in TLV its fields may be removed, added and moved, and in a union the smaller
// fields may grow.
bool StructureInKey(const Change& change, const Broken& broken) {
  const Table& table = change.old_lib.tables.back();
  return broken.only_keys && std::ranges::any_of(table.key, [&](const std::string& name) {
           const Table* inner = Find(change.old_lib, std::ranges::find(table.fields, name, &Field::name)->type);
           return inner != nullptr && (broken.form == Form::kTlv || ContainsUnion(change.old_lib, *inner));
         });
}

constexpr Exception kExceptions[] = {
    {"table-kind", KindOfTableChanged}, {"key-members", KeyMembersChanged}, {"key-structure", StructureInKey},
    {"refer-changed", CounterChanged},  {"refer-added", AddedCounted},
};

}  // namespace

std::span<const Exception> Exceptions() { return kExceptions; }

const Exception* ExplanationOf(const Change& change, const Broken& broken) {
  const auto explains = [&](const Exception& exception) { return exception.explains(change, broken); };
  const auto* found = std::ranges::find_if(kExceptions, explains);
  return found == std::end(kExceptions) ? nullptr : found;
}

}  // namespace codec
