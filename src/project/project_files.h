// Which schema files to compare, in two states of a project, and which of them were moved.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "project/baseline.h"
#include "project/file_tree.h"
#include "project/project.h"
#include "schema/source.h"

namespace korvel {

// The two states of a project, with the same top.
struct ProjectStates {
  Baseline baseline;
  std::unique_ptr<FileTree> old_state;
  std::unique_ptr<FileTree> new_state;
  std::string top;                // of the new state on the disk, absolute
  std::string project_directory;  // a path from the top; fingerprints contain paths from there
};

// Opens an earlier state and what is on the disk now. The top is that of the work tree for a revision of git; else the directory
// of the project file, else the working directory. `project` may be null. Throws InputError.
ProjectStates OpenStates(const Baseline& baseline, const Project* project);

// Paths from the top of both states.
struct ProjectFiles {
  std::set<std::string> in_old;
  std::set<std::string> in_new;
  // Files of the old state that no path selects and that the new state lacks: a selected file may have been moved from there.
  std::vector<std::string> removed_elsewhere;
  // Schema files that the project file of the old state selects there and the present one does not, although they still exist.
  std::vector<std::string> dropped;
  std::vector<std::string> repeated;  // paths as given that select the same as an earlier path
  bool is_whole = false;              // all files of the project, not those of given paths
};

// The files that `paths` select, or without paths those that the project's patterns match. A directory selects all files in it
// that match the patterns; without patterns, for all with the suffix .xml or .qmb. `project` may be null. Throws InputError for a
// path or pattern that neither state has files for, and if there are neither paths nor patterns.
ProjectFiles SelectFiles(const std::vector<std::string>& paths, const Project* project, const ProjectStates& states);

// Whether any file of the old state is a schema of the project: one that the patterns match, or without patterns, for all one
// with the suffix .xml or .qmb. Reads files until it finds one. `project` may be null.
bool HasSchema(const Project* project, const ProjectStates& states);

// All files that are read, as reports show those of the new state.
std::vector<std::string> ShownFiles(const ProjectFiles& files, const ProjectStates& states);

}  // namespace korvel
