// Tested by tests/tool/lint_project_test.cpp.
#include "project/schema_finder.h"

#include <filesystem>
#include <set>
#include <system_error>
#include <utility>

#include "base/input_error.h"
#include "project/project_path.h"

namespace korvel {
namespace {

// An earlier state without files: everything on the disk is selected as if it was new.
class NoFiles : public FileTree {
 public:
  bool HasFile(const std::string&) const override { return false; }
  std::vector<std::string> Below(const std::string&) const override { return {}; }
  Bytes Read(const std::string& path) override { RefuseFile(path, "does not exist"); }
  std::string Display(const std::string& path) const override { return path; }
};

// The top is that of the repository, else the directory of the call's project file, else the working directory.
ProjectStates OpenDisk(ProjectSet& projects, Links links) {
  const Project* const project = projects.OfCall();
  const std::string repository = RepositoryTop();
  const std::string here = AbsolutePath("");
  ProjectStates states;
  states.has_old = false;
  states.is_work_tree = !repository.empty();
  states.top = AbsolutePath(repository.empty() && project != nullptr ? project->directory : repository);
  states.old_state = std::make_unique<NoFiles>();
  states.new_state = repository.empty() ? DiskTreeSeenFrom(here, states.top, links)
                                        : WorkTreeSeenFrom(here, states.top, "the files of the project", links);
  states.projects = std::make_unique<NearestProjects>(*states.new_state, projects, ProjectDirectory(project, states.top));
  states.old_projects =
      std::make_unique<OldProjects>(*states.old_state, *states.new_state, states.projects->OfCall(), projects.is_searched());
  return states;
}

}  // namespace

bool NamesDirectory(const std::string& path) {
  std::error_code ignored;
  return path != "-" && !path.starts_with("git:") && std::filesystem::is_directory(path, ignored);
}

std::vector<std::string> SchemaFinder::Found(const std::vector<std::string>& paths) {
  if (!states_) states_ = OpenDisk(projects_, links_);
  std::vector<std::string> files;
  for (const std::string& path : SelectFiles(paths, *states_).in_new) {
    const std::string shown = states_->new_state->Display(path);
    if (found_.emplace(shown, path).second) files.push_back(shown);
  }
  return files;
}

std::vector<std::string> SchemaFinder::Select(const std::vector<std::string>& paths) {
  if (paths.empty()) return Found({});
  std::set<std::string> named;
  for (const std::string& path : paths) {
    if (!NamesDirectory(path)) named.insert(AbsolutePath(path).string());
  }
  std::vector<std::string> files;
  for (const std::string& path : paths) {
    if (!NamesDirectory(path)) {
      files.push_back(path);
      continue;
    }
    for (std::string& file : Found({path})) {
      if (!named.contains(AbsolutePath(file).string())) files.push_back(std::move(file));
    }
  }
  return files;
}

std::optional<Bytes> SchemaFinder::Read(const std::string& path) {
  const auto found = found_.find(path);
  if (found == found_.end()) return std::nullopt;
  return states_->new_state->Read(found->second);
}

}  // namespace korvel
