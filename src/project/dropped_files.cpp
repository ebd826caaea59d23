// Tested by tests/tool/dropped_files_test.cpp, against_test.cpp and nested_project_test.cpp.
#include "project/dropped_files.h"

#include <algorithm>
#include <set>
#include <utility>

#include "base/paths.h"

namespace korvel {
namespace {

class DroppedFiles {
 public:
  DroppedFiles(const ProjectStates& states, ProjectFiles& files) : states_(states), files_(files) {}

  // A file that the old state selects.
  void Add(const std::string& path) {
    if (files_.in_old.contains(path) || !seen_.insert(path).second) return;
    const bool was_schema = IsSchema(*states_.old_state, path);
    if (!states_.new_state->HasFile(path)) {
      // Nobody knows what a file with a fault contained.
      if (was_schema || !Patterns(OldScope(path)).IsEmpty()) files_.in_old.insert(path);
    } else if (was_schema || IsSchema(*states_.new_state, path)) {
      DroppedFile dropped = Reason(path);
      dropped.path = path;
      dropped.had_project_file = OldScope(path).project != nullptr;
      dropped.selected_by = SelectedBy(path);
      files_.dropped.push_back(std::move(dropped));
    }
  }

 private:
  // What leaves the file out in the new state.
  DroppedFile Reason(const std::string& path) const {
    NearestProjects& projects = *states_.projects;
    const ProjectScope* scope = &projects.Of(path);
    // The call's project file does not reach the directory.
    if (files_.is_whole && projects.IsNested(*scope) && !LeavesOut(*scope, path)) scope = &projects.OfCall();
    if (scope->project == nullptr) return {.project_file = FormerFile(path), .location = {1, 1}};
    const Patterns patterns(*scope);
    const ProjectText* const excluding = patterns.Excluding(path);
    if (excluding != nullptr && (patterns.IsEmpty() || patterns.MatchAnyBeforeExclude(path))) {
      return {.project_file = scope->project->file, .location = excluding->location, .is_excluded = true};
    }
    const bool has_patterns = !patterns.IsEmpty();
    return {.project_file = scope->project->file,
            .location = has_patterns ? patterns.All().front().location : qmx::LineColumn{1, 1}};
  }

  static bool LeavesOut(const ProjectScope& scope, const std::string& path) {
    const Patterns patterns(scope);
    return patterns.IsEmpty() ? patterns.Excluding(path) != nullptr : !patterns.MatchAny(path);
  }

  // The pattern of the old project file.
  std::string SelectedBy(const std::string& path) const {
    const Patterns patterns(OldScope(path));
    if (patterns.IsEmpty()) return "";
    const auto matches = [&](const ProjectText& pattern) { return patterns.Match(pattern, path); };
    const auto found = std::ranges::find_if(patterns.All(), matches);
    return found == patterns.All().end() ? "" : found->text;
  }

  // Where the project file was that selected it.
  std::string FormerFile(const std::string& path) const {
    return states_.new_state->Display(PrefixOf(OldScope(path).directory) + kProjectFileName);
  }

  const ProjectScope& OldScope(const std::string& path) const { return states_.old_projects->nearest().Of(path); }

  const ProjectStates& states_;
  ProjectFiles& files_;
  std::set<std::string> seen_;
};

}  // namespace

void AddDropped(WholeProject& whole, const ProjectStates& states, ProjectFiles& files) {
  NearestProjects& old_projects = states.old_projects->nearest();
  DroppedFiles dropped(states, files);
  WholeProject old_whole(old_projects);
  if (!old_whole.OfCall().IsEmpty()) {
    for (const ProjectText& pattern : old_whole.OfCall().All()) {
      for (const std::string& file : states.old_state->Below(old_whole.OfCall().Directory(pattern))) {
        if (old_whole.Selects(pattern, file)) dropped.Add(file);
      }
    }
  }
  // Where the call looks now, there may be nested project files that the old one did not reach.
  for (const ProjectText& pattern : whole.OfCall().All()) {
    for (const std::string& file : states.old_state->Below(whole.OfCall().Directory(pattern))) {
      const ProjectScope& scope = old_projects.Of(file);
      if (!old_projects.IsNested(scope) || whole.OfCall().Excluding(file) != nullptr) continue;
      if (!Patterns(scope).IsEmpty() && Patterns(scope).MatchAny(file)) dropped.Add(file);
    }
  }
  files.old_faults = states.old_projects->Faults();
}

void AddDroppedBelow(const std::vector<std::string>& paths, const ProjectStates& states, ProjectFiles& files) {
  NearestProjects& projects = *states.projects;
  NearestProjects& old_projects = states.old_projects->nearest();
  DroppedFiles dropped(states, files);
  for (const std::string& path : paths) {
    for (const std::string& file : states.old_state->Below(path)) {
      if (files.in_old.contains(file)) continue;
      const ProjectScope& old_scope = old_projects.Of(file);
      const bool takes_part = old_scope.project != nullptr || projects.IsNested(projects.Of(file));
      if (takes_part && Patterns(old_scope).IsSchemaName(file)) dropped.Add(file);
    }
    old_projects.Of(path);
  }
  files.old_faults = states.old_projects->Faults();
}

}  // namespace korvel
