// Tested by tests/tool/dropped_files_test.cpp.
#include "project/hidden_changes.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>

#include "analysis/findings/finding.h"
#include "base/text.h"
#include "project/file_selection.h"
#include "project/project_path.h"
#include "report/result/words.h"
#include "rule_docs/project_rules.h"

namespace korvel {
namespace {

constexpr std::size_t kMaxNamed = 10;

std::string TextOf(const DroppedFile& first, const std::vector<std::string>& paths, const ProjectStates& states) {
  const std::string& baseline = states.baseline.name;
  const bool is_one = paths.size() == 1;
  const std::string them = is_one ? "it" : "them";
  const std::string files = ListOfFiles(paths, states);
  const std::string what =
      is_one ? files + " is no longer checked: " : Counted(paths.size(), "file") + " are no longer checked (" + files + "): ";
  if (!first.had_project_file) return what + "no project file of " + baseline + " leaves " + them + " out, but this one does";
  const std::string pattern = is_one || first.selected_by.empty() ? "" : " with " + QuoteWhole(first.selected_by);
  return what + "the project file of " + baseline + " selects " + them + pattern + ", but this one does not";
}

ProjectFinding FindingOf(const DroppedFile& first, const std::vector<std::string>& paths, const ProjectStates& states) {
  const std::string them = paths.size() == 1 ? "it" : "them";
  const std::string file = paths.size() == 1 ? "the file" : "the files";
  ProjectFinding finding{.rule = kNoLongerCheckedRule.row.id,
                         .file = first.project_file,
                         .position = first.location,
                         .text = TextOf(first, paths, states),
                         .suggestion = first.is_excluded ? "remove " + them + " from 'exclude', or delete " + file
                                                         : "select " + them + " again in 'paths', or delete " + file};
  SetFiles(paths, "", states, finding);
  return finding;
}

ProjectFinding FindingOf(const ProjectFault& fault, const ProjectStates& states) {
  ProjectFinding finding{.rule = kUnreadableProjectRule.row.id,
                         .file = states.new_state->Display(fault.path),
                         .position = {1, 1},
                         .text = "it is not known which files " + states.baseline.name + " checks: " + Join(fault.lines, "; "),
                         .suggestion = "compare with a state whose project file has no error"};
  SetFiles({fault.path}, "", states, finding);
  return finding;
}

}  // namespace

std::vector<ProjectFinding> FindHiddenFiles(const ProjectFiles& files, const ProjectStates& states) {
  const auto key = [&](const DroppedFile& file) {
    return std::tuple(file.project_file, file.location.line, file.location.column, file.is_excluded, file.had_project_file,
                      file.selected_by, states.projects->Of(file.path).position);
  };
  std::map<decltype(key(files.dropped.front())), std::vector<const DroppedFile*>> groups;
  for (const DroppedFile& file : files.dropped) groups[key(file)].push_back(&file);
  std::vector<ProjectFinding> findings;
  for (const auto& group : groups) {
    std::vector<std::string> paths;
    for (const DroppedFile* file : group.second) paths.push_back(file->path);
    std::ranges::sort(paths);
    findings.push_back(FindingOf(*group.second.front(), paths, states));
  }
  for (const ProjectFault& fault : files.old_faults) findings.push_back(FindingOf(fault, states));
  return findings;
}

std::optional<ProjectFinding> FindMovedOut(const std::string& old_path, const std::string& new_path, const ProjectFiles& files,
                                           const ProjectStates& states) {
  // A single file that is given by name is meant as it is.
  const bool is_given = files.given.contains(old_path) || !std::ranges::binary_search(files.added_elsewhere, new_path);
  const Patterns patterns(states.projects->Of(new_path));
  if (is_given || (!patterns.IsEmpty() && patterns.MatchAny(new_path))) return std::nullopt;
  const std::string file = states.new_state->Display(new_path);
  ProjectFinding finding{.rule = kNoLongerCheckedRule.row.id,
                         .file = file,
                         .position = {1, 1},
                         .text = file + " is no longer checked after this call: it was moved from " +
                                 states.old_state->Display(old_path) + ", and the given paths do not select it",
                         .suggestion = "give its new path, too, or select it in 'paths' of a project file"};
  SetFiles({new_path}, "", states, finding);
  return finding;
}

std::string PlaceOf(const ProjectFinding& finding) {
  if (finding.files.size() == 1) return finding.files.front();
  std::string place = finding.files.front();
  for (const std::string& file : finding.files) {
    while (!place.empty() && !file.starts_with(place + "/")) {
      const std::size_t slash = place.rfind('/');
      place.resize(slash == std::string::npos ? 0 : slash);
    }
  }
  return place.empty() ? "." : place;
}

void SetFiles(const std::vector<std::string>& paths, std::string_view change, const ProjectStates& states,
              ProjectFinding& finding) {
  const ProjectScope& scope = states.projects->Of(paths.front());
  finding.project = scope.position;
  for (const std::string& path : paths) finding.files.push_back(PathInProject(scope.directory, path));
  finding.fingerprint = FingerprintOf(finding.rule + '\0' + Join(finding.files, "\n") + '\0' + std::string(change));
}

std::string ListOfFiles(const std::vector<std::string>& paths, const ProjectStates& states) {
  const std::size_t named = std::min(paths.size(), kMaxNamed);
  std::string list;
  for (std::size_t i = 0; i < named; ++i) AppendPart(list, ", ", states.new_state->Display(paths[i]));
  return paths.size() > named ? list + " and " + std::to_string(paths.size() - named) + " more" : list;
}

}  // namespace korvel
