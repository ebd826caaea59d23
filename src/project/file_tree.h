// A state of a project's files: those on the disk, or those of a commit.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "project/git.h"
#include "schema/file_below.h"
#include "schema/file_bytes.h"

namespace korvel {

using TakeVersion = std::function<bool(const std::string& name, Bytes bytes)>;

// Paths are relative to the top of the tree, of names joined by '/'; "" is the top itself.
class FileTree {
 public:
  virtual ~FileTree() = default;

  virtual bool HasFile(const std::string& path) const = 0;
  // Whether the path names anything: on the disk also a directory, or a link to nothing, but not a file below a link.
  virtual bool HasName(const std::string& path) const { return HasFile(path); }
  // All files below a directory, ordered by path; none if it is no directory. Throws InputError.
  virtual std::vector<std::string> Below(const std::string& directory) const = 0;
  // The bytes of a file. May be called by several threads. Throws InputError with lines that begin with Display(path).
  virtual Bytes Read(const std::string& path) = 0;
  // The bytes of a project file, which the call does not name: see ReadFoundProject. Throws as Read.
  virtual Bytes ReadProject(const std::string& path) { return Read(path); }
  // The same as Read, or nullopt if the file consists of the bytes `known`; then it need not be read.
  virtual std::optional<Bytes> ReadUnless(const std::string& path, std::string_view known);
  // The id of the content of a file; "" if it is not known before the file was read.
  virtual std::string ObjectOf(const std::string& /*path*/) const { return ""; }
  // Calls `take` with the displayed name and the bytes of each earlier version of a file, newest first, until it returns true.
  // Whether it did. Only a commit has earlier versions: those on the way of first parents, under the same path. May be called by
  // several threads. Throws InputError.
  virtual bool TakeEarlier(const std::string& /*path*/, const TakeVersion& /*take*/) { return false; }
  // The files that git ignores; none of a state that is no work tree. Runs git. Throws InputError.
  virtual std::set<std::string> IgnoredFiles() const { return {}; }
  // The file as reports show it.
  virtual std::string Display(const std::string& path) const = 0;
};

// The files on the disk below a directory, displayed with `shown` in front. `top` itself may be a link. Below it, links count as
// files, which cannot be read, as in a commit. If links are followed, a link to a directory is no file, but is not searched
// either. .git is skipped.
std::unique_ptr<FileTree> DiskTree(const std::string& top, const std::string& shown, Links links);

// The same, displayed as paths from the directory `here`. Both directories are absolute.
std::unique_ptr<FileTree> DiskTreeSeenFrom(const std::string& here, const std::string& top, Links links);

// The same of a work tree of git, without the repositories in it, but with the files that a sparse checkout leaves out. Errors of
// git name `argument`.
std::unique_ptr<FileTree> WorkTreeSeenFrom(const std::string& here, const std::string& top, const std::string& argument,
                                           Links links);

// The files of a commit. A link cannot be read: it may lead out of the commit. `argument` ("git:REV") is the prefix of displayed
// files; errors name it.
std::unique_ptr<FileTree> CommitTree(const std::string& revision, const std::string& argument);

}  // namespace korvel
