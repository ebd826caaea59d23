// The catalog of rules about project files, waivers and the limits of a report. Reports list them like findings, but the checker
// has no part in them.
#pragma once

#include <array>
#include <string_view>

#include "common/catalog.h"

namespace korvel {

struct ProjectRule {
  RefusalRow row;              // no code and no text, because the checker reports nothing
  std::string_view level;      // "error" or "warning"; that of a finding may be another
  bool can_be_waived = false;  // by rule and file

  bool IsWarning() const { return level == "warning"; }
};

inline constexpr ProjectRule kReportLimitRule{
    {"report.limit", 0, "", "a table has findings that are not listed, because a limit was reached"}, "error"};
inline constexpr ProjectRule kNoLongerCheckedRule{
    {"project.no-longer-checked", 0, "", "the project file no longer selects a schema file that it selected before"},
    "error",
    true};
inline constexpr ProjectRule kUnreadableProjectRule{
    {"project.unreadable", 0, "", "a project file of the baseline cannot be read"}, "error", true};
inline constexpr ProjectRule kRepeatedTableRule{
    {"project.repeated-table", 0, "", "two schema files of a project declare the same table"}, "warning"};
inline constexpr ProjectRule kSettingsChangedRule{
    {"project.settings-changed", 0, "", "a project file has different settings than before"}, "warning", true};
inline constexpr ProjectRule kWaiverExpiredRule{{"waiver.expired", 0, "", "a waiver in the project file has expired"}, "error"};
inline constexpr ProjectRule kWaiverMalformedRule{{"waiver.malformed", 0, "", "a waiver in the project file is invalid"},
                                                  "error"};
inline constexpr ProjectRule kWaiverUnusedRule{{"waiver.unused", 0, "", "a waiver in the project file matches no finding"},
                                               "warning"};

// All of them.
inline constexpr std::array kProjectRules{&kNoLongerCheckedRule,   &kRepeatedTableRule, &kSettingsChangedRule,
                                          &kUnreadableProjectRule, &kReportLimitRule,   &kWaiverExpiredRule,
                                          &kWaiverMalformedRule,   &kWaiverUnusedRule};

// The rule of that id, or null.
const ProjectRule* FindProjectRule(std::string_view id);

}  // namespace korvel
