// Tested by tests/tool/settings_changed_test.cpp.
#include "project/settings_changes.h"

#include <algorithm>
#include <optional>
#include <span>
#include <tuple>
#include <utility>

#include "base/paths.h"
#include "base/text.h"
#include "report/result/words.h"
#include "rule_docs/project_rules.h"
#include "schema/setting_values.h"

namespace korvel {
namespace {

auto MembersOf(const PartialSettings& settings) {
  return std::tie(settings.type, settings.created_as, settings.server_version, settings.whitelist, settings.list_num);
}

// The value of a setting; "none" without one.
std::string ValueOf(const std::optional<int>& code, std::span<const NamedCode> names) {
  return code ? NameOf(names, *code) : "none";
}
std::string ValueOf(const std::optional<int>& number) { return number ? std::to_string(*number) : "none"; }
std::string ValueOf(const std::optional<std::string>& text) { return text ? QuoteWhole(*text) : "none"; }

// "server-version: '3.29.0' -> none, list-num: none -> 5"; "" if nothing differs.
std::string ChangeOf(const PartialSettings& before, const PartialSettings& after) {
  std::string change;
  const auto add = [&](const char* name, const std::string& old_value, const std::string& new_value) {
    if (old_value != new_value) AppendPart(change, ", ", std::string(name) + ": " + old_value + " -> " + new_value);
  };
  add("type", ValueOf(before.type, kTableTypes), ValueOf(after.type, kTableTypes));
  add("created-as", ValueOf(before.created_as, kProtocols), ValueOf(after.created_as, kProtocols));
  add("server-version", ValueOf(before.server_version), ValueOf(after.server_version));
  add("whitelist", ValueOf(before.whitelist), ValueOf(after.whitelist));
  add("list-num", ValueOf(before.list_num), ValueOf(after.list_num));
  return change;
}

std::string ListOf(const std::vector<ProjectText>& texts) {
  std::string list;
  for (const ProjectText& text : texts) AppendPart(list, " ", text.text);
  return list.empty() ? "none" : list;
}

// How a call compares other states, or fails less often, than the project file said before; "" if it does not.
std::string ChangeOfCall(const Project& before, const Project& after) {
  std::string change;
  const std::string was = ListOf(before.against);
  const std::string is = ListOf(after.against);
  if (!before.against.empty() && was != is) change = "against: " + was + " -> " + is;
  if (before.fails_on_warnings && !after.fails_on_warnings) AppendPart(change, ", ", "fail-on: warning -> refused");
  return change;
}

}  // namespace

void SettingsChanges::Add(const std::string& old_path, const std::string& new_path, const std::string& table) {
  NearestProjects& old_projects = states_.old_projects->nearest();
  const ProjectScope& old_scope = old_projects.Of(old_path);
  const ProjectScope& new_scope = states_.projects->Of(new_path);
  const bool is_first = old_scope.project == nullptr && !states_.projects->IsNested(new_scope);
  if (is_first || HaveSameSettings(old_scope.project, new_scope.project)) return;
  const std::string change = ChangeOf(GivenFor(given_, old_scope.project, table), GivenFor(given_, new_scope.project, table));
  if (change.empty()) return;
  const std::string former = states_.new_state->Display(PrefixOf(old_scope.directory) + kProjectFileName);
  const std::string& file = new_scope.project == nullptr ? former : new_scope.project->file;
  files_[{file, new_scope.position, change}].insert(new_path);
}

std::vector<ProjectFinding> SettingsChanges::Findings() const {
  std::vector<ProjectFinding> findings = OfCall();
  for (const auto& [key, files] : files_) {
    const std::vector<std::string> paths(files.begin(), files.end());
    const std::string list = ListOfFiles(paths, states_);
    const std::string which = paths.size() == 1 ? list + " is" : Counted(paths.size(), "file") + " (" + list + ") are";
    ProjectFinding& finding = findings.emplace_back(ProjectFinding{
        .rule = kSettingsChangedRule.row.id,
        .file = key.project_file,
        .position = {1, 1},
        .text = which + " checked with different settings than in " + states_.baseline.name + ": " + key.change,
        .suggestion = "unless this is intended, restore the settings; a nested project file repeats those that apply",
        .level = ProjectFinding::Level::kWarning});
    SetFiles(paths, key.change, states_, finding);
  }
  return findings;
}

std::vector<ProjectFinding> SettingsChanges::OfCall() const {
  const ProjectScope& scope = states_.projects->OfCall();
  const Project* const before = states_.old_projects->nearest().OfCall().project;
  if (scope.project == nullptr || before == nullptr) return {};
  const std::string change = ChangeOfCall(*before, *scope.project);
  if (change.empty()) return {};
  ProjectFinding finding{.rule = kSettingsChangedRule.row.id,
                         .file = scope.project->file,
                         .position = {1, 1},
                         .text = "calls have different settings than in " + states_.baseline.name + ": " + change,
                         .suggestion = "unless this is intended, restore the settings",
                         .level = ProjectFinding::Level::kWarning};
  SetFiles({PrefixOf(scope.directory) + FileNameOf(scope.project->file)}, change, states_, finding);
  return {std::move(finding)};
}

bool SettingsChanges::HaveSameSettings(const Project* old_project, const Project* new_project) {
  const auto [known, is_new] = same_.try_emplace({old_project, new_project});
  if (!is_new) return known->second;
  static const Project kNone;
  const Project& one = old_project == nullptr ? kNone : *old_project;
  const Project& other = new_project == nullptr ? kNone : *new_project;
  const auto is_same_table = [](const auto& first, const auto& second) {
    return first.first == second.first && MembersOf(first.second.settings) == MembersOf(second.second.settings);
  };
  known->second =
      MembersOf(one.defaults) == MembersOf(other.defaults) && std::ranges::equal(one.tables, other.tables, is_same_table);
  return known->second;
}

}  // namespace korvel
