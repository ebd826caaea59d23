// Runs the checker on the old schema of a table with sets of edits.
#pragma once

#include <optional>
#include <vector>

#include "analysis/diff/excerpts.h"
#include "analysis/findings/search.h"
#include "schema/table_context.h"

namespace korvel {

// Borrows the context and the difference, which must outlive it. Const operations may run on several threads at once.
class ChangeChecker {
 public:
  // Excerpts take time to prepare: without them, each check visits the whole table, which is faster for a few checks.
  enum class Use { kExcerpts, kWholeTables };

  ChangeChecker(const TableContext& context, const Difference& difference, Use use = Use::kExcerpts);

  // The answer about each set, in order. Uses excerpts of the table where there are some: the time then does not depend on the
  // number of fields. Runs on several threads for large schemas.
  std::vector<CheckAnswer> Check(const std::vector<EditSet>& sets) const;

  // The answer about a set, always from the whole table.
  CheckAnswer CheckWhole(const EditSet& set) const;

  // The old schema as it is.
  const CheckAnswer& unchanged() const { return unchanged_; }

  bool has_excerpts() const { return excerpts_.has_value(); }
  void DropExcerpts() { excerpts_.reset(); }

 private:
  CheckAnswer CheckUnchanged() const;
  CheckAnswer Check(const EditSet& set) const;

  const TableContext& context_;
  const Difference& difference_;
  CheckAnswer unchanged_;  // the answer about no edits
  std::optional<Excerpts> excerpts_;
};

}  // namespace korvel
