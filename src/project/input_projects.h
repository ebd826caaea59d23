// Which project file judges a schema file that a call names by itself, not as part of a project.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "project/file_tree.h"
#include "project/nearest_projects.h"

namespace korvel {

// The project file of one schema file.
struct InputProject {
  const Project* project = nullptr;  // null: none
  std::uint32_t position = 0;        // in the set
  std::string path_in_project;       // see Source::path_in_project
};

// For a file on the disk, the nearest project file at or above it, up to the top of the repository; without a repository, up to
// the directory of the call's project file, or else the working directory. For "git:REV:PATH", the nearest one in that commit.
// The project file of the call judges everything else: files elsewhere, standard input, and files without a project file.
class InputProjects {
 public:
  // `projects` must outlive it. `links` is for project files on the disk.
  InputProjects(ProjectSet& projects, Links links);

  // `given` is a path as in a call. Throws InputError for a project file with errors, and as Git.
  InputProject Of(const std::string& given);

 private:
  struct State {
    std::unique_ptr<FileTree> tree;
    std::unique_ptr<NearestProjects> projects;
  };

  State& StateOf(const std::string& revision);
  InputProject Nearest(State& state, const std::string& path, const std::string& given);
  InputProject OfCall(const std::string& given) const;

  ProjectSet& projects_;
  Links links_;
  std::string top_;                      // absolute
  std::map<std::string, State> states_;  // by revision; "" is the disk
};

}  // namespace korvel
