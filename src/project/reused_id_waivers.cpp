// Tested by tests/tool/warning_test.cpp.
#include "project/reused_id_waivers.h"

#include <algorithm>
#include <string>

#include "base/calendar.h"
#include "rule_docs/advice.h"

namespace korvel {
namespace {

bool Names(const WaiverEntry& waiver, const FieldPath& field) {
  if (waiver.table != field.table) return false;
  return field.path == (waiver.form == WaiverForm::kWide ? field.table + "." + waiver.entry : waiver.path);
}

bool Covers(const WaiverEntry& waiver, const ReusedId& reused) {
  const bool is_same_change = waiver.change == reused.change && waiver.file == reused.file &&
                              (waiver.fingerprint.empty() || waiver.fingerprint == reused.fingerprint);
  if (waiver.form != WaiverForm::kWide && !is_same_change) return false;
  return std::ranges::any_of(reused.paths, [&](const FieldPath& field) { return Names(waiver, field); });
}

}  // namespace

void WaiveReusedIds(const Project& project, std::vector<ReusedId>& reused_ids) {
  if (project.waivers.empty() || reused_ids.empty()) return;
  const std::string today = Today();
  for (const WaiverEntry& waiver : project.waivers) {
    const bool is_valid = waiver.fault.empty() && waiver.form != WaiverForm::kBare && waiver.until >= today;
    if (!is_valid || waiver.rule != kIdReusedAdvice.row.id) continue;
    const bool is_wide = waiver.form == WaiverForm::kWide;
    for (ReusedId& reused : reused_ids) {
      const bool is_better = !reused.waiver || (reused.waiver->is_wide && !is_wide);
      if (is_better && Covers(waiver, reused)) reused.waiver = {waiver.reason, waiver.until, is_wide};
    }
  }
}

}  // namespace korvel
