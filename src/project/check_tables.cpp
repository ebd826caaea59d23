// Tested by tests/tool/check_test.cpp.
#include "project/check_tables.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <span>
#include <thread>

#include "analysis/diff/same_table.h"
#include "analysis/findings/shared_searches.h"
#include "base/parallel.h"
#include "report/result/fold.h"

namespace korvel {
namespace {

bool IsWanted(const CheckOptions& options, std::string_view table) {
  return options.tables.empty() || std::ranges::find(options.tables, table) != options.tables.end();
}

std::vector<TableCheck> ChecksFor(const Pair& pair, const std::vector<std::string>& tables, const CheckOptions& options) {
  const bool is_unchanged = AreAllUnchanged(pair.first, pair.second);
  std::vector<TableCheck> checks;
  checks.reserve(tables.size());
  for (const std::string& table : tables) {
    checks.push_back({.sources = pair,
                      .table = table,
                      .given = GivenFor(options.given, options.project, table),
                      .is_alone = options.is_alone,
                      .is_unchanged = is_unchanged,
                      .max_findings = options.max_findings,
                      .wants_allowed_changes = options.wants_allowed_changes,
                      .wants_suggestions = false,
                      .log = options.log});
  }
  return checks;
}

bool IsRefused(const TableResult& result) { return result.status == Status::kRefused; }

std::optional<std::string> KeyOf(const TableCheck& check) {
  const Settings settings = ResolveSettings(check.given, check.sources.first, check.table);
  return SearchKeyOf({check.sources.first, check.sources.second, check.table, settings}, check.max_findings);
}

// The changes and the advice of the refused tables. The first table of each key is searched before the others, so that the result
// does not depend on the number of threads.
void AddChangesOfRefused(const std::vector<TableCheck>& checks, std::span<TableResult> results, std::size_t threads) {
  std::vector<std::size_t> first;
  std::vector<std::size_t> others;
  std::set<std::string> keys;
  const bool is_shared = std::ranges::count_if(results, IsRefused) > 1;
  for (std::size_t i = 0; i < checks.size(); ++i) {
    if (!IsRefused(results[i])) continue;
    const std::optional<std::string> key = is_shared ? KeyOf(checks[i]) : std::nullopt;
    (key && !keys.insert(*key).second ? others : first).push_back(i);
  }
  SharedSearches shared;
  for (const std::vector<std::size_t>* tables : {&first, &others}) {
    ForEach(tables->size(), threads,
            [&](std::size_t i) { AddChanges(checks[(*tables)[i]], is_shared ? &shared : nullptr, results[(*tables)[i]]); });
  }
}

void CheckAll(const std::vector<TableCheck>& checks, std::span<TableResult> results, bool in_order, std::size_t threads) {
  ForEach(checks.size(), in_order ? 1 : threads, [&](std::size_t i) {
    results[i] = CheckVerdict(checks[i]);
    if (!IsRefused(results[i])) AddChanges(checks[i], nullptr, results[i]);
  });
  AddChangesOfRefused(checks, results, threads);
}

// A large pair is worth several threads.
std::size_t ThreadsFor(std::size_t bytes) { return bytes >= kWorthAThread ? std::thread::hardware_concurrency() : 1; }

}  // namespace

std::vector<TableResult> CheckTables(const Pair& pair, const CheckOptions& options) {
  std::vector<std::string> tables;
  for (const std::string_view table : pair.first.tables) {
    if (IsWanted(options, table)) tables.emplace_back(table);
  }
  const std::vector<TableCheck> checks = ChecksFor(pair, tables, options);
  std::vector<TableResult> results(checks.size());
  CheckAll(checks, results, options.in_order, 1);
  std::ranges::move(NewTables(pair.second, pair.first.tables, options), std::back_inserter(results));
  return results;
}

std::vector<TableResult> NewTables(const Source& source, const std::vector<std::string_view>& old_tables,
                                   const CheckOptions& options) {
  const std::set<std::string_view> known(old_tables.begin(), old_tables.end());
  std::vector<TableResult> results;
  for (const std::string_view table : source.tables) {
    if (IsWanted(options, table) && !known.contains(table)) results.push_back(CheckNewTable(source, std::string(table), options));
  }
  return results;
}

TableResult CheckNewTable(const Source& source, const std::string& table, const CheckOptions& options) {
  return NewTable(source, table, GivenFor(options.given, options.project, table));
}

InputFault NoTableFault(const Source& source) {
  return FaultAbout(FaultKind::kNoTable, source.name, "no table (a meta with a primary key)");
}

Pair PairOf(const Report& report) { return {*report.inputs[0].source, *report.inputs[1].source}; }

void CheckEachTable(Report& report, const std::vector<std::string>& tables, bool in_order,
                    const std::function<TableResult(const std::string&)>& check) {
  const std::size_t first = report.tables.size();
  report.tables.resize(first + tables.size());
  ForEach(tables.size(), in_order ? 1 : ThreadsFor(report.inputs.front().source->metalib.size()),
          [&](std::size_t i) { report.tables[first + i] = check(tables[i]); });
}

void CheckEachTable(Report& report, const Pair& pair, const std::vector<std::string>& tables, const CheckOptions& options) {
  const std::size_t first = report.tables.size();
  report.tables.resize(first + tables.size());
  const std::vector<TableCheck> checks = ChecksFor(pair, tables, options);
  CheckAll(checks, std::span(report.tables).subspan(first), options.in_order, ThreadsFor(pair.first.metalib.size()));
}

void CheckWantedTables(Report& report, const Pair& pair, const CheckOptions& options) {
  const Selection selection = SelectTables(pair, options.tables);
  CheckEachTable(report, pair, selection.compared, options);
  for (const std::string& table : selection.added) report.tables.push_back(CheckNewTable(pair.second, table, options));
}

namespace {

// The tables with listed refusals, in the order of the report. Advice has its suggestions already.
std::vector<TableResult*> TablesWithFindings(Report& report) {
  const FoldedReport folded(report);
  std::vector<TableResult*> tables;
  for (std::size_t i = 0; i < report.tables.size(); ++i) {
    const std::span<const FoldedFinding> listed = folded.tables()[i].findings;
    const auto is_refusal = [](const FoldedFinding& one) { return !IsAdvice(*one.finding); };
    if (std::ranges::any_of(listed, is_refusal)) tables.push_back(&report.tables[i]);
  }
  return tables;
}

// Adds the work of a table that got `given` and left `after`. False, without a change, if it would have been limited by `work`.
bool TakeDone(const SuggestionWork& given, const SuggestionWork& after, SuggestionWork& work) {
  SuggestionWork taken = work;
  const bool is_done = !after.is_reached() && taken.search.Take(given.search.left() - after.search.left()) &&
                       taken.fixes.Take(given.fixes.left() - after.fixes.left());
  if (is_done) work = taken;
  return is_done;
}

// The tables get all work that is left, several at a time. What was left for a table in fact is known once those before it are
// done: if it was less than the table has used, its search is repeated. So the result is as if the tables came one after the
// other.
class SuggestionSearch {
 public:
  SuggestionSearch(std::size_t max_findings, bool with_fixes, SuggestionWork work)
      : max_findings_(max_findings), with_fixes_(with_fixes), work_(work) {}

