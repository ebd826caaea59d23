// Tested by tests/tool/waiver_test.cpp.
#include "project/waivers.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "base/calendar.h"
#include "base/text.h"
#include "project/waiver_entry.h"
#include "report/result/issues.h"
#include "report/result/summary.h"

namespace korvel {
namespace {

constexpr char kReplace[] = "replace it with these lines";

// A moved file is known by both of its paths.
bool IsIn(const std::string& file, const TableResult& table) {
  return file == table.second->path_in_project || (table.first != nullptr && file == table.first->path_in_project);
}

// A new table has only the new library.
std::string LibraryOf(const TableResult& table) { return (table.first == nullptr ? table.second : table.first)->LibraryName(); }

// The fingerprint that a finding has in a file of this path.
std::string FingerprintIn(const std::string& file, const TableFinding& found) {
  const TableResult& table = *found.table;
  if (file == table.second->path_in_project) return found.finding->fingerprint;
  return FingerprintOf(file, LibraryOf(table), *found.finding, table.EditsFor(*found.finding));
}

bool HasOldFingerprint(const TableFinding& found, const std::string& fingerprint) {
  const TableResult& table = *found.table;
  return OldFingerprintOf(LibraryOf(table), *found.finding, table.EditsFor(*found.finding)) == fingerprint;
}

// Finds what one waiver covers.
class WaiverMatch {
 public:
  // `findings` are those that the project file at this position judges.
  WaiverMatch(const std::vector<TableFinding>& findings, const Report& report, std::size_t position, WaiverUse& use)
      : findings_(findings), report_(report), position_(position), use_(use), waiver_(*use.waiver) {}

  void Find() {
    if (waiver_.form == WaiverForm::kBare) {
      FindReplacement();
    } else if (!waiver_.fault.empty()) {
      Refuse(waiver_.fault, "complete the waiver or remove it; 'korvelcheck waive' adds valid ones");
    } else if (waiver_.form == WaiverForm::kFile) {
      FindProject();
    } else if (waiver_.form == WaiverForm::kWide) {
      FindWide();
    } else {
      FindExact();
    }
  }

 private:
  std::vector<TableFinding> Select(auto condition) const {
    std::vector<TableFinding> selected;
    std::ranges::copy_if(findings_, std::back_inserter(selected), condition);
    return selected;
  }

  bool HasRule(const TableFinding& found) const {
    const std::string& rule = found.finding->verdict.rule;
    return waiver_.rule == (rule.empty() ? refused_ : rule);
  }
  bool IsAtPath(const TableFinding& found) const {
    return waiver_.table == found.table->table && waiver_.path == found.finding->path;
  }

  // Whether the waiver names the file, or a directory above it.
  bool IsInPlace(const std::string& file) const {
    return waiver_.file == "." || waiver_.file == file || file.starts_with(waiver_.file + "/");
  }

  void FindProject() {
    for (std::size_t i = 0; i < report_.project.size(); ++i) {
      const ProjectFinding& finding = report_.project[i];
      if (finding.rule != waiver_.rule || finding.project != position_) continue;
      if (!std::ranges::all_of(finding.files, [&](const std::string& file) { return IsInPlace(file); })) continue;
      if (waiver_.fingerprint.empty() || waiver_.fingerprint == finding.fingerprint) {
        use_.project.push_back(i);
      } else {
        use_.instead = finding.text;
      }
    }
    if (!use_.project.empty()) use_.instead.clear();
  }

  void Refuse(std::string fault, std::string suggestion) {
    use_.state = WaiverState::kMalformed;
    use_.fault = std::move(fault);
    use_.suggestion = std::move(suggestion);
  }

  // The changes that a pre-existing refusal hides are not changes that its rule refuses.
  void FindWide() {
    use_.findings = Select([&](const TableFinding& found) {
      return waiver_.table == found.table->table && HasRule(found) && waiver_.entry == EntryOf(*found.table, *found.finding);
    });
    const auto hides_changes = [](const TableFinding& found) { return HidesChanges(*found.table, *found.finding); };
    for (const TableFinding& found : use_.findings) {
      if (hides_changes(found)) use_.instead = AcceptedChange(*found.table, *found.finding);
    }
    std::erase_if(use_.findings, hides_changes);
    if (!use_.findings.empty()) use_.instead.clear();
  }

