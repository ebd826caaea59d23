// Tested by tests/tool/reused_id_test.cpp.
#include "project/reused_id_waivers.h"

#include <algorithm>
#include <string>

#include "base/calendar.h"
#include "project/waiver_entry.h"
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

bool IsForReusedIds(const WaiverEntry& waiver) {
  return waiver.fault.empty() && waiver.form != WaiverForm::kBare && waiver.rule == kIdReusedAdvice.row.id;
}

}  // namespace

void WaiveReusedIds(const Project& project, std::vector<ReusedId>& reused_ids) {
  if (project.waivers.empty() || reused_ids.empty()) return;
  const std::string today = Today();
  for (const WaiverEntry& waiver : project.waivers) {
    if (!IsForReusedIds(waiver) || waiver.until < today) continue;
    const bool is_wide = waiver.form == WaiverForm::kWide;
    for (ReusedId& reused : reused_ids) {
      const bool is_better = !reused.waiver || (reused.waiver->is_wide && !is_wide);
      if (is_better && Covers(waiver, reused)) reused.waiver = {waiver.reason, waiver.until, is_wide};
    }
  }
}

void AddWaiverEntries(std::vector<ReusedId>& reused_ids) {
  for (ReusedId& reused : reused_ids) {
    WaiverEntry waiver;
    waiver.form = WaiverForm::kExact;
    waiver.rule = kIdReusedAdvice.row.id;
    waiver.table = reused.Path().table;
    waiver.path = reused.Path().path;
    waiver.change = reused.change;
    waiver.file = reused.file;
    waiver.fingerprint = reused.fingerprint;
    reused.waiver_entry = LinesOf(waiver);
  }
}

std::vector<ProjectFinding> ExpiredWaivers(const Project& project, const std::vector<ReusedId>& reused_ids) {
  std::vector<ProjectFinding> expired;
  if (project.waivers.empty() || reused_ids.empty()) return expired;
  const std::string today = Today();
  for (const WaiverEntry& waiver : project.waivers) {
    if (!IsForReusedIds(waiver) || waiver.until >= today) continue;
    const auto is_open = [&](const ReusedId& reused) { return !reused.waiver && Covers(waiver, reused); };
    if (std::ranges::none_of(reused_ids, is_open)) continue;
    expired.push_back({.rule = "waiver.expired",
                       .file = project.file,
                       .position = waiver.location,
                       .text = Describe(waiver) + " expired on " + waiver.until + "; the warning fails again",
                       .suggestion = "remove the waiver and give the field another id, or set a later day"});
  }
  return expired;
}

}  // namespace korvel
