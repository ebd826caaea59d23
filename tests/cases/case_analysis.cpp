#include "case_analysis.h"
#include "analysis/findings/run_checker.h"

#include <stdexcept>
#include <utility>

#include "analysis/check_table_change.h"
#include "analysis/findings/findings.h"
#include "schema/source.h"
#include "vesk/closed_category.h"

namespace cases {
namespace {

std::unique_ptr<korvel::Source> ReadSource(const std::string& name, const std::string& file) {
  std::optional<korvel::Source> source = korvel::SourceOfText(file, ReadFile(Folder(name) / file));
  if (!source) throw std::runtime_error(name + "/" + file + " is not a schema");
  return std::make_unique<korvel::Source>(std::move(*source));
}

void FindChanges(const korvel::Source& old_source, const korvel::Source& new_source, const std::string& table,
                 const korvel::PartialSettings& given, Analysis& analysis) {
  if (!old_source.HasMeta(table)) {
    const korvel::Settings settings = ResolveSettings(given, old_source, table);
    const korvel::Verdict verdict = korvel::RunChecker(old_source.Library(), new_source.Library(), table, settings);
    analysis.changes = korvel::FindRemovedTable({old_source, new_source, table, settings}, verdict);
    return;
  }
  vesk::ClosedCategory log;
  korvel::TableResult result = korvel::CheckTableChange({.sources = {old_source, new_source},
                                                         .table = table,
                                                         .given = given,
                                                         .wants_allowed_changes = true,
                                                         .wants_fixes = true,
                                                         .log = log.handle()});
  analysis.changes = std::move(*result.changes);
  analysis.advice = std::move(result.advice);
}

}  // namespace

Analysis Analyze(const std::string& name, const Settings& settings) {
  Analysis analysis{ReadSource(name, "old.xml"), ReadSource(name, "new.xml"), {}, {}, {}};
  const korvel::Source& old_source = *analysis.old_source;
  const korvel::Source& new_source = *analysis.new_source;
  FindChanges(old_source, new_source, settings.table, ToCheckerSettings(settings), analysis);
  if (analysis.changes.edits.empty()) return analysis;
  const korvel::Difference difference(old_source, new_source, settings.table);
  for (std::size_t edit = 0; edit < difference.edits().size(); ++edit) analysis.needs.push_back(difference.Needs(edit));
  return analysis;
}

}  // namespace cases
