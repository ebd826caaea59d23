// Tested by tests/tool/nested_project_test.cpp.
#include "project/input_projects.h"

#include <filesystem>
#include <optional>
#include <utility>

#include "base/paths.h"
#include "project/baseline.h"
#include "project/git.h"
#include "project/project_path.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

std::string TopOf(const Project* project) {
  const std::string repository = RepositoryTop();
  return AbsolutePath(repository.empty() && project != nullptr ? project->directory : repository);
}

}  // namespace

InputProjects::InputProjects(ProjectSet& projects, Links links)
    : projects_(projects), links_(links), top_(TopOf(projects.OfCall())) {}

InputProject InputProjects::Of(const std::string& given) {
  if (!projects_.is_searched() || given == "-") return OfCall(given);
  const std::optional<GitPath> in_git = ParseGitPath(given);
  const bool is_from_top = in_git && !IsFromHere(in_git->path);
  const fs::path path = is_from_top ? fs::path(in_git->path).lexically_normal()
                                    : AbsolutePath(in_git ? in_git->path : given).lexically_relative(top_);
  if (!is_from_top && LeadsOut(path)) return OfCall(given);
  return Nearest(StateOf(in_git ? in_git->revision : ""), path.string(), given);
}

InputProjects::State& InputProjects::StateOf(const std::string& revision) {
  State& state = states_[revision];
  if (state.tree != nullptr) return state;
  if (revision.empty()) {
    state.tree = DiskTreeSeenFrom(AbsolutePath(""), top_, links_);
  } else {
    const Baseline baseline = ResolveBaseline("git:" + revision);
    state.tree = CommitTree(*baseline.revision, baseline.name);
  }
  state.projects = std::make_unique<NearestProjects>(*state.tree, projects_, ProjectDirectory(projects_.OfCall(), top_));
  return state;
}

InputProject InputProjects::Nearest(State& state, const std::string& path, const std::string& given) {
  const ProjectScope& scope = state.projects->Of(path);
  state.projects->RequireNoFaults();
  if (!state.projects->IsNested(scope)) return OfCall(given);
  return {scope.project, scope.position, PathInProject(scope.directory, path)};
}

InputProject InputProjects::OfCall(const std::string& given) const {
  return {projects_.OfCall(), 0, PathInProject(projects_.OfCall(), given)};
}

}  // namespace korvel
