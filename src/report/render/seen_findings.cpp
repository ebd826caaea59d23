// Tested by tests/tool/history_text_test.cpp.
#include "report/render/seen_findings.h"

#include <string_view>

#include "base/text.h"
#include "report/result/words.h"

namespace korvel {
namespace {

// What is the same for the same finding, whatever the versions and their files.
std::string KeyOf(const FoldedReport& step, const FoldedFinding& folded) {
  const Finding& finding = *folded.finding;
  std::vector<std::string> parts = {folded.table->table, finding.path, finding.verdict.rule, finding.verdict.text};
  for (const std::size_t i : finding.edits) {
    const Edit& edit = folded.table->EditsFor(finding)[i];
    parts.insert(parts.end(), {DescribeIn("", edit), edit.before, edit.after});
  }
  if (finding.waiver) parts.push_back(ToText(*finding.waiver));
  for (const std::string& also : AlsoOf(step, folded)) parts.push_back("also " + also);
  return Join(parts, std::string_view("\0", 1));
}

}  // namespace

std::vector<std::size_t> SeenFindings::Add(const FoldedReport& step, std::size_t number) {
  std::vector<std::size_t> seen;
  for (const FoldedFinding& folded : step.findings()) {
    const auto [known, is_new] = first_.try_emplace(KeyOf(step, folded), number);
    seen.push_back(is_new ? 0 : known->second);
  }
  return seen;
}

}  // namespace korvel
