// Tested by tests/lsp/features_test.cpp.
#include "lsp/code_lens.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>
#include <utility>

#include "base/text.h"
#include "lsp/outline.h"
#include "lsp/symbols.h"
#include "qmx/qmx_metalib_kernel.h"
#include "report/result/words.h"
#include "schema/model.h"

namespace korvel::lsp {
namespace {

// Entries that the first baseline with the table does not have.
std::size_t NewEntries(const WellFormed& state, const std::string& table) {
  for (const BaselineFile& one : state.baselines) {
    if (!one.source.HasMeta(table)) continue;
    const auto entries = [&](const Source& source) {
      return MetaOf(source.Library(), qmx_get_meta_by_name(source.Library(), table.c_str())).entries;
    };
    std::set<std::string> known;
    for (EntryModel& entry : entries(one.source)) known.insert(std::move(entry.name));
    return static_cast<std::size_t>(
        std::ranges::count_if(entries(*state.source), [&](const EntryModel& entry) { return !known.contains(entry.name); }));
  }
  return 0;
}

// Findings of one level that are not waived. A table that is refused as a whole counts once.
std::size_t NumberOf(const DocumentCheck& check, const std::string& table, Level level) {
  std::size_t number = 0;
  for (const TableResult& one : check.report.tables) {
    if (one.table != table) continue;
    const auto is_open = [&](const Finding& finding) { return finding.level == level && !finding.waiver; };
    const bool is_refusal = level == Level::kRefused;
    if (is_refusal && one.status == Status::kRefused && (!one.changes || one.changes->findings.empty())) ++number;
    if (is_refusal && one.changes) number += static_cast<std::size_t>(std::ranges::count_if(one.changes->findings, is_open));
    if (!is_refusal) number += static_cast<std::size_t>(std::ranges::count_if(one.advice.findings, is_open));
  }
  return number;
}

std::string TitleOf(const WellFormed& state, const std::string& table) {
  std::string title = Counted(qmx_get_meta_by_name(state.source->Library(), table.c_str())->iUnitSize, "byte");
  const auto add = [&](std::size_t number, const std::string& what) {
    if (number > 0) title += ", " + what;
  };
  const std::size_t refused = NumberOf(*state.check, table, Level::kRefused);
  const std::size_t warnings = NumberOf(*state.check, table, Level::kWarning);
  const std::size_t added = NewEntries(state, table);
  add(refused, std::to_string(refused) + " refused");
  add(warnings, Counted(warnings, "warning"));
  add(added, std::to_string(added) + " new");
  return title;
}

}  // namespace

Json CodeLenses(Session& session, const Json& params) {
  const Document& document = session.documents.Of(params);
  Json lenses = Json::array();
  const WellFormed* const state = document.IsProjectFile() ? nullptr : session.StateOf(document);
  if (state == nullptr || !state->source) return lenses;
  const Outline outline(document.text.bytes());
  for (const ElementIndex structure : StructuresOf(outline)) {
    const std::string table = outline.ValueOf(structure, "name");
    if (std::ranges::find(state->source->tables, table) == state->source->tables.end()) continue;
    lenses.push_back(
        {{"range", ToJson(document.text, outline.elements()[structure].tag())},
         {"command",
          {{"title", TitleOf(*state, table)}, {"command", kReportCommand}, {"arguments", Json::array({document.uri})}}}});
  }
  return lenses;
}

}  // namespace korvel::lsp
