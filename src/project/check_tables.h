// Checks tables, several at a time, with the settings of a call and of its project.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/check_table_change.h"
#include "project/project.h"
#include "report/result/report.h"

namespace korvel {

// Which tables to check, and how. What it points to must outlive the check.
struct CheckOptions {
  std::vector<std::string> tables = {};     // empty: all
  PartialSettings given = {};               // for every table; they take precedence over those of the project
  const Project* project = nullptr;         // null: none
  std::size_t max_findings = kMaxFindings;  // of a table; at least 1
  bool wants_allowed_changes = false;       // the changes of allowed tables
  bool is_alone = false;                    // as in TableCheck
  LPVESKCATEGORYINST log = nullptr;         // REQUIRED: not null when tables are checked
  bool in_order = false;  // check one table after the other, so that log records come in the order of the tables
};

// Checks every wanted table of the first source, in its order; then come those that only the second has, as new. A structure that
// became a table is new. Not in parallel. Without suggestions: see AddSuggestions.
std::vector<TableResult> CheckTables(const Pair& pair, const CheckOptions& options);

// The wanted tables of a source that are not among `old_tables`.
std::vector<TableResult> NewTables(const Source& source, const std::vector<std::string_view>& old_tables,
                                   const CheckOptions& options);

// One of them.
TableResult CheckNewTable(const Source& source, const std::string& table, const CheckOptions& options);

// The two inputs of a report, which must outlive the pair.
Pair PairOf(const Report& report);

// A file without a table must not pass as checked: the fault of such a file.
InputFault NoTableFault(const Source& source);

// Checks tables and adds the results to the report in the order of the tables. Runs on several threads where that pays, unless
// `in_order` is set.
void CheckEachTable(Report& report, const std::vector<std::string>& tables, bool in_order,
                    const std::function<TableResult(const std::string&)>& check);

// The same for the whole check of tables of a pair, without suggestions. Tables that embed the same structures in the same way
// share one search for findings.
void CheckEachTable(Report& report, const Pair& pair, const std::vector<std::string>& tables, const CheckOptions& options);

// The same for the tables of a pair that `options` want, as SelectTables finds them; then come those that are new. Throws
// InputError as SelectTables.
void CheckWantedTables(Report& report, const Pair& pair, const CheckOptions& options);

// Finds suggestions for the refusals that the report lists, with fixes on request; those of the other tables stay empty, for
// nobody sees them. The search is limited for the whole report (SuggestionWork): it visits the tables in their order, and
// Changes::reached_work_limit says where it stopped. Runs on several threads where that pays; the result does not depend on their
// number. Waivers decide which findings are listed, so they come before.
void AddSuggestions(Report& report, bool with_fixes, SuggestionWork work = {});

}  // namespace korvel
