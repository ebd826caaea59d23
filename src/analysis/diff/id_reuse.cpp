// Tested by tests/report/edit_test.cpp.
#include "analysis/diff/id_reuse.h"

#include "analysis/diff/entry_attributes.h"
#include "base/similar_names.h"

namespace korvel {

std::string IdReuse::Describe(const EntryModel& old_entry, const EntryModel& new_entry) {
  if (old_entry.id == -1 || old_entry.id != new_entry.id || old_entry.type == new_entry.type) return "";
  if (SpellingDistance(old_entry.name, new_entry.name)) return "";
  if (old_names_.Find(new_entry.name) != kNowhere || new_names_.Find(old_entry.name) != kNowhere) return "";
  return "its id " + std::to_string(old_entry.id) + " is reused by " + new_entry.name + " (" + TypeText(new_entry) + ")";
}

}  // namespace korvel