  void FindExact() {
    const std::vector<TableFinding> same_rule =
        Select([&](const TableFinding& found) { return HasRule(found) && IsIn(waiver_.file, *found.table); });
    std::set<std::string> named;
    for (const TableFinding& found : same_rule) {
      if (!IsAtPath(found)) continue;
      const std::string change = AcceptedChange(*found.table, *found.finding);
      if (change == waiver_.change) {
        named.insert(FingerprintIn(waiver_.file, found));
      } else {
        use_.instead = change;
      }
    }
    if (!named.empty()) use_.instead.clear();
    if (!waiver_.fingerprint.empty() && !AgreesWith(named, same_rule)) return;
    if (!waiver_.fingerprint.empty() && named.empty() && !IsCompared(waiver_.table)) named.insert(waiver_.fingerprint);
    std::ranges::copy_if(same_rule, std::back_inserter(use_.findings), [&](const TableFinding& found) {
      return named.contains(FingerprintIn(waiver_.file, found)) && AcceptedChange(*found.table, *found.finding) == waiver_.change;
    });
  }

  bool IsCompared(const std::string& table) const {
    return std::ranges::any_of(report_.tables, [&](const TableResult& one) {
      return one.project == position_ && one.table == table && IsIn(waiver_.file, one);
    });
  }

  // Whether the fingerprint and the other keys name the same finding, as far as the report shows.
  bool AgreesWith(const std::set<std::string>& named, const std::vector<TableFinding>& same_rule) {
    if (named.contains(waiver_.fingerprint)) return true;
    if (!named.empty()) {
      Refuse("its fingerprint is " + waiver_.fingerprint + ", but the finding that it names has " + *named.begin(),
             "correct the fingerprint, or leave it out");
      return false;
    }
    const auto has_fingerprint = [&](const TableFinding& found) {
      return found.finding->fingerprint == waiver_.fingerprint ||
             (IsIn(waiver_.file, *found.table) && FingerprintIn(waiver_.file, found) == waiver_.fingerprint);
    };
    const auto other = std::ranges::find_if(findings_, has_fingerprint);
    if (other == findings_.end()) return true;
    const bool is_same_change = std::ranges::any_of(same_rule, [&](const TableFinding& found) {
      return has_fingerprint(found) && AcceptedChange(*found.table, *found.finding) == waiver_.change;
    });
    if (is_same_change && !IsCompared(waiver_.table)) return true;
    Refuse("its fingerprint belongs to another finding", kReplace + Replacement(*other));
    return false;
  }

  // A waiver of an earlier version, which covers nothing. The message has what replaces it.
  void FindReplacement() {
    Refuse(waiver_.fault, "replace it: 'korvelcheck waive' adds a waiver for a finding of the report; or remove it");
    std::set<std::string> seen;
    std::string lines;
    for (const TableFinding& found : findings_) {
      const Finding& finding = *found.finding;
      if (finding.fingerprint != waiver_.fingerprint && !HasOldFingerprint(found, waiver_.fingerprint)) continue;
      if (seen.insert(finding.fingerprint).second) lines += Replacement(found);
    }
    if (!lines.empty()) use_.suggestion = kReplace + lines;
  }

  // The lines of a waiver that covers a finding, for as long and for the same reason, each with a line end before it.
  std::string Replacement(const TableFinding& found) const {
    WaiverEntry entry = EntryFor(*found.table, *found.finding, WaiverForm::kExact);
    entry.reason = waiver_.reason;
    entry.until = waiver_.until;
    return "\n" + Join(LinesOf(entry), "\n");
  }

