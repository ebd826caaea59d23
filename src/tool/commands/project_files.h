// Which schema files a call compares, in two states of a project.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "project/file_tree.h"
#include "tool/cli/options.h"

namespace korvel::tool {

// The two states of a project, with the same top.
struct ProjectStates {
  std::unique_ptr<FileTree> old_state;
  std::unique_ptr<FileTree> new_state;
  std::string top;  // of the new state on the disk, absolute
};

// The earlier state that the call names, else its project, and what is on the disk now. The top is that of the work tree for
// "git:REV"; else the directory of the project file, else the working directory. Throws InputError.
ProjectStates StatesOf(const Options& options);

struct ProjectFiles {
  std::set<std::string> in_old;
  std::set<std::string> in_new;
  // Of the old state, not named by the call and gone: from where a new file that it names may have been moved.
  std::vector<std::string> removed_elsewhere;
  std::vector<std::string> twice;  // as given: paths that stand for what others stand for
};

// The files that the call names, or those of the project's patterns. Of a directory all files that match the patterns, without
// patterns all with the suffix .xml or .qmb. Throws InputError for what is in neither state and when there is nothing to go by.
ProjectFiles FilesOf(const Options& options, const ProjectStates& states);

}  // namespace korvel::tool
