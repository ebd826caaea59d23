// Tested by tests/tool/waiver_test.cpp.
#include "project/waivers.h"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <vector>

#include "base/calendar.h"
#include "base/did_you_mean.h"
#include "base/text.h"
#include "rule_docs/rule_docs.h"

namespace korvel {
namespace {

bool IsFingerprint(std::string_view text) {
  return text.size() == 16 && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

// Why no finding can have this rule; empty if one can.
std::string FaultOfRule(const std::string& rule) {
  if (rule.empty() || FindRefusal(rule) != nullptr) return "";
  std::vector<std::string_view> known;
  for (const RefusalRow* row : AllRefusals()) known.emplace_back(row->id);
  return "rule is " + Quote(rule) + DidYouMean(rule, known) + "; allowed: what 'korvelcheck rules' lists";
}

bool NamesTheSame(const WaiverEntry& one, const WaiverEntry& other) {
  return std::tie(one.fingerprint, one.table, one.rule, one.entry) ==
         std::tie(other.fingerprint, other.table, other.rule, other.entry);
}

// Otherwise the second one would be reported as unused, or would hide that the first one has expired.
std::string FaultOfRepeated(const WaiverEntry& waiver, const Project& project) {
  const auto other = std::ranges::find_if(project.waivers, [&](const WaiverEntry& one) { return NamesTheSame(one, waiver); });
  if (other == project.waivers.end()) return "";
  return project.file + ":" + std::to_string(other->location.line) + " already has a waiver for this finding; allowed: one";
}

// The path of a finding without the table in front, "" for the table itself.
std::string EntryOf(const std::string& path, const std::string& table) {
  return path.starts_with(table + ".") ? path.substr(table.size() + 1) : "";
}

bool Matches(const WaiverEntry& waiver, const std::string& table, const Finding& finding) {
  if (!waiver.fingerprint.empty()) return waiver.fingerprint == finding.fingerprint;
  return waiver.table == table && waiver.rule == finding.verdict.rule && waiver.entry == EntryOf(finding.path, table);
}

// Returns whether the waiver matches a finding.
bool Apply(const WaiverEntry& waiver, Report& report) {
  bool is_used = false;
  for (TableResult& table : report.tables) {
    if (!table.changes) continue;
    for (Finding& finding : table.changes->findings) {
      if (!Matches(waiver, table.table, finding)) continue;
      is_used = true;
      if (!finding.waiver) finding.waiver = {waiver.reason, waiver.until};
    }
  }
  return is_used;
}

// "the waiver of ..."
std::string Describe(const WaiverEntry& waiver) {
  if (!waiver.fingerprint.empty()) return "the waiver of " + waiver.fingerprint;
  const std::string entry = waiver.entry.empty() ? "" : ", entry " + Quote(waiver.entry);
  return "the waiver of " + Quote(waiver.rule) + " in table " + Quote(waiver.table) + entry;
}

}  // namespace

std::string FaultOf(const WaiverEntry& waiver, const WaiverKeys& keys, const Project& project) {
  const bool has_fingerprint = !waiver.fingerprint.empty();
  const bool has_triple = !waiver.table.empty() && !waiver.rule.empty() && keys.has_entry;
  if (has_fingerprint && (keys.has_table || keys.has_rule || keys.has_entry))
    return "it has both a fingerprint and table, rule or entry; allowed: one of the two";
  if (!has_fingerprint && !has_triple) return "it must name a fingerprint, or table, rule and entry";
  if (has_fingerprint && !IsFingerprint(waiver.fingerprint)) {
    return "fingerprint is " + Quote(waiver.fingerprint) + "; allowed: 16 hexadecimal digits, as shown in reports";
  }
  if (std::string fault = FaultOfRule(waiver.rule); !fault.empty()) return fault;
  if (waiver.reason.find_first_not_of(" \t\r\n") == std::string::npos)
    return "it has no reason; allowed: a string that is not blank";
  if (waiver.until.empty()) return "it has no last day; allowed: until = \"2027-01-31\"";
  if (!IsDay(waiver.until)) return "until is " + Quote(waiver.until) + "; allowed: a day like 2027-01-31";
  return FaultOfRepeated(waiver, project);
}

void ApplyWaivers(const Project& project, bool all_compared, Report& report) {
  const std::string today = project.waivers.empty() ? "" : Today();
  for (const WaiverEntry& waiver : project.waivers) {
    const auto note = [&](const char* rule, const std::string& text, const char* suggestion) {
      report.project.push_back({rule, project.file, waiver.location, text, suggestion});
    };
    if (!waiver.fault.empty()) {
      note("waiver.malformed", "invalid waiver: " + waiver.fault,
           "complete the waiver or remove it; 'korvelcheck waive' adds valid ones");
    } else if (waiver.until < today) {
      // Without today's date, so that the text is the same tomorrow.
      note("waiver.expired", Describe(waiver) + " expired on " + waiver.until,
           "remove the waiver and the change, or set a later day");
    } else if (!Apply(waiver, report) && all_compared) {
      note("waiver.unused", Describe(waiver) + " matches no finding", "remove it");
    }
  }
}

}  // namespace korvel
