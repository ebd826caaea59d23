// Tested by tests/tool/history_format_test.cpp.
#include "report/result/released_tables.h"

#include <map>

namespace korvel {
namespace {

void VisitLocations(TableResult& table, auto visit) {
  const auto visit_both = [&](auto& placed) {
    visit(placed.old_location);
    visit(placed.new_location);
  };
  visit(table.declared);
  if (table.changes) {
    for (Edit& edit : table.changes->edits) visit_both(edit);
    for (Finding& finding : table.changes->findings) visit_both(finding);
  }
  for (Edit& edit : table.advice.edits) visit_both(edit);
  for (Finding& finding : table.advice.findings) visit_both(finding);
}

}  // namespace

std::vector<std::shared_ptr<const ReleasedSource>> ReleaseSources(std::vector<TableResult>& tables) {
  std::map<const Source*, std::vector<Location>> used;
  for (TableResult& table : tables) {
    for (const Source* const source : {table.first, table.second}) {
      if (source != nullptr) used[source];
    }
    VisitLocations(table, [&](const Location& location) {
      if (location) used[location.source].push_back(location);
    });
  }
  std::map<const Source*, const Source*> released;
  std::vector<std::shared_ptr<const ReleasedSource>> kept;
  for (const auto& [source, locations] : used) {
    kept.push_back(ReleaseExcept(*source, locations));
    released[source] = kept.back().get();
  }
  released[nullptr] = nullptr;
  for (TableResult& table : tables) {
    table.first = released[table.first];
    table.second = released[table.second];
    VisitLocations(table, [&](Location& location) { location.source = released[location.source]; });
  }
  return kept;
}

}  // namespace korvel
