// Tested by tests/tool/fix_command_test.cpp.
#include "report/render/fix_hint.h"

#include <algorithm>

#include "report/result/words.h"

namespace korvel {

std::string FixHint(const FoldedReport& report, std::span<const FoldedFinding> findings) {
  const std::string& command = report.report().fix_command;
  const bool compares_files = report.report().baselines.empty();
  // It cannot fix what is refused without changes, nor restore a deleted file.
  const auto is_fixable = [&](const FoldedFinding& one) {
    const bool is_restored = one.table->removed && (compares_files || !one.table->renamed_to.empty());
    return (!one.finding->edits.empty() || is_restored) && !IsAdvice(*one.finding) && !one.finding->waiver;
  };
  if (command.empty() || VerdictOf(Summarize(report)) != OverallVerdict::kRefused) return "";
  return std::ranges::any_of(findings, is_fixable) ? "To fix what is refused: " + command + "\n" : "";
}

}  // namespace korvel
