// Recognizes a new field that has taken the id of an old one, in libraries in which ids identify fields.
#pragma once

#include <string>

#include "base/name_finder.h"
#include "schema/model.h"

namespace korvel {

// Not for several threads at once.
class IdReuse {
 public:
  // The entries of a meta on both sides, which it borrows.
  IdReuse(const MetaModel& old_meta, const MetaModel& new_meta) : old_names_(old_meta.entries), new_names_(new_meta.entries) {}

  // "its id 3 is reused by clan (uint32)" if two entries that match by their id are different fields: their types differ, their
  // names are no spellings of one another, and neither side has the name of the other. "" for a field that was only changed.
  std::string Describe(const EntryModel& old_entry, const EntryModel& new_entry);

 private:
  NameFinder<EntryModel> old_names_;
  NameFinder<EntryModel> new_names_;
};

}  // namespace korvel
