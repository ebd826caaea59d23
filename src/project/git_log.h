// What commits changed, as git log reports it.
#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "project/child_process.h"
#include "project/git.h"

namespace korvel {

// A file that a commit or the work tree changed.
struct GitChange {
  char status = 'M';  // A added, D deleted, M modified, T another kind of file, R renamed
  GitFile before;     // empty object if added; of a renamed file, with its old path
  GitFile after;      // empty object if deleted, and in the work tree
};

// A commit with changes to its first parent.
struct GitCommit {
  std::string id;
  std::string short_id;     // only of LogOf
  std::size_t parents = 0;  // 0 also at the boundary of a shallow clone
  std::vector<GitChange> changes;
};

// The commits of a range ("HEAD", "v1..HEAD") that changed these files, newest first, along the first parents. Renames are an
// added and a deleted file. Paths are from `top`, the top of the work tree. Throws InputError as GitOutput.
std::vector<GitCommit> LogOf(const std::string& top, const std::string& range, const std::vector<std::string>& paths,
                             const std::string& argument);

// The files that commits of a range deleted in these directories (none: anywhere), along the first parents, newest first, each as
// it was before.
std::vector<GitFile> DeletedFiles(const std::string& top, const std::string& range, const std::vector<std::string>& directories,
                                  const std::string& argument);

// The ids of the commits of a range, newest first, along the first parents.
std::vector<std::string> CommitsOf(const std::string& top, const std::string& range, const std::string& argument);

// All changes of these commits, with renames, without short ids.
std::vector<GitCommit> ChangesOf(const std::string& top, const std::vector<std::string>& commits, const std::string& argument);

// The changes of the work tree since HEAD, to files that git knows, with renames.
std::vector<GitChange> UncommittedChanges(const std::string& top, const std::string& argument);

// Finds files in many revisions with one git process.
class ObjectFinder {
 public:
  // Throws std::system_error if git cannot be started.
  ObjectFinder();

  // The file at a path from the top; nullopt if the revision has none. Links count as files.
  std::optional<GitFile> Find(const std::string& revision, const std::string& path);

 private:
  ChildProcess names_;
};

// The commits whose parents a shallow clone lacks.
std::set<std::string> ShallowCommits(const std::string& argument);

}  // namespace korvel
