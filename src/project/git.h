// Files in the commits of a git repository, read through the git program.
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "project/child_process.h"
#include "schema/file_bytes.h"

namespace korvel {

// "git:REV:PATH", split.
struct GitPath {
  std::string revision;  // anything that git accepts as a commit or a tree, or "X...": the merge base of X and HEAD
  std::string path;      // from the top of the repository; from the working directory if it begins with "./" or "../"
};

// Nullopt if it does not begin with "git:". Throws InputError, with one line, if it does and is not of this form.
std::optional<GitPath> ParseGitPath(const std::string& argument);

// REV of "git:REV". Nullopt if it does not begin with "git:"; throws InputError if REV is empty or has a path.
std::optional<std::string> ParseGitRevision(const std::string& argument);

// X of a revision "X...", the merge base of X and HEAD; nullopt for other revisions.
std::optional<std::string> MergeBaseArgument(const std::string& revision);

// A file of a tree: not a directory, but maybe a link or a submodule.
struct GitFile {
  std::string path;    // from the top
  std::string mode;    // "100644"
  std::string object;  // its id
};

// Whether it is a regular file with these bytes, as far as its id shows. False in a repository that does not use SHA-1.
bool IsBlobOf(const GitFile& file, std::string_view bytes);

// The repository of the working directory, or the one that git's environment variables name. Git is not run before it is
// needed.
//
// Every function throws InputError, with one line, if git is not installed, finds no repository here, or fails. Several threads
// may call Read, Files and ReadFile; they then wait for each other. The other functions are for one thread.
class Git {
 public:
  // The bytes of a file.
  Bytes Read(const GitPath& path);

  // All files of the tree of a revision, ordered by path. Errors name `argument`.
  std::vector<GitFile> Files(const std::string& revision, const std::string& argument);

  // The files that are in the index, but not on the disk, because the checkout is sparse. They are as in the index. Ordered by
  // path.
  static std::vector<GitFile> FilesLeftOut(const std::string& argument);

  // The bytes of a file of a tree. Errors name `argument`.
  Bytes ReadFile(const GitFile& file, const std::string& argument);

  // A revision as git takes it: of "X...", the id of the merge base of X and HEAD; else the revision itself.
  static std::string PlainRevision(const std::string& revision, const std::string& argument);

  // The ids of the newest commits that a revision and HEAD have in common: those that are in no other common commit. Usually one;
  // several if branches were merged into each other.
  static std::vector<std::string> MergeBases(const std::string& revision, const std::string& argument);

  // The same if there is only one. Otherwise it throws InputError.
  static std::string MergeBase(const std::string& revision, const std::string& argument);

  // The path from the top of the work tree to the working directory: "" or "sub/dir/".
  std::string Prefix(const std::string& argument);

  // The top of the work tree.
  static std::string Top(const std::string& argument);

 private:
  std::string TreeOf(const std::string& revision, const std::string& argument);
  std::string FromTop(const std::string& path, const std::string& argument);
  GitFile Find(const GitPath& path, const std::string& argument);
  Bytes ReadObject(const std::string& object, const std::string& argument);
  std::size_t RequestObject(const std::string& object, const std::string& argument);
  std::size_t ReadNext(char* to, std::size_t size);
  [[noreturn]] void RefuseEnded(const std::string& argument);

  std::mutex mutex_;
  std::map<std::string, std::string> trees_;  // by revision
  std::optional<std::string> prefix_;
  std::unique_ptr<ChildProcess> objects_;  // git cat-file --batch, once an object was requested
};

}  // namespace korvel
