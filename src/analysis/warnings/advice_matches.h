// Finds where rules of the advice catalog apply to the change of a table, directly from both libraries. No run of the checker, no
// difference: an allowed check must stay cheap.
#pragma once

#include <string_view>
#include <vector>

#include "analysis/diff/edit.h"
#include "qmx/qmx_types.h"
#include "rule_docs/advice.h"

namespace korvel {

// A place where a rule applies. Borrows the libraries.
struct AdviceMatch {
  const AdviceRule* rule;
  EditKind kind;       // of the edit that causes it
  LPQMXMETA old_meta;  // the declaration that changes, on both sides; the table for a change of the library. Null in a new table
  LPQMXMETA new_meta;
  // The entry that changes: both sides, or one if it was added or removed. Null for a change of the meta or the library.
  LPQMXMETAENTRY old_entry;
  LPQMXMETAENTRY new_entry;
  LPQMXMETAINDEX old_index = nullptr;  // likewise, the index
  LPQMXMETAINDEX new_index = nullptr;
  std::string_view attribute = {};  // of a change of a table attribute, its key
};

// A table under two schemas. Neither meta is null.
struct TableMetas {
  LPQMXMETALIB old_lib;
  LPQMXMETALIB new_lib;
  LPQMXMETA old_meta;
  LPQMXMETA new_meta;
  int created_as;  // code of kProtocols
};

// All matches, each once; warnings, then notes. Whether the checker allows the change is not considered. n log n in what the
// table reaches; a table without composite and counted fields costs a pass over its entries.
std::vector<AdviceMatch> FindAdviceMatches(const TableMetas& table);

}  // namespace korvel
