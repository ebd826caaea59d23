// Tested by tests/tool/new_table_test.cpp.
#include "analysis/warnings/new_table.h"

#include <string>
#include <utility>

#include "analysis/findings/refusal_location.h"
#include "analysis/findings/run_checker.h"

namespace korvel {
namespace {

// "primary-key.missing: The checker's text"
std::string RefusalText(const Verdict& verdict) {
  const std::string rule = verdict.rule.empty() ? "code " + std::to_string(verdict.code) : verdict.rule;
  return verdict.text.empty() ? rule : rule + ": " + verdict.text;
}

}  // namespace

Advice FindNewTableWarning(const TableContext& context) {
  const Source& source = context.new_source;
  const Verdict verdict = RunChecker(source.Library(), source.Library(), context.table, context.settings);
  if (!verdict.Refused()) return {};
  Edit edit;
  edit.kind = EditKind::kTableAdded;
  edit.meta = context.table;
  edit.item = context.table;
  edit.after = RefusalText(verdict);
  edit.paths = {context.table};
  edit.path_count = 1;
  edit.new_location = LocateRefusal(source, context.table, verdict);
  Finding finding;
  finding.level = kNewTableAdvice.level;
  finding.edits = {0};
  finding.verdict.rule = kNewTableAdvice.row.id;
  finding.path = context.table;
  finding.new_location = edit.new_location;
  finding.suggestion = "change the table until 'korvelcheck lint' accepts it: " + LintSuggestion(source, context.table, verdict);
  Advice advice;
  advice.edits.push_back(std::move(edit));
  finding.fingerprint = FingerprintOf(source.path_in_project, source.LibraryName(), finding, advice.edits);
  advice.findings.push_back(std::move(finding));
  return advice;
}

}  // namespace korvel
