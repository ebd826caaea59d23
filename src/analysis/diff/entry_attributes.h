// The attributes of an entry that change independently: how each is compared, described and applied. Values of other edits.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "analysis/diff/edit.h"
#include "schema/model.h"

namespace korvel {

struct EntryAttribute {
  EditKind kind;
  std::string_view name;  // of schema files
  // Whether the attribute has different values.
  bool (*differs)(const EntryModel& old_entry, const EntryModel& new_entry);
  // The value as in Edit::before and Edit::after.
  std::string (*text)(const EntryModel& entry);
  // Copies the value. `to` borrows texts from `from`.
  void (*take)(qmx::EntryDecl& to, const EntryModel& from);
};

// All attributes except refer, which names another entry. In the order in which edits are listed.
std::span<const EntryAttribute> EntryAttributes();

// Whether customattr2 marks a sort field of the table.
bool IsSortMark(const EntryModel& entry);

// "uint32", "string(32)"
std::string TypeText(const EntryModel& entry);

// "structure", "union"
std::string KindText(const MetaModel& meta);

// "zone desc, uid"
std::string ColumnsText(const IndexModel& index);

}  // namespace korvel
