// One finding of a report as text. Tested by tests/tool/explain_finding_test.cpp.
#include <algorithm>

#include "base/text.h"
#include "report/render/finding_text.h"
#include "report/render/fix_hint.h"
#include "report/render/render.h"
#include "report/result/words.h"

namespace korvel {
namespace {

// "FILE:LINE:COLUMN: refused: table orders: -3 ERROR_VALUE_FIELD"
std::string TableLine(const TableResult& table, const TextRange* declared) {
  const int code = table.verdict.code;
  const bool has_code = table.status == Status::kRefused;
  return (declared == nullptr ? "" : ToText(*declared) + ": ") + WordOf(table.status) + ": " + TableAndBaseline(table) +
         (has_code ? ": " + std::to_string(code) + " " + CodeNameOf(code) : "") + "\n";
}

}  // namespace

ExplainedFinding RenderFinding(const Report& report, std::string_view fingerprint) {
  ExplainedFinding result;
  for (const ProjectFinding& finding : report.project) {
    if (finding.fingerprint == fingerprint)
      result = {ProjectFindingText(finding, false), finding.rule, 0, finding.waiver.has_value()};
  }
  const FoldedReport folded(report);
  const TextRanges ranges(LocationsOf(folded), Dumps::kHidden);
  std::vector<FoldedFinding> found;
  for (const FoldedFinding& one : folded.findings()) {
    if (one.finding->fingerprint != fingerprint) continue;
    const Verdict& verdict = one.finding->verdict;
    const bool is_waived = one.finding->waiver && (found.empty() || result.is_waived);
    result = {result.text + TableLine(*one.table, ranges.Find(one.table->declared)) + FindingText(folded, one, ranges, false),
              verdict.rule, verdict.code, is_waived};
    found.push_back(one);
  }
  result.text += FixHint(folded, found);
  return result;
}

}  // namespace korvel
