// The project files of the old state of a project.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "project/file_tree.h"
#include "project/nearest_projects.h"
#include "project/project.h"

namespace korvel {

// Which project file of the old state applied to a schema file there. The project file of the call is looked for at its path in
// the new state, and then above it, for it may have been moved down. If the old state has none, the nearest ones are used alone.
class OldProjects {
 public:
  // `of_call` is the scope in the new state. The old tree must outlive this.
  OldProjects(FileTree& old_state, FileTree& new_state, const ProjectScope& of_call, bool is_searched);
  OldProjects(const OldProjects&) = delete;
  OldProjects& operator=(const OldProjects&) = delete;

  NearestProjects& nearest() { return nearest_; }

  // The faults of project files that were looked at so far, each project file once. What they select is not known.
  std::vector<ProjectFault> Faults() const;

 private:
  std::optional<Project> ReadOfCall(FileTree& old_state, FileTree& new_state, const std::string& path);

  std::vector<ProjectFault> faults_;  // of the call's project file. Before `of_call_`, which fills it
  std::string path_of_call_;          // "" if the old state has none
  std::optional<Project> of_call_;
  ProjectSet set_;
  NearestProjects nearest_;
};

}  // namespace korvel
