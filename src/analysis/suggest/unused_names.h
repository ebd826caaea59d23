// Names and ids for new fields, which no field of either schema has, nor a reserved one, nor an earlier proposal.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "base/name_finder.h"
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
  bool IsOldName(const std::string& meta, const std::string& name);
  bool IsOldId(const std::string& meta, std::int32_t id);

  // `wanted` if it is unused, else with a number appended, cut to the longest allowed length. Marks the result as used.
  std::string UniqueName(const std::string& meta, const std::string& wanted);

  // An id above all ids of the meta, marked as used; the largest id once none is left.
  std::int32_t NextId(const std::string& meta);

 private:
  // What one meta uses.
  struct Used {
    bool IsOldName(const std::string& name) { return old_names.Find(name) != kNowhere || reserved.names.contains(name); }
    bool IsUsedName(const std::string& name) {
      return IsOldName(name) || new_names.Find(name) != kNowhere || proposed.contains(name);
    }

    NameFinder<EntryModel> old_names;
    NameFinder<EntryModel> new_names;
    const UsedFields& reserved;
    std::set<std::string> proposed = {};
    std::vector<std::int32_t> old_ids = {};  // ascending, without those that are reserved
    std::int32_t largest_id = -1;
  };

  Used& UsedIn(const std::string& meta);

  const MetasByName& old_metas_;
  const MetasByName& new_metas_;
  const ReservedFields* reserved_;
  std::map<std::string, Used> used_;  // by meta
};

}  // namespace korvel
