// Tested by tests/tool/suggest_test.cpp, suggest_baselines_test.cpp and suggest_waiver_test.cpp.
#include "project/fix_file.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "analysis/suggest/accepted_changes.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/load_inputs.h"
#include "project/waivers.h"
#include "report/result/summary.h"

namespace korvel {
namespace {

// Each round fixes the file for each state. Usually the first one settles it.
constexpr int kMaxRounds = 4;

// Each attempt withholds more tables. Usually the second one succeeds.
constexpr int kMaxAttempts = 4;

// A state with the waived changes made, and what to fix after it.
struct FixTask {
  const EarlierState* state;
  std::optional<Source> with_waived;  // nullopt: nothing is waived
  std::vector<TableQuestion> questions = {};

  const Source& OldSource() const { return with_waived ? *with_waived : state->input; }
};

// Edits the text of the new file if possible; else writes a new one.
SchemaSuggestion FixSchema(const Input& old_input, const Input& new_input, const std::vector<TableQuestion>& questions,
                           const ReservedFields& reserved) {
  if (new_input.text) {
    SchemaSuggestion suggestion = SuggestSchema(old_input, new_input, questions, {}, reserved);
    if (suggestion.is_rewritten) return suggestion;
  }
  // SchemaFile has checked that its text can be read.
  return SuggestSchema(old_input, *SourceOfText(new_input.name, SchemaFile(new_input)), questions, {}, reserved);
}

// The changes of which all findings are waived, in every table.
std::set<AcceptedEdit> WaivedEdits(const std::vector<const TableResult*>& tables) {
  std::set<AcceptedEdit> waived;
  std::set<AcceptedEdit> open;
  for (const TableResult* const table : tables) {
    if (!table->changes) continue;
    for (const Finding& finding : table->changes->findings) {
      for (const std::size_t i : finding.edits) {
        (finding.waiver ? waived : open).insert(AcceptedEditOf(table->changes->edits[i]));
      }
    }
  }
  std::erase_if(waived, [&](const AcceptedEdit& edit) { return open.contains(edit); });
  return waived;
}

// Those that both the state and the new source have.
std::vector<std::string> ComparedTables(const EarlierState& state, const Source& new_source) {
  std::vector<std::string> tables;
  for (const TableResult* const table : state.tables) {
    if (table->status != Status::kNew && new_source.HasMeta(table->table)) tables.push_back(table->table);
  }
  return tables;
}

// The state after the waived changes, so that they are no changes any more.
std::optional<Source> WithWaived(const EarlierState& state, const Source& new_source) {
  const std::set<AcceptedEdit> waived = WaivedEdits(state.tables);
  if (waived.empty()) return std::nullopt;
  std::optional<Source> in_text = state.input;
  if (!in_text->text) in_text = SourceOfText(state.input.name, SchemaFile(state.input));
  std::optional<Source> result = WithAccepted(*in_text, new_source, ComparedTables(state, new_source), waived);
  if (result) return result;
  throw InputError{{ToolMessage(OneLine(new_source.name) + ": no suggestion can keep the waived changes")}};
}

FixTask TaskFor(const EarlierState& state, const Source& new_source) {
  FixTask task{&state, WithWaived(state, new_source)};
  for (const TableResult* const table : state.tables) {
    if (table->status == Status::kNew || IsWaived(*table)) continue;
    task.questions.push_back({table->table, ResolveSettings(table->settings, state.input, table->table)});
  }
  return task;
}

void AddRefused(std::vector<TableRefusal> more, std::vector<TableRefusal>& refused) {
  for (TableRefusal& one : more) {
    const bool is_known = std::ranges::any_of(refused, [&](const TableRefusal& other) { return other.table == one.table; });
    if (!is_known) refused.push_back(std::move(one));
  }
}

// The tables of the fixed version that are refused after the state itself, by changes that no waiver accepts.
std::vector<TableRefusal> NotWaived(const EarlierState& state, const SchemaSuggestion& fixed, CheckOptions options,
                                    const ProjectSet& projects) {
  const TableResult& first = *state.tables.front();
  options.project = projects[first.project];
  Source old_source = state.input;
  Source new_source = SourceOfText(first.second->name, fixed.text).value();
  old_source.path_in_project = (first.first == nullptr ? first.second : first.first)->path_in_project;
  new_source.path_in_project = first.second->path_in_project;
  std::vector<std::string> tables;
  for (const TableResult* const table : state.tables) {
    if (table->status != Status::kNew) tables.push_back(table->table);
  }
  Report report;
  CheckEachTable(report, {old_source, new_source}, tables, options);
  for (TableResult& table : report.tables) table.project = first.project;
  if (options.project != nullptr) ApplyWaivers(*options.project, first.project, report);
  std::vector<TableRefusal> refused;
  for (const TableResult& table : report.tables) {
    if (table.status == Status::kRefused && !IsWaived(table)) refused.push_back({table.table, table.verdict, {}});
  }
  return refused;
}

// The fields of the states themselves, which a waived change or another state may lack.
ReservedFields ReservedBy(const std::vector<FixTask>& tasks, const Source& new_source) {
  ReservedFields reserved;
  for (const FixTask& task : tasks) {
    if (tasks.size() == 1 && !task.with_waived) continue;
    Reserve(task.state->input, new_source, ComparedTables(*task.state, new_source), reserved);
  }
  return reserved;
}

// Whether the file settled. Otherwise the states need different versions of it.
bool FixForAll(const std::vector<FixTask>& tasks, const Input& new_input, SchemaSuggestion& fixed) {
  const ReservedFields reserved = ReservedBy(tasks, new_input);
  Source current = new_input;
  for (int round = 0; round < kMaxRounds; ++round) {
    bool is_settled = true;
    fixed.refused.clear();
    for (const FixTask& task : tasks) {
      SchemaSuggestion one = FixSchema(task.OldSource(), current, task.questions, reserved);
      AddRefused(std::move(one.refused), fixed.refused);
      fixed.reached_work_limit = fixed.reached_work_limit || one.reached_work_limit;
      fixed.text = std::move(one.text);
      if (!one.is_changed) continue;
      fixed.is_changed = true;
      is_settled = false;
      if (tasks.size() > 1) current = SourceOfText(current.name, fixed.text).value();
    }
    if (is_settled || tasks.size() == 1) return true;
  }
  return false;
}

bool HasWaiver(const EarlierState& state) {
  return std::ranges::any_of(state.tables, [](const TableResult* table) {
    return table->changes &&
           std::ranges::any_of(table->changes->findings, [](const Finding& one) { return one.waiver.has_value(); });
  });
}

// Whether the state allows the table of the new file, or waivers accept its change.
bool Accepts(const EarlierState& state, const std::string& table) {
  const auto found = std::ranges::find(state.tables, table, &TableResult::table);
  return found != state.tables.end() && ((*found)->status != Status::kRefused || IsWaived(**found));
}

// Adds the tables that the states themselves refuse. Returns those for which this version must not be written: it did not settle,
// or a state refuses them that accepted the new file, or for which they seemed to be fixed.
std::set<std::string> CheckFixed(const std::vector<FixTask>& tasks, bool is_settled, const std::set<std::string>& withheld,
                                 const CheckOptions& options, const ProjectSet& projects, SchemaSuggestion& fixed) {
  std::set<std::string> expected = withheld;
  for (const TableRefusal& one : fixed.refused) expected.insert(one.table);
  std::set<std::string> broken;
  for (const FixTask& task : tasks) {
    if (tasks.size() == 1 && !HasWaiver(*task.state)) continue;
    std::vector<TableRefusal> refused = NotWaived(*task.state, fixed, options, projects);
    for (const TableRefusal& one : refused) {
      const bool is_expected = is_settled && (tasks.size() == 1 || expected.contains(one.table));
      if (!is_expected || Accepts(*task.state, one.table)) broken.insert(one.table);
    }
    AddRefused(std::move(refused), fixed.refused);
  }
  return broken;
}

// Tables without a version for all states are withheld: they keep their text, and the others are fixed. If that does not help,
// the file stays as it is.
SchemaSuggestion FixWherePossible(std::vector<FixTask> tasks, const Input& new_input, const CheckOptions& options,
                                  const ProjectSet& projects) {
  std::set<std::string> withheld;
  bool gives_up = false;
  for (int attempt = 1;; ++attempt) {
    SchemaSuggestion fixed;
    const bool is_settled = FixForAll(tasks, new_input, fixed);
    std::set<std::string> broken = CheckFixed(tasks, is_settled, withheld, options, projects, fixed);
    if (gives_up || (is_settled && broken.empty())) {
      for (TableRefusal& one : fixed.refused) {
        if (!one.suggestions.empty() || !(gives_up || withheld.contains(one.table))) continue;
        one.suggestions.emplace_back(tasks.size() > 1 ? "found no version that is allowed after each baseline"
                                                      : "found no version after which all other tables stay allowed or waived");
      }
      return fixed;
    }
    gives_up = attempt == kMaxAttempts || std::ranges::includes(withheld, broken);
    withheld.merge(broken);
    for (FixTask& task : tasks) {
      std::erase_if(task.questions, [&](const TableQuestion& one) { return gives_up || withheld.contains(one.table); });
    }
  }
}

}  // namespace

std::vector<EarlierState> EarlierStatesOf(const std::vector<const ComparedFile*>& states, const Report& report, Git& git) {
  std::vector<EarlierState> earlier;
  for (const ComparedFile* const file : states) {
    std::vector<const TableResult*> tables;
    for (const TableResult& table : TablesOf(*file, report)) {
      if (!(file->is_unchanged && table.status == Status::kRefused)) tables.push_back(&table);
    }
    if (!file->old_name.empty() && !tables.empty()) earlier.push_back({LoadInput(file->old_name, git), std::move(tables)});
  }
  return earlier;
}

SchemaSuggestion FixFile(const std::vector<EarlierState>& states, const Input& new_input, const CheckOptions& options,
                         const ProjectSet& projects) {
  std::vector<FixTask> tasks;
  tasks.reserve(states.size());
  for (const EarlierState& state : states) tasks.push_back(TaskFor(state, new_input));
  return FixWherePossible(std::move(tasks), new_input, options, projects);
}

}  // namespace korvel
