// The warnings that a report shows about a change. What is suggested instead must not bring others.
#pragma once

#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "analysis/findings/finding.h"
#include "qmx/qmx_types.h"
#include "schema/table_context.h"

namespace korvel {

// A warning about a structure of the old source or, unless empty, about a field of it.
struct KnownWarning {
  std::string rule;
  std::string meta;
  std::string item;  // the name of the field, the old one if it has one

  bool operator<(const KnownWarning& other) const {
    return std::tie(rule, meta, item) < std::tie(other.rule, other.meta, other.item);
  }
};

using KnownWarnings = std::set<KnownWarning>;

// The warnings, without notes, about the change of a table. With `changes`, those of the same table, leaves out warnings about a
// field or table of which another edit is not allowed. REQUIRES: both sources have the table.
KnownWarnings WarningsOf(const TableContext& context, const Changes* changes);

// The warnings about a change from the old source to `library` that are not known. REQUIRES: both have the table.
std::vector<KnownWarning> NewWarnings(const TableContext& context, LPQMXMETALIB library, const KnownWarnings& known);

}  // namespace korvel
