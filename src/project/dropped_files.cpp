// Tested by tests/tool/against_test.cpp and nested_project_test.cpp.
#include "project/dropped_files.h"

#include <algorithm>
#include <optional>

#include "base/input_error.h"
#include "base/paths.h"

namespace korvel {
namespace {

// The project file of the call as it is in the old state; nullopt if it has none there, or a faulty one.
std::optional<Project> OldProject(const ProjectStates& states) {
  const ProjectScope& scope = states.projects->OfCall();
  const Project& project = *scope.project;
  const std::string path = PrefixOf(scope.directory) + project.file.substr(project.file.rfind('/') + 1);
  if (!states.old_state->HasFile(path)) return std::nullopt;
  try {
    return ParseProject(project.file, std::string(states.old_state->Read(path).View()));
  } catch (const InputError&) {
    return std::nullopt;
  }
}

class DroppedFiles {
 public:
  DroppedFiles(NearestProjects& old_projects, const ProjectStates& states, ProjectFiles& files)
      : old_projects_(old_projects), states_(states), files_(files) {}

  // A file that the old state selects.
  void Add(const std::string& path) {
    if (files_.in_old.contains(path) || !IsSchema(*states_.old_state, path)) return;
    if (!states_.new_state->HasFile(path)) {
      files_.in_old.insert(path);
    } else if (std::ranges::find(files_.dropped, path, &DroppedFile::path) == files_.dropped.end()) {
      DroppedFile dropped = Reason(path);
      dropped.path = path;
      dropped.had_project_file = old_projects_.Of(path).project != nullptr;
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
    if (!patterns.IsEmpty()) return {.project_file = scope->project->file, .location = patterns.All().front().location};
    const ProjectText* const excluding = patterns.Excluding(path);
    if (excluding == nullptr) return {.project_file = scope->project->file, .location = {1, 1}};
    return {.project_file = scope->project->file, .location = excluding->location, .is_excluded = true};
  }

  static bool LeavesOut(const ProjectScope& scope, const std::string& path) {
    const Patterns patterns(scope);
    return patterns.IsEmpty() ? patterns.Excluding(path) != nullptr : !patterns.MatchAny(path);
  }

  // Where the project file was that selected it.
  std::string FormerFile(const std::string& path) const {
    return states_.new_state->Display(PrefixOf(old_projects_.Of(path).directory) + kProjectFileName);
  }

  NearestProjects& old_projects_;
  const ProjectStates& states_;
  ProjectFiles& files_;
};

}  // namespace

void AddDropped(WholeProject& whole, const ProjectStates& states, ProjectFiles& files) {
  const std::optional<Project> old_project = OldProject(states);
  ProjectSet old_set(old_project ? &*old_project : nullptr, states.projects->projects().is_searched());
  NearestProjects old_projects(*states.old_state, old_set, states.projects->OfCall().directory);
  DroppedFiles dropped(old_projects, states, files);
  WholeProject old_whole(old_projects);
  if (!old_whole.OfCall().IsEmpty()) {
    for (const ProjectText& pattern : old_whole.OfCall().All()) {
      for (const std::string& file : states.old_state->Below(old_whole.OfCall().Directory(pattern))) {
        if (old_whole.Selects(pattern, file)) dropped.Add(file);
      }
    }
  }
  // Where the call looks now, there may be nested project files that the old one did not reach.
  if (!old_set.is_searched()) return;
  for (const ProjectText& pattern : whole.OfCall().All()) {
    for (const std::string& file : states.old_state->Below(whole.OfCall().Directory(pattern))) {
      const ProjectScope& scope = old_projects.Of(file);
      if (!old_projects.IsNested(scope) || whole.OfCall().Excluding(file) != nullptr) continue;
      if (!Patterns(scope).IsEmpty() && Patterns(scope).MatchAny(file)) dropped.Add(file);
    }
  }
}

void AddDroppedBelow(const std::vector<std::string>& directories, const ProjectStates& states, ProjectFiles& files) {
  NearestProjects& projects = *states.projects;
  if (!projects.projects().is_searched()) return;
  ProjectSet old_set(nullptr, true);
  NearestProjects old_projects(*states.old_state, old_set, projects.OfCall().directory);
  DroppedFiles dropped(old_projects, states, files);
  for (const std::string& directory : directories) {
    for (const std::string& file : states.old_state->Below(directory)) {
      if (files.in_old.contains(file)) continue;
      const ProjectScope& old_scope = old_projects.Of(file);
      const bool was_nested = old_scope.project != nullptr && old_scope.directory != projects.OfCall().directory;
      const bool takes_part = was_nested || projects.IsNested(projects.Of(file));
      if (takes_part && Patterns(old_scope).IsSchemaName(file)) dropped.Add(file);
    }
  }
}

}  // namespace korvel
