// Which schema files a call selects that compares no states.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "project/project_files.h"

namespace korvel {

// Whether an argument is a directory. One named "git:..." needs "./" in front, as a file does.
bool NamesDirectory(const std::string& path);

// The schema files of a call: those that it names itself, and those that its directories, or the patterns of the project file,
// select.
class SchemaFinder {
 public:
  // `projects` must outlive it. `links` is for files that the call does not name.
  SchemaFinder(ProjectSet& projects, Links links) : projects_(projects), links_(links) {}

  // The paths to read, in order: a given file stays as it is, a directory becomes its files, and no path at all becomes the files
  // of the project. Each found file is selected once. Throws InputError as SelectFiles.
  std::vector<std::string> Select(const std::vector<std::string>& paths);

  // The bytes of a file that was found; nullopt for one that the call names. May be called by several threads. Throws InputError.
  std::optional<Bytes> Read(const std::string& path);

  // Whether a selected path is that of a file that the call does not name.
  bool IsFound(const std::string& path) const { return found_.contains(path); }

 private:
  std::vector<std::string> Found(const std::vector<std::string>& paths);

  ProjectSet& projects_;
  Links links_;
  std::optional<ProjectStates> states_;
  std::map<std::string, std::string> found_;  // from the paths to read to those from the top
};

}  // namespace korvel
