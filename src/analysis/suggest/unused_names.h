// Names and ids for new fields, which no field of either schema has, nor a reserved one, nor an earlier proposal.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

#include "schema/model.h"
#include "schema/reserved_fields.h"

namespace korvel {

// The metas of one schema.
using MetasByName = std::map<std::string, const MetaModel*>;

// The name with every character that identifiers may not contain replaced, cut to the longest allowed length.
std::string IdentifierLike(const std::string& name);

// Borrows its arguments, and reads them when a structure is asked for the first time. Not for several threads at once.
class UnusedNames {
 public:
  // `reserved` may be null.
  UnusedNames(const MetasByName& old_metas, const MetasByName& new_metas, const ReservedFields* reserved)
      : old_metas_(old_metas), new_metas_(new_metas), reserved_(reserved) {}

  // Whether a field of the old meta has it, or it is reserved.
  bool IsOldName(const std::string& meta, const std::string& name) { return UsedIn(meta).old_names.contains(name); }
  bool IsOldId(const std::string& meta, std::int32_t id) { return UsedIn(meta).old_ids.contains(id); }

  // `wanted` if it is unused, else with a number appended, cut to the longest allowed length. Marks the result as used.
  std::string UniqueName(const std::string& meta, const std::string& wanted);

  // An id above all ids of the meta, marked as used; the largest id once none is left.
  std::int32_t NextId(const std::string& meta);

 private:
  // What a meta uses on both sides together, or what is reserved, which counts as old.
  struct Used {
    std::set<std::string> names;
    std::set<std::string> old_names;
    std::set<std::int32_t> old_ids;
    std::int32_t largest_id = -1;
  };

  Used& UsedIn(const std::string& meta);

  const MetasByName& old_metas_;
  const MetasByName& new_metas_;
  const ReservedFields* reserved_;
  std::map<std::string, Used> used_;  // by meta
};

}  // namespace korvel
