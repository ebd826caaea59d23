// Applies accepted changes to an old source: what is suggested for the result keeps them. The fields that they remove are
// reserved.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "analysis/diff/edit.h"
#include "schema/reserved_fields.h"
#include "schema/source.h"

namespace korvel {

// An edit, in each table that has it: its kind, structure, item and values.
struct AcceptedEdit {
  EditKind kind;
  std::string meta;
  std::string item;
  std::string before;
  std::string after;

  bool operator<(const AcceptedEdit& other) const {
    return std::tie(kind, meta, item, before, after) < std::tie(other.kind, other.meta, other.item, other.before, other.after);
  }
};

AcceptedEdit AcceptedEditOf(const Edit& edit);

// The old source after these edits, and those that they need, of the tables; other edits to the new source are not made. nullopt
// if no schema file can contain the result. Linear in the tables, except for that of the differences. REQUIRES: both sources have
// the tables, and the old one has a text.
std::optional<Source> WithAccepted(const Source& old_source, const Source& new_source, const std::vector<std::string>& tables,
                                   const std::set<AcceptedEdit>& accepted);

// Adds the fields of the old source, also by the new names of their structures. REQUIRES: both sources have the tables.
void Reserve(const Source& old_source, const Source& new_source, const std::vector<std::string>& tables,
             ReservedFields& reserved);

}  // namespace korvel
