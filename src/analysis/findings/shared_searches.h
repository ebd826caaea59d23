// What the search has found about one table, for the other tables of the call that embed the same structures.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/diff/renamed_metas.h"
#include "analysis/findings/search.h"
#include "schema/table_context.h"

namespace korvel {

// The division of the edits of a table whose own declaration is unchanged.
struct SharedSearch {
  Difference difference;
  EditSet allowed;
  std::vector<RejectedSet> refusals;  // the texts may name the table
  bool stopped = false;
};

// What the answers about structures depend on besides the structures: the settings, the kind of the table, and how it embeds
// them. Its other fields are unchanged, so nothing about them is refused (meta_excerpt.h). nullopt if the declaration of the
// table itself changes, if the new source does not have it, if entries that embed structures share their name or id with others,
// or if a source is an image, which may contain more than is compared here. n log n in the fields of the table, without its
// structures.
std::optional<std::string> SearchKeyOf(const TableContext& context, std::size_t max_findings);

// The division that was found for another table, if the checker confirms it for this one: it allows the same edits together, and
// refuses one set of edits for each rule and code.
std::optional<SearchResult> Confirmed(const TableContext& context, const Difference& difference, const SharedSearch& search);

// Searches by their keys. Several threads may use it at once; for results that do not depend on the threads, the first table of
// each key is searched before the others.
class SharedSearches {
 public:
  // Keeps the first search of a key.
  void Add(const std::string& key, const SharedSearch& search);

  // Null if the key has no search, or one with other edits. Valid as long as this object.
  const SharedSearch* Find(const std::string& key, const Difference& difference) const;

  // The new name of a table that the new source does not have; "" if it has none. REQUIRES: the same sources in every call.
  std::string NewNameOf(const Source& old_source, const Source& new_source, const std::string& table);

 private:
  mutable std::mutex mutex_;
  std::map<std::string, SharedSearch> searches_;
  std::optional<RenamedMetas> renamed_;  // tables; filled on first use
};

}  // namespace korvel