  void Run(std::span<TableResult* const> tables) {
    const SuggestionWork given = work_;
    std::vector<SuggestionWork> after(tables.size(), given);
    if (!given.is_reached()) {
      ForEach(tables.size(), tables.size(), [&](std::size_t i) { Search(*tables[i], after[i]); });
    }
    for (std::size_t i = 0; i < tables.size(); ++i) {
      const bool was_reached = work_.is_reached();
      if (!TakeDone(given, after[i], work_)) Search(*tables[i], work_);
      if (tables[i]->changes) tables[i]->changes->reached_work_limit = work_.is_reached() && !was_reached;
    }
  }

 private:
  void Search(TableResult& table, SuggestionWork& work) const { korvel::AddSuggestions(table, max_findings_, with_fixes_, work); }

  std::size_t max_findings_;
  bool with_fixes_;
  SuggestionWork work_;
};

}  // namespace

void AddSuggestions(Report& report, bool with_fixes, SuggestionWork work) {
  const std::vector<TableResult*> tables = TablesWithFindings(report);
  std::size_t bytes = 0;
  for (const TableResult* table : tables) bytes += table->first->metalib.size();
  const std::size_t threads = ThreadsFor(bytes);
  SuggestionSearch search(report.max_findings, with_fixes, work);
  for (std::size_t begin = 0; begin < tables.size(); begin += threads) {
    search.Run(std::span(tables).subspan(begin, std::min(threads, tables.size() - begin)));
  }
}

}  // namespace korvel
