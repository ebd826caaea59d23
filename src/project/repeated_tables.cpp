// Tested by tests/tool/lint_project_test.cpp.
#include "project/repeated_tables.h"

#include <map>
#include <string>
#include <utility>

#include "base/text.h"
#include "report/result/text_ranges.h"
#include "rule_docs/project_rules.h"

namespace korvel {
namespace {

// "schemas/a.xml:2:3", or only the file for an image.
std::string PlaceText(const TextRange& range) {
  return range.begin ? FileLineColumn(PathText(range.file), *range.begin) : PathText(range.file);
}

}  // namespace

std::vector<ProjectFinding> FindRepeatedTables(const std::vector<TableResult>& tables, bool fails_on_warnings) {
  std::map<std::pair<std::uint32_t, std::string>, const TableResult*> first_ones;
  std::vector<ProjectFinding> findings;
  for (const TableResult& table : tables) {
    const auto [found, is_new] = first_ones.emplace(std::pair(table.project, table.table), &table);
    const TableResult& first = *found->second;
    if (is_new || first.second == table.second) continue;
    const std::vector<std::optional<TextRange>> ranges = FindTextRanges({first.declared, table.declared});
    findings.push_back({.rule = kRepeatedTableRule.row.id,
                        .file = ranges[1]->file,
                        .position = ranges[1]->begin.value_or(qmx::LineColumn{}),
                        .text = "table " + QuoteWhole(table.table) + " is also declared at " + PlaceText(*ranges[0]),
                        .suggestion = "remove one of the two, or leave out its file with 'exclude' in the project file",
                        .level = fails_on_warnings ? ProjectFinding::Level::kError : ProjectFinding::Level::kWarning});
  }
  return findings;
}

}  // namespace korvel
