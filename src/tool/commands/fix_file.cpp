// Tested by tests/tool/suggest_test.cpp, suggest_baselines_test.cpp and suggest_waiver_test.cpp.
#include "tool/commands/fix_file.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "analysis/suggest/accepted_changes.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/waivers.h"
#include "report/result/report.h"
#include "report/result/summary.h"

namespace korvel::tool {
namespace {

// Each round fixes the file for each state. Usually the first one settles it.
constexpr int kMaxRounds = 4;

// A state with the waived changes made, and what to fix after it.
struct FixTask {
  const EarlierState* state;
  std::optional<Source> with_waived;  // nullopt: nothing is waived
  std::vector<TableQuestion> questions = {};

  const Source& OldSource() const { return with_waived ? *with_waived : state->input; }
};

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

}  // namespace

FixedFile FixFile(const std::vector<EarlierState>& states, Input new_input, std::string path, const CheckOptions& options,
                  const ProjectSet& projects, NothingAllowed& reasons) {
  std::vector<FixTask> tasks;
  tasks.reserve(states.size());
  for (const EarlierState& state : states) tasks.push_back(TaskFor(state, new_input));
  FixedFile file{std::move(new_input), std::move(path), {}};
  if (!FixForAll(tasks, file.input, file.suggestion)) {
    reasons.lines.push_back(OneLine(PathText(file.input.name)) +
                            ": error: no suggestion: found no version that is allowed after each baseline");
    file.suggestion = {};
    return file;
  }
  for (const FixTask& task : tasks) {
    if (task.with_waived) AddRefused(NotWaived(*task.state, file.suggestion, options, projects), file.suggestion.refused);
  }
  AddReasons(file, reasons);
  return file;
}

}  // namespace korvel::tool
