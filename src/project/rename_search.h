// Finds the old path of a file that a commit added.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "project/git_log.h"

namespace korvel {

// Files that one commit added, or the work tree; each with what it contains.
struct AddedFile {
  std::string path;
  GitFile file;              // empty object: in the work tree,
  std::string path_on_disk;  // which this path leads to
};

// The old file of each added file that was moved, by the path of the added file. A file was moved if git finds that a deleted
// file is similar, or if a deleted file holds a library of the same name (FindMoved). `changes` are all changes of the commit.
// Files that cannot be read are no candidates.
std::map<std::string, GitFile> FindOldFiles(const std::vector<AddedFile>& added, const std::vector<GitChange>& changes, Git& git);

}  // namespace korvel
