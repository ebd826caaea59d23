// Walks back through the commits that changed files, and along their renames.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "project/git_log.h"
#include "project/rename_search.h"

namespace korvel {

// A state of a file in a commit.
struct CommittedVersion {
  std::string commit;  // abbreviated as git does
  GitFile file;        // with its path at that time
};

// A path that a file lost in a commit; an empty commit is the work tree.
struct LostPath {
  std::string commit;
  std::string path;
  std::string short_commit = {};

  bool IsSame(const LostPath& other) const { return commit == other.commit && path == other.path; }
};

// One file on the way back.
struct FileTrack {
  std::string path;                             // from the top; where the walk is, the path at that time
  std::string path_on_disk;                     // of the file in the work tree, or empty
  bool is_link_on_disk = false;                 // the work tree has a link there, which is not followed
  std::vector<CommittedVersion> versions = {};  // newest first
  std::vector<std::string> paths = {};          // all that it had, newest first
  std::vector<std::string> notes = {};          // gaps, newest first
  std::string beginning = {};                   // how the oldest version came to be; empty if the range ends before
  std::string begun_by = {};                    // the commit that added the file, if the walk ended there and it has a parent
  std::vector<LostPath> moved_from = {};        // renames that the walk followed
  std::optional<LostPath> removal = {};         // of a file that HEAD does not have any more
};

// Fills in the tracks with the commits of a range. Renames are searched for round by round, so that one git process serves all
// files. Throws InputError as GitOutput; errors name `argument`.
class VersionWalk {
 public:
  VersionWalk(std::string top, std::string range, std::string argument)
      : top_(std::move(top)), range_(std::move(range)), argument_(std::move(argument)) {}

  void Run(std::vector<FileTrack>& tracks, Git& git);

 private:
  // A track that the walk has not finished.
  struct Position {
    FileTrack* track;
    std::string until = {};            // the commit that was visited last; empty: none
    const GitCommit* adder = nullptr;  // the commit that added the file, or null: not in the range
    GitFile added = {};
    bool is_finished = false;
  };

  void Visit(Position& position, const std::vector<GitCommit>& commits) const;
  void FollowRenames(std::vector<Position>& positions, const std::vector<GitCommit>& commits, Git& git) const;
  void FollowUncommitted(std::vector<Position>& positions, Git& git) const;
  std::string BeginningAt(const GitCommit& commit) const;

  std::string top_;
  std::string range_;
  std::string argument_;
};

}  // namespace korvel