  const std::vector<TableFinding>& findings_;
  const Report& report_;
  std::size_t position_;
  WaiverUse& use_;
  const WaiverEntry& waiver_;
  const std::string refused_ = RuleIdOf({});  // the rule of a refusal that has none
};

// A waiver of exactly this change is shown rather than a wide one. One for a file or directory without a fingerprint is wide: it
// covers what the rule reports there later, too.
void Waive(const WaiverUse& use, Report& report) {
  const WaiverEntry& entry = *use.waiver;
  const bool is_wide = entry.form == WaiverForm::kWide || (entry.form == WaiverForm::kFile && entry.fingerprint.empty());
  const auto waive = [&](std::optional<Waiver>& waiver) {
    if (!waiver || (waiver->is_wide && !is_wide)) waiver = {entry.reason, entry.until, is_wide};
  };
  for (const std::size_t i : use.project) waive(report.project[i].waiver);
  for (const TableFinding& found : use.findings) waive(found.finding->waiver);
}

// Whether it expired for a finding about the project file that fails the call now.
bool FailsAgain(const Report& report, const WaiverUse& use) {
  return std::ranges::any_of(use.project, [&](std::size_t i) { return Fails(report, report.project[i]); });
}

}  // namespace

std::vector<TableFinding> FindingsOf(Report& report) {
  std::vector<TableFinding> findings;
  for (TableResult& table : report.tables) {
    const auto add = [&](std::vector<Finding>& all) {
      for (Finding& finding : all) findings.push_back({&table, &finding});
    };
    if (table.changes) add(table.changes->findings);
    add(table.advice.findings);
  }
  return findings;
}

std::vector<WaiverUse> ApplyWaivers(const Project& project, std::size_t position, Report& report) {
  std::vector<WaiverUse> uses;
  if (project.waivers.empty()) return uses;
  const std::string today = Today();
  std::vector<TableFinding> findings = FindingsOf(report);
  std::erase_if(findings, [&](const TableFinding& found) { return found.table->project != position; });
  for (const WaiverEntry& waiver : project.waivers) {
    WaiverUse& use = uses.emplace_back(WaiverUse{&waiver});
    WaiverMatch(findings, report, position, use).Find();
    if (use.state == WaiverState::kMalformed) continue;
    const bool is_unused = use.findings.empty() && use.project.empty();
    use.state = waiver.until < today ? WaiverState::kExpired : is_unused ? WaiverState::kUnused : WaiverState::kInUse;
    if (use.state == WaiverState::kInUse) Waive(use, report);
  }
  return uses;
}

void ReportWaivers(const Project& project, const std::vector<WaiverUse>& uses, WaiverPolicy policy, Report& report) {
  using Fault = ProjectFinding::Level;
  const Fault lenient = policy.is_strict ? Fault::kError : Fault::kWarning;
  for (const WaiverUse& use : uses) {
    const auto note = [&](const char* rule, const std::string& text, const std::string& suggestion, Fault level) {
      report.project.push_back({rule, project.file, use.waiver->location, text, suggestion, level});
    };
    const auto failing =
        std::ranges::find_if(use.findings, [&](const TableFinding& found) { return Fails(report, *found.finding); });
    if (use.state == WaiverState::kMalformed) {
      note("waiver.malformed", "invalid waiver: " + use.fault, use.suggestion, Fault::kError);
    } else if (use.state == WaiverState::kExpired && FailsAgain(report, use)) {
      note("waiver.expired", Describe(*use.waiver) + " expired on " + use.waiver->until + "; the finding fails again",
           "remove the waiver, and undo the change of the project file, or set a later day", Fault::kError);
    } else if (use.state == WaiverState::kExpired && failing != use.findings.end()) {
      // Without today's date, so that the text is the same tomorrow.
      const char* const again = IsAdvice(*failing->finding) ? "; the warning fails again" : "; the finding is refused again";
      note("waiver.expired", Describe(*use.waiver) + " expired on " + use.waiver->until + again,
           "remove the waiver and the change, or set a later day", Fault::kError);
    } else if (use.state == WaiverState::kExpired) {
      note("waiver.expired", Describe(*use.waiver) + " expired on " + use.waiver->until, "remove it", lenient);
    } else if (use.state == WaiverState::kUnused && !use.instead.empty()) {
      note("waiver.unused", Describe(*use.waiver) + " does not cover the change that is there now: " + OneLine(use.instead),
           "revert the change, or waive it again", lenient);
    } else if (use.state == WaiverState::kUnused && policy.all_compared && use.waiver->rule != kIdReusedAdvice.row.id) {
      note("waiver.unused", Describe(*use.waiver) + " matches no finding", "remove it", lenient);
    }
  }
}

void ApplyAllWaivers(const ProjectSet& projects, WaiverPolicy policy, Report& report) {
  for (std::size_t i = 0; i < projects.size(); ++i) {
    if (projects[i] == nullptr) continue;
    WaiverPolicy own = policy;
    if (i > 0) own.all_compared = policy.all_compared && projects.IsCovered(i);
    ReportWaivers(*projects[i], ApplyWaivers(*projects[i], i, report), own, report);
  }
}

}  // namespace korvel
