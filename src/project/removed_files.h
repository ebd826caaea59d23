// Files that commits removed: where they went, and which library they held.
#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "project/continued_files.h"
#include "project/git.h"
#include "project/history_selection.h"
#include "project/version_walk.h"

namespace korvel {

// GitFile::mode of a symbolic link. Links are not followed.
inline constexpr std::string_view kLinkMode = "120000";

// ".xml"; "" for a path without a suffix.
std::string_view SuffixOf(std::string_view path);

// The new path of each file that the commit, or the work tree, did not delete but move: to a file with the same suffix that git
// finds similar, or that holds a library of the same name (FindOldFiles). "" for the others. `top` is the top of the work tree;
// errors of git name `argument`.
std::vector<std::string> NewPathsOf(const std::vector<LostPath>& lost, const std::string& top, const std::string& argument,
                                    Git& git);

// The libraries of the first versions of files that a commit or tag of the range added: of those from position `first` on that
// can be read.
std::set<std::string> AddedLibraries(const std::vector<FoundVersions>& found, std::size_t first, Git& git);

// Whether a file is a schema, or was meant as one: it has a library element.
bool MayBeSchema(const GitFile& file, Git& git);

// The files that a tag, a full name, does not have any more but the tag before it has.
std::vector<GitFile> RemovedBetween(const std::vector<std::string>& tags, Git& git);

// Removed files by the name of the library that each held at the end. Keeps the names only.
class RemovedLibraries {
 public:
  // Files that cannot be read, or have the suffix of none of `files`, are left out.
  RemovedLibraries(const std::vector<GitFile>& removed, const std::vector<SelectedFile>& files, Git& git);

  // The paths of the files with one of these libraries, in order. Each path is returned once.
  std::set<std::string> Take(const std::set<std::string>& libraries);

 private:
  std::map<std::string, std::set<std::string>> paths_;
};

}  // namespace korvel
