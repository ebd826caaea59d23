// The attributes of an entry that change by themselves: what each edit looks at, says and makes.
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
  bool (*differs)(const EntryModel& old_entry, const EntryModel& new_entry);
  std::string (*text)(const EntryModel& entry);
  void (*take)(qmx::EntryDecl& to, const EntryModel& from);
};

// All but refer, which names another entry. In the order in which a list of edits tells them.
std::span<const EntryAttribute> EntryAttributes();

// "uint32", "string(32)"
std::string TypeText(const EntryModel& entry);

}  // namespace korvel
