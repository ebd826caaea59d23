// The files whose histories a call requests.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "project/git.h"
#include "project/project.h"
#include "schema/file_below.h"

namespace korvel {

// A file of the call.
struct SelectedFile {
  std::string path;   // from the top
  std::string shown;  // on the disk
  // Whether only a directory of the call has it, and no project file says which of its files are schemas.
  bool is_by_suffix = false;
};

// Paths of the call, from the top of the repository.
class PathFinder {
 public:
  PathFinder(const std::string& argument, Git& git);

  const std::string& top() const { return top_; }

  // The path from the working directory if it leads to a file there, else from the top.
  std::filesystem::path OnDisk(const std::string& given) const;
  // Throws InputError if it leads out of the repository.
  std::string FromTop(const std::string& given) const;

 private:
  std::string top_;
  bool is_top_;
};

// What a call names, and where else than in HEAD and in the work tree its directories, or the project, may have had files.
struct HistoryRequest {
  const std::vector<std::string>& paths;      // empty: all files of the project
  const std::vector<std::string>& revisions;  // files of these are selected, too
  std::string range;                          // and those that a commit of this range deleted; empty: none
  std::string argument;                       // errors of git name it
  Links links;                                // to files in the work tree
};

// Each file once. A directory may be one that no longer exists. `project` may be null. Throws InputError.
std::vector<SelectedFile> SelectHistoryFiles(const HistoryRequest& request, const Project* project, const PathFinder& finder,
                                             Git& git);

}  // namespace korvel
