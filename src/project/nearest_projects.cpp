// Tested by tests/tool/nested_project_test.cpp.
#include "project/nearest_projects.h"

#include <algorithm>

#include "base/input_error.h"
#include "base/paths.h"

namespace korvel {

std::vector<std::string> ProjectSet::Files() const {
  std::vector<std::string> files;
  for (const Project* const project : projects_) {
    if (project != nullptr) files.push_back(project->file);
  }
  return files;
}

bool ProjectSet::HasTableSettings() const {
  return std::ranges::any_of(projects_, [](const Project* one) { return one != nullptr && !one->tables.empty(); });
}

std::optional<std::uint32_t> ProjectSet::Find(const std::string& file) const {
  const auto found = by_file_.find(file);
  return found == by_file_.end() ? std::nullopt : std::optional(found->second);
}

std::uint32_t ProjectSet::Add(Project project) {
  const auto position = static_cast<std::uint32_t>(projects_.size());
  by_file_.emplace(project.file, position);
  projects_.push_back(&nested_.emplace_back(std::move(project)));
  is_covered_.push_back(false);
  return position;
}

NearestProjects::NearestProjects(FileTree& tree, ProjectSet& projects, std::string directory)
    : tree_(tree), projects_(projects), of_call_{projects.OfCall(), 0, std::move(directory)} {}

const ProjectScope& NearestProjects::Of(const std::string& path) {
  return projects_.is_searched() ? In(DirectoryOf(path)) : of_call_;
}

std::vector<std::string> NearestProjects::LookedFor() const {
  std::vector<std::string> paths;
  for (const auto& [directory, scope] : directories_) paths.push_back(PrefixOf(directory) + kProjectFileName);
  return paths;
}

void NearestProjects::RequireNoFaults() const {
  InputError error;
  for (const ProjectFault& fault : faults_) error.lines.insert(error.lines.end(), fault.lines.begin(), fault.lines.end());
  if (!error.lines.empty()) throw error;
}

const ProjectScope& NearestProjects::In(std::string_view directory) {
  if (const auto known = directories_.find(directory); known != directories_.end()) return *known->second;
  const bool is_of_call = of_call_.project != nullptr && directory == of_call_.directory;
  const ProjectScope* found = is_of_call ? &of_call_ : Read(std::string(directory));
  if (found == nullptr) found = directory.empty() ? &of_call_ : &In(DirectoryOf(directory));
  directories_.emplace(directory, found);
  return *found;
}

// Null if the directory has no project file, or one with an error.
const ProjectScope* NearestProjects::Read(const std::string& directory) {
  const std::string path = PrefixOf(directory) + kProjectFileName;
  if (!tree_.HasName(path)) return nullptr;
  const std::string file = tree_.Display(path);
  try {
    std::optional<std::uint32_t> position = projects_.Find(file);
    if (!position) {
      const std::string text(tree_.ReadProject(path).View());
      position = projects_.Add(ParseProject(file, text));
    }
    return &nested_.emplace_back(ProjectScope{projects_[*position], *position, directory});
  } catch (const InputError& error) {
    faults_.push_back({path, error.lines});
    return nullptr;
  }
}

std::vector<ReportProject> ListOf(const ProjectSet& projects, std::vector<JudgedFile> judged) {
  std::ranges::sort(judged);
  judged.erase(std::unique(judged.begin(), judged.end()), judged.end());
  std::vector<ReportProject> list;
  for (std::size_t i = 0; i < projects.size(); ++i) {
    const auto end = std::ranges::upper_bound(judged, i, {}, &JudgedFile::first);
    const auto files = static_cast<std::size_t>(end - std::ranges::lower_bound(judged, i, {}, &JudgedFile::first));
    const bool is_listed = projects[i] != nullptr && (i == 0 || files > 0);
    if (is_listed) list.push_back({projects[i]->file, files});
  }
  std::ranges::sort(list.begin() + (projects.OfCall() == nullptr ? 0 : 1), list.end(), {}, &ReportProject::file);
  return list;
}

}  // namespace korvel
