// Checks one table: the verdict of the checker and, as far as the caller wants them, changes, findings and suggestions.
//
// Functions here may run on several threads at once, with a log category for each. The sources are only read and must outlive the
// results, which borrow them. Thrown are std::bad_alloc and, with `wants_fixes`, what FileText::Bytes throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "analysis/findings/finding.h"
#include "analysis/suggest/work_limit.h"
#include "base/limits.h"
#include "common/modify_table.h"
#include "schema/selection.h"
#include "schema/settings.h"

namespace korvel {

class SharedSearches;

enum class Status { kAllowed, kRefused, kNew };

// The result of checking one table. Borrows the sources.
struct TableResult {
  std::string table;
  std::string baseline;  // the earlier state that it is compared with; empty unless the call compares with several
  Status status = Status::kNew;
  std::uint32_t project = 0;         // which project file of the call its settings are from, 0-based; see ProjectSet
  bool is_alone = false;             // as in TableCheck
  const Source* first = nullptr;     // old; the same as `second` if the file is unchanged or alone. Null for a new table
  const Source* second = nullptr;    // new
  Location declared;                 // the table's meta in the second file, or in the first if the second has none
  bool removed = false;              // the second file has no such table; kRefused only
  std::string renamed_to;            // of a removed table: the new table that it probably became; may be empty
  Verdict verdict;                   // of the whole change; allowed unless kRefused
  PartialSettings settings;          // those that the operation takes
  std::optional<bool> is_unchanged;  // whether it differs in nothing but the version of the library (IsUnchanged); absent if the
                                     // table is not allowed, or the operation does not find out
  std::optional<Changes> changes;    // what changed and which of it is refused; see CheckTableChange
  Advice advice;                     // warnings and notes; CheckTableChange and AddChanges only

  // The edits that `finding`, one of this table, refers to.
  const std::vector<Edit>& EditsFor(const Finding& finding) const { return IsAdvice(finding) ? advice.edits : changes->edits; }

  // Whether a warning or note is left out of reports: another change of its element is refused, and the refusal is not waived.
  // A waiver of the refusal does not cover the warning.
  bool IsHidden(const Finding& finding) const;
};

// A table under two schemas, and what to find out about it.
struct TableCheck {
  Pair sources;  // the first has the table
  std::string table;
  PartialSettings given;                    // absent settings are found in the old source (ResolveSettings)
  bool is_alone = false;                    // checked against itself only to see whether it may stay as it is
  bool is_unchanged = false;                // known from AreAllUnchanged
  std::size_t max_findings = kMaxFindings;  // at least 1
  bool wants_allowed_changes = false;       // the changes of an allowed table; the verdict alone is much cheaper
  bool wants_suggestions = true;            // a suggestion for each finding
  bool wants_fixes = false;                 // with wants_suggestions: edits of the new file for each finding; expensive
  LPVESKCATEGORYINST log;                   // not null
};

// The whole check of a table, with warnings and notes. A refused table has changes and findings, and what else `check` wants. An
// allowed table has changes only if `check` wants them: otherwise the cost is that of the checker alone, and no model of the
// table is built.
TableResult CheckTableChange(const TableCheck& check);

// The same in three steps, for the tables of one call. First the verdict alone: a result without changes.
TableResult CheckVerdict(const TableCheck& check);

// Then the changes, if the table is refused or `check` wants them, without suggestions. Then warnings and notes, with theirs.
// `shared` is for the tables of one pair of sources; null: none.
void AddChanges(const TableCheck& check, SharedSearches* shared, TableResult& result);

// Then a suggestion for each refusal, and its fix with `with_fixes`; nothing for a table without refusals. Texts of another table
// (Changes::borrows_texts) are replaced by those of this one, and all other members stay. REQUIRES: the changes were found with
// the same `max_findings`.
void AddSuggestions(TableResult& result, std::size_t max_findings, bool with_fixes, SuggestionWork& work);

// A table's name in each file; the names differ only if the destination has another name.
struct TableNames {
  std::string first;
  std::string second;
};

// Runs one operation of a new checker on a table of the first file: `run` calls the operation and returns its result code. The
// result has no changes and no settings.
TableResult CheckOperation(const Pair& pair, const TableNames& table, const std::function<int(ModifyTable&)>& run);

// The result for a table that only the new file has: nothing to compare it with, and a warning if the checker refuses it as it
// is. Absent settings are found in the source.
TableResult NewTable(const Source& source, const std::string& table, const PartialSettings& given);

}  // namespace korvel
