// Which schema files to compare, in two states of a project, and which of them were moved.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "project/baseline.h"
#include "project/file_tree.h"
#include "project/nearest_projects.h"
#include "project/old_projects.h"
#include "project/project.h"
#include "schema/source.h"

namespace korvel {

// The two states of a project, with the same top.
struct ProjectStates {
  Baseline baseline;
  bool has_old = true;        // false: there is no earlier state, and messages do not mention it
  bool is_work_tree = false;  // the new state is that of a git repository, without the repositories in it
  std::unique_ptr<FileTree> old_state;
  std::unique_ptr<FileTree> new_state;
  std::string top;                            // of the new state on the disk, absolute
  std::unique_ptr<NearestProjects> projects;  // of the new state; their files judge both states
  std::unique_ptr<OldProjects> old_projects;  // say which files the old state selected
};

// Opens an earlier state and what is on the disk now. The top is that of the work tree for a revision of git; else the directory
// of the call's project file, else the working directory. `links` is for files on the disk. `projects` must outlive the states.
// Throws InputError.
//
// `replace`, if given, gets the files on the disk and the top of the states, and returns the new state: for files that an editor
// has open.
using ReplaceTree = std::function<std::unique_ptr<FileTree>(std::unique_ptr<FileTree> disk, const std::string& top)>;
ProjectStates OpenStates(const Baseline& baseline, ProjectSet& projects, Links links, const ReplaceTree& replace = nullptr);

// A schema file that still exists, but that the project files of the new state do not select any more.
struct DroppedFile {
  std::string path = {};          // from the top of both states
  std::string project_file = {};  // that leaves it out, as shown
  qmx::LineColumn location = {};  // of the key that leaves it out
  bool is_excluded = false;       // the key is `exclude`
  bool had_project_file = true;   // whether it had a project file in the old state
  std::string selected_by = {};   // the pattern that selected it there; "" without patterns
};

// Paths from the top of both states.
struct ProjectFiles {
  std::set<std::string> in_old;
  std::set<std::string> in_new;
  // Files of the old state that no path selects and that the new state lacks: a selected file may have been moved from there.
  std::vector<std::string> removed_elsewhere;
  // Files of the new state that no path selects and that the old state lacks: a selected file may have been moved there.
  std::vector<std::string> added_elsewhere;
  std::set<std::string> given;  // the given paths
  // Schema files that the project files of the old state select there and the present ones do not, although they still exist.
  std::vector<DroppedFile> dropped;
  // Project files of the old state that cannot be read: nobody knows which files they selected.
  std::vector<ProjectFault> old_faults;
  std::vector<std::string> repeated;  // paths as given that select the same as an earlier path
  bool is_whole = false;              // all files of the project, not those of given paths
};

// The files that `paths` select, or without paths those that the patterns of the call's project file match. A file belongs to its
// nearest project file, whose patterns decide. A directory selects all files in it that match them; without patterns, all with
// the suffix .xml or .qmb that are not excluded. Without paths, the nested project files in the directories where the patterns of
// the call's project file begin take part, except for files that it excludes itself; one without patterns uses those of the
// call's.
//
// Marks the project files whose schemas are all selected as covered. Throws InputError for a path or pattern that neither state
// has files for, if there are neither paths nor patterns, and for project files with errors.
ProjectFiles SelectFiles(const std::vector<std::string>& paths, const ProjectStates& states);

// Whether any file of the old state is a schema of the project: one that a directory with all files would select, with the
// project files of either state. Reads files until it finds one.
bool HasSchema(const ProjectStates& states);

// All files that are read, as reports show those of the new state.
std::vector<std::string> ShownFiles(const ProjectFiles& files, const ProjectStates& states);

}  // namespace korvel
