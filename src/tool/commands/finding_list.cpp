// Tested by tests/tool/waiver_test.cpp and explain_finding_test.cpp.
#include "tool/commands/finding_list.h"

#include <algorithm>

#include "base/text.h"
#include "project/waiver_entry.h"

namespace korvel::tool {

FindingList::FindingList(Report& report) {
  for (const auto& [table, finding] : FindingsOf(report)) {
    if (std::ranges::find(fingerprints_, finding->fingerprint) != fingerprints_.end()) continue;
    fingerprints_.push_back(finding->fingerprint);
    descriptions_.push_back(OneLine(table->second->path_in_project) + ": table " + OneLine(table->table) + ": " +
                            OneLine(AcceptedChange(*table, *finding)));
  }
  for (const ProjectFinding& finding : report.project) {
    if (finding.fingerprint.empty()) continue;
    fingerprints_.push_back(finding.fingerprint);
    descriptions_.push_back(OneLine(finding.text));
  }
}

std::vector<std::string> FindingList::Lines(std::string_view prefix) const {
  constexpr std::size_t kMaxNamed = 20;
  std::vector<std::string> lines = {prefix.empty() ? "The check has these findings:" : "They are:"};
  std::size_t number = 0;
  for (std::size_t i = 0; i < fingerprints_.size(); ++i) {
    if (!fingerprints_[i].starts_with(prefix) || ++number > kMaxNamed) continue;
    lines.push_back("  " + std::string(fingerprints_[i]) + "  " + descriptions_[i]);
  }
  if (number == 0) return {"The check has no findings."};
  if (number > kMaxNamed) lines.push_back("  and " + std::to_string(number - kMaxNamed) + " more");
  return lines;
}

}  // namespace korvel::tool
