// Applies waivers. What one looks like is project_file.cpp's business. Held by tests/tool/waiver_test.cpp.
#include "project/waivers.h"

#include <algorithm>
#include <string>

#include "base/calendar.h"
#include "base/quote.h"

namespace korvel {
namespace {

// The path of a finding without the table in front, "" for the table itself.
std::string EntryOf(const std::string& path, const std::string& table) {
  return path.starts_with(table + ".") ? path.substr(table.size() + 1) : "";
}

bool IsFor(const WaiverEntry& waiver, const std::string& table, const Finding& finding) {
  if (!waiver.fingerprint.empty()) return waiver.fingerprint == finding.fingerprint;
  return waiver.table == table && waiver.rule == finding.verdict.rule && waiver.entry == EntryOf(finding.path, table);
}

// Whether there was a finding for it.
bool Apply(const WaiverEntry& waiver, Report& report) {
  bool is_used = false;
  for (TableResult& table : report.tables) {
    if (!table.changes) continue;
    for (Finding& finding : table.changes->findings) {
      if (!IsFor(waiver, table.table, finding)) continue;
      is_used = true;
      if (!finding.waiver) finding.waiver = {waiver.reason, waiver.until};
    }
  }
  return is_used;
}

// What a waiver is for, in words.
std::string NameOf(const WaiverEntry& waiver) {
  if (!waiver.fingerprint.empty()) return "the waiver of " + waiver.fingerprint;
  const std::string entry = waiver.entry.empty() ? "" : ", entry " + Quote(waiver.entry);
  return "the waiver of " + Quote(waiver.rule) + " in table " + Quote(waiver.table) + entry;
}

}  // namespace

void ApplyWaivers(const Project& project, bool all_compared, Report& report) {
  const std::string today = project.waivers.empty() ? "" : Today();
  for (const WaiverEntry& waiver : project.waivers) {
    const auto note = [&](const char* rule, const std::string& text, const char* suggestion) {
      report.project.push_back({rule, project.file, waiver.place, text, suggestion});
    };
    if (!waiver.fault.empty()) {
      note("waiver.malformed", "the waiver is none: " + waiver.fault,
           "complete the waiver or remove it; 'korvelcheck waive' writes whole ones");
    } else if (waiver.until < today) {
      // Without today's date: the fault is the same one tomorrow.
      note("waiver.expired", NameOf(waiver) + " held until " + waiver.until,
           "remove it, and the change with it; or decide again, with a later day");
    } else if (!Apply(waiver, report) && all_compared) {
      note("waiver.unused", NameOf(waiver) + " is for no finding", "remove it");
    }
  }
}

}  // namespace korvel
