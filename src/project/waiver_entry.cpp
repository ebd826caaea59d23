// Tested by tests/tool/waiver_test.cpp.
#include "project/waiver_entry.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <tuple>

#include "base/calendar.h"
#include "base/characters.h"
#include "base/did_you_mean.h"
#include "base/text.h"
#include "project/hidden_changes.h"
#include "report/result/issues.h"
#include "rule_docs/advice.h"
#include "rule_docs/project_rules.h"
#include "rule_docs/rule_docs.h"

namespace korvel {
namespace {

constexpr std::array kExactKeys{"rule", "table", "path", "change", "file"};
constexpr std::array kWideKeys{"table", "rule", "entry"};
constexpr std::array kKeysOfTables{"table", "path", "change", "entry"};
constexpr char kAllowedKeys[] = "rule, table, path, change and file; or table, rule and entry";

// The first of the keys that an entry lacks; "" if it has all.
std::string MissingOf(const WaiverKeys& keys, const auto& required) {
  const auto missing = std::ranges::find_if(required, [&](const char* key) { return !keys.contains(key); });
  return missing == required.end() ? "" : *missing;
}

// Whether the keys name a finding about the project file.
std::string FaultOfFileKeys(const WaiverEntry& waiver, const WaiverKeys& keys) {
  const std::string allowed = "; allowed for this rule: rule and file";
  const auto* const other = std::ranges::find_if(kKeysOfTables, [&](const char* key) { return keys.contains(key); });
  if (other != kKeysOfTables.end()) return "it has " + Quote(*other) + allowed;
  return waiver.file.empty() ? "it has no 'file'" + allowed : "";
}

// Whether the keys name a finding in one of the other forms.
std::string FaultOfKeys(const WaiverEntry& waiver, const WaiverKeys& keys) {
  const std::string allowed = std::string("; allowed: ") + kAllowedKeys;
  if (waiver.form == WaiverForm::kExact) {
    if (keys.contains("entry")) return "it has 'entry' and keys of a waiver of one change" + allowed;
    const std::string missing = MissingOf(keys, kExactKeys);
    if (!missing.empty()) return "it has no '" + missing + "'" + allowed;
  }
  const bool is_complete = waiver.form != WaiverForm::kWide || MissingOf(keys, kWideKeys).empty();
  const bool is_empty = waiver.form != WaiverForm::kBare && (waiver.rule.empty() || waiver.table.empty());
  const bool is_anything = waiver.form == WaiverForm::kExact && (waiver.change.empty() || waiver.file.empty());
  if (!is_complete || is_empty || is_anything) return std::string("it must have ") + kAllowedKeys;
  return "";
}

std::string FaultOfFingerprint(const WaiverEntry& waiver, const WaiverKeys& keys) {
  if (!keys.contains("fingerprint") || IsFingerprint(waiver.fingerprint)) return "";
  return "fingerprint is " + Quote(waiver.fingerprint) + "; allowed: 16 hexadecimal digits, as shown in reports";
}

// Why no finding can have this rule; empty if one can.
std::string FaultOfRule(const WaiverEntry& waiver) {
  const std::string& rule = waiver.rule;
  const bool is_known = rule == RuleIdOf({}) || FindRefusal(rule) != nullptr || FindAdvice(rule) != nullptr;
  if (waiver.form == WaiverForm::kBare || waiver.form == WaiverForm::kFile || is_known) return "";
  std::vector<std::string_view> known;
  for (const RefusalRow* row : AllRefusals()) known.emplace_back(row->id);
  for (const AdviceRule* advice : AllAdvice()) known.emplace_back(advice->row.id);
  for (const ProjectRule* project : kProjectRules) {
    if (project->can_be_waived) known.emplace_back(project->row.id);
  }
  return "rule is " + Quote(rule) + DidYouMean(rule, known) + "; allowed: what 'korvelcheck rules' lists";
}

std::string FaultOfDay(const std::string& until) {
  if (until.empty()) return "it has no last day; allowed: until = \"2027-01-31\"";
  return IsDay(until) ? "" : "until is " + Quote(until) + "; allowed: a day like 2027-01-31";
}

// Otherwise the second one would be reported as unused, or would hide that the first one has expired.
std::string FaultOfRepeated(const WaiverEntry& waiver, const Project& project) {
  const auto other = std::ranges::find_if(project.waivers, [&](const WaiverEntry& one) { return NamesTheSame(one, waiver); });
  if (other == project.waivers.end()) return "";
  return project.file + ":" + std::to_string(other->location.line) + " already has a waiver for this finding; allowed: one";
}

// A TOML string on one line, hidden characters as \uXXXX or \UXXXXXXXX.
std::string QuoteForToml(std::string_view text) {
  std::string quoted = "\"";
  while (!text.empty()) {
    const Character first = FirstCharacter(text);
    if ((first.length != 0 && IsHidden(first.code_point)) || BeginsLogCommand(text)) {
      char escape[16];
      std::snprintf(escape, sizeof escape, first.code_point <= 0xFFFF ? "\\u%04x" : "\\U%08x", unsigned{first.code_point});
      quoted += escape;
    } else {
      if (text.front() == '"' || text.front() == '\\') quoted += '\\';
      quoted.append(text.substr(0, CharacterLength(text)));
    }
    text.remove_prefix(CharacterLength(text));
  }
  return quoted + "\"";
}

}  // namespace

bool IsFingerprint(std::string_view text) {
  return text.size() == 16 && text.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

WaiverForm FormOf(const std::string& rule, const WaiverKeys& keys) {
  const ProjectRule* const project = FindProjectRule(rule);
  if (project != nullptr && project->can_be_waived) return WaiverForm::kFile;
  const auto has = [&](const char* key) { return keys.contains(key); };
  const bool is_exact = has("path") || has("change") || has("file");
  const bool is_named = has("rule") || has("table") || has("entry");
  if (has("fingerprint") && !is_exact && !is_named) return WaiverForm::kBare;
  return is_exact || has("fingerprint") ? WaiverForm::kExact : WaiverForm::kWide;
}

std::string FaultOf(const WaiverEntry& waiver, const WaiverKeys& keys, const Project& project) {
  const bool is_file = waiver.form == WaiverForm::kFile;
  if (std::string fault = is_file ? FaultOfFileKeys(waiver, keys) : FaultOfKeys(waiver, keys); !fault.empty()) return fault;
  if (std::string fault = FaultOfFingerprint(waiver, keys); !fault.empty()) return fault;
  if (std::string fault = FaultOfRule(waiver); !fault.empty()) return fault;
  if (waiver.reason.find_first_not_of(" \t\r\n") == std::string::npos)
    return "it has no reason; allowed: a string that is not blank";
  if (std::string fault = FaultOfDay(waiver.until); !fault.empty()) return fault;
  if (waiver.form == WaiverForm::kBare)
    return std::string("it has only a fingerprint, which does not say what was accepted; allowed: ") + kAllowedKeys;
  return FaultOfRepeated(waiver, project);
}

bool NamesTheSame(const WaiverEntry& one, const WaiverEntry& other) {
  const auto names = [](const WaiverEntry& waiver) {
    return std::tie(waiver.form, waiver.rule, waiver.table, waiver.path, waiver.change, waiver.file, waiver.entry);
  };
  // One directory may have several findings of the rule.
  if (one.form == WaiverForm::kFile && one.fingerprint != other.fingerprint) return false;
  return one.form != WaiverForm::kBare && names(one) == names(other);
}

std::string AcceptedChange(const TableResult& table, const Finding& finding) {
  if (table.removed) return "table removed";
  std::string change = ChangeOf(finding, table.EditsFor(finding));
  if (finding.edits.empty()) return change.empty() ? "pre-existing" : "pre-existing; " + change;
  return change;
}

bool HidesChanges(const TableResult& table, const Finding& finding) {
  return finding.edits.empty() && !table.removed && !ChangeOf(finding, table.EditsFor(finding)).empty();
}

std::string EntryOf(const TableResult& table, const Finding& finding) {
  return finding.path.starts_with(table.table + ".") ? finding.path.substr(table.table.size() + 1) : "";
}

WaiverEntry EntryFor(const TableResult& table, const Finding& finding, WaiverForm form) {
  WaiverEntry waiver;
  waiver.form = form;
  waiver.rule = RuleIdOf(finding.verdict);
  waiver.table = table.table;
  if (form == WaiverForm::kWide) {
    waiver.entry = EntryOf(table, finding);
  } else {
    waiver.path = finding.path;
    waiver.change = AcceptedChange(table, finding);
    waiver.file = table.second->path_in_project;
    waiver.fingerprint = finding.fingerprint;
  }
  return waiver;
}

WaiverEntry EntryFor(const ProjectFinding& finding) {
  WaiverEntry waiver;
  waiver.form = WaiverForm::kFile;
  waiver.rule = finding.rule;
  waiver.file = PlaceOf(finding);
  waiver.fingerprint = finding.fingerprint;
  return waiver;
}

std::vector<std::string> LinesOf(const WaiverEntry& waiver) {
  std::vector<std::string> lines = {"[[waivers]]"};
  const auto add = [&](const char* key, const std::string& value) { lines.push_back(key + (" = " + QuoteForToml(value))); };
  add("rule", waiver.rule);
  if (waiver.form != WaiverForm::kFile) add("table", waiver.table);
  if (waiver.form == WaiverForm::kWide) {
    add("entry", waiver.entry);
  } else {
    if (waiver.form == WaiverForm::kExact) {
      add("path", waiver.path);
      add("change", waiver.change);
    }
    add("file", waiver.file);
    add("fingerprint", waiver.fingerprint);
  }
  add("reason", waiver.reason);
  add("until", waiver.until);
  return lines;
}

std::string WithWaivers(const std::string& text, const std::vector<WaiverEntry>& waivers) {
  const std::size_t line_end = text.find('\n');
  const std::string end = line_end != std::string::npos && line_end > 0 && text[line_end - 1] == '\r' ? "\r\n" : "\n";
  std::string longer = text;
  if (!text.empty() && !text.ends_with('\n')) longer += end;
  for (const WaiverEntry& waiver : waivers) {
    if (!longer.empty()) longer += end;
    for (const std::string& line : LinesOf(waiver)) longer += line + end;
  }
  return longer;
}

std::string Describe(const WaiverEntry& waiver) {
  if (waiver.form == WaiverForm::kBare) return "the waiver of " + waiver.fingerprint;
  if (waiver.form == WaiverForm::kFile) return "the waiver of " + QuoteWhole(waiver.rule) + " for " + QuoteWhole(waiver.file);
  const std::string table = "the waiver of " + QuoteWhole(waiver.rule) + " in table " + QuoteWhole(waiver.table);
  if (waiver.form == WaiverForm::kWide) return table + (waiver.entry.empty() ? "" : ", entry " + QuoteWhole(waiver.entry));
  return table + ", " + QuoteWhole(waiver.change) + ", file " + QuoteWhole(waiver.file);
}

}  // namespace korvel
