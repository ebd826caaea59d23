// The versions of schema files: files that a call names, or the states of a file in a repository, along its renames.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "project/git.h"
#include "project/project.h"
#include "schema/file_below.h"

namespace korvel {

struct FileVersion {
  std::string name;               // as messages show it: "v1.xml", "git:1a2b3c4:orders.xml"
  std::string path_in_project;    // as in Source
  std::optional<GitFile> in_git;  // of a version in a repository; its path may be another one than today
  std::string path_on_disk = {};  // otherwise, what LoadInputs reads
  bool is_link = false;           // a link in the work tree, which is not followed: the version cannot be read
  bool is_removed = false;        // the file was removed: a version without a table, which is compared with the last one
};

// The versions of one file, oldest first.
struct FileVersions {
  std::string file;  // as given; empty if the call names the versions
  std::vector<FileVersion> versions;
  // Where the history begins or was cut, and gaps in it; one line each, ready to be shown.
  std::vector<std::string> notes;
  std::string moved =
      {};  // where the file went, if it has fewer than two versions: "was moved to old/orders.xml by commit 1a2b3c4"
};

// What to take from a repository.
struct VersionSelection {
  std::vector<std::string> paths;   // files and directories; empty: all files of the project
  std::optional<std::string> from;  // REV: the version of REV is the first one
  std::optional<std::string> tags;  // PATTERN: the versions of the tags that match it, in version order
  Links links = Links::kRefuse;     // to files in the work tree
};

// Whether the last commit has a file or directory at this path, which is relative to the working directory. False outside of
// repositories.
bool IsInHead(const std::string& path);

// Versions that a call names.
FileVersions NamedVersions(const std::vector<std::string>& paths, const Project* project);

// The versions of files in the repository of the working directory: of each file, the commits that changed it along the first
// parents, and the file in the work tree if it differs from the last commit. Renames are followed: a file that a commit added
// under a new path and deleted under an old one is the same file if git finds it similar, or if both hold a library of the same
// name; also if a later commit added it. A file that is removed in the end has a last version without tables. Directories and
// projects also select files of `from`, of each tag, or that a commit of the range deleted. Files whose versions are fewer than
// two are returned, too.
//
// The number of git processes does not depend on the number of versions and files: it grows with the number of renames of a file
// one after the other, and with that of the tags. `project` may be null. Throws InputError as Git, and if nothing is selected.
std::vector<FileVersions> VersionsInGit(const VersionSelection& selection, const Project* project);

}  // namespace korvel
