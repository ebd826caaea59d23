// Tested by tests/tool/nested_project_test.cpp.
#include "project/input_projects.h"

#include <filesystem>
#include <optional>
#include <utility>

#include "project/baseline.h"
#include "project/git.h"
#include "project/project_path.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

// The path from a directory to something below it; nullopt if it is elsewhere.
std::optional<std::string> PathFrom(const std::string& directory, const fs::path& path) {
  const fs::path relative = path.lexically_relative(directory);
  if (relative.empty() || *relative.begin() == "..") return std::nullopt;
  return relative.string();
}

std::string TopOf(const Project* project) {
  const std::string repository = RepositoryTop();
  return AbsolutePath(repository.empty() && project != nullptr ? project->directory : repository);
}

}  // namespace

InputProjects::InputProjects(ProjectSet& projects) : projects_(projects), top_(TopOf(projects.OfCall())) {}

InputProject InputProjects::Of(const std::string& given) {
  if (!projects_.is_searched() || given == "-") return OfCall(given);
  if (const std::optional<GitPath> in_git = ParseGitPath(given)) {
    const bool is_from_here = in_git->path.starts_with("./") || in_git->path.starts_with("../");
    const std::optional<std::string> path = is_from_here ? PathFrom(top_, AbsolutePath(in_git->path)) : in_git->path;
    return path ? Nearest(InCommit(in_git->revision), fs::path(*path).lexically_normal(), given) : OfCall(given);
  }
  const std::optional<std::string> path = PathFrom(top_, AbsolutePath(given));
  return path ? Nearest(OnDisk(), *path, given) : OfCall(given);
}

InputProjects::State& InputProjects::OnDisk() {
  State& state = states_[""];
  if (state.tree == nullptr) {
    state.tree = DiskTreeSeenFrom(AbsolutePath(""), top_);
    state.projects = std::make_unique<NearestProjects>(*state.tree, projects_, ProjectDirectory(projects_.OfCall(), top_));
  }
  return state;
}

InputProjects::State& InputProjects::InCommit(const std::string& revision) {
  State& state = states_[revision];
  if (state.tree == nullptr) {
    const Baseline baseline = ResolveBaseline("git:" + revision);
    state.tree = CommitTree(*baseline.revision, baseline.name);
    state.projects = std::make_unique<NearestProjects>(*state.tree, projects_, ProjectDirectory(projects_.OfCall(), top_));
  }
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
