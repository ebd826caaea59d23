// Tested by tests/tool/history_git_test.cpp.
#include "project/version_walk.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "base/text.h"

namespace korvel {
namespace {

bool WasChangedBefore(const std::string& path, const GitCommit& commit, const std::vector<GitCommit>& commits) {
  const auto is_it = [&](const GitChange& change) { return change.before.path == path; };
  return std::any_of(commits.data() + (&commit - commits.data()) + 1, commits.data() + commits.size(),
                     [&](const GitCommit& older) { return std::ranges::any_of(older.changes, is_it); });
}

}  // namespace

// Each round reads the commits that changed the present paths, follows each file to the commit that added it, and finds out where
// that commit moved it from.
void VersionWalk::Run(std::vector<FileTrack>& tracks, Git& git) {
  std::vector<Position> open;
  for (FileTrack& track : tracks) {
    track.paths.push_back(track.path);
    open.push_back({&track});
  }
  for (bool is_first = true; !open.empty(); is_first = false) {
    std::set<std::string> paths;
    for (const Position& position : open) paths.insert(position.track->path);
    const std::vector<GitCommit> commits = LogOf(top_, range_, {paths.begin(), paths.end()}, argument_);
    for (Position& position : open) Visit(position, commits);
    if (is_first) FollowUncommitted(open, git);
    FollowRenames(open, commits, git);
    std::erase_if(open, [](const Position& position) { return position.is_finished; });
  }
}

// Adds the versions up to the commit that added the file.
void VersionWalk::Visit(Position& position, const std::vector<GitCommit>& commits) const {
  FileTrack& track = *position.track;
  bool is_newer = !position.until.empty();
  position.adder = nullptr;
  for (const GitCommit& commit : commits) {
    if (is_newer) {
      is_newer = commit.id != position.until;
      continue;
    }
    for (const GitChange& change : commit.changes) {
      if (change.before.path != track.path) continue;
      position.until = commit.id;
      if (change.status == 'D') {
        if (track.versions.empty()) track.removal = LostPath{commit.id, track.path, commit.short_id};
        track.notes.push_back("commit " + commit.short_id + " removed " + OneLine(track.path));
        continue;
      }
      track.versions.push_back({commit.short_id, change.after});
      if (change.status != 'A') continue;
      position.adder = &commit;
      position.added = change.after;
      return;
    }
  }
  position.is_finished = true;
}

// A file that no commit has may have been moved in the work tree.
void VersionWalk::FollowUncommitted(std::vector<Position>& positions, Git& git) const {
  std::vector<AddedFile> added;
  const auto is_only_on_disk = [](const Position& position) {
    const FileTrack& track = *position.track;
    return track.versions.empty() && track.notes.empty() && !track.path_on_disk.empty();
  };
  for (const Position& position : positions) {
    if (is_only_on_disk(position)) added.push_back({position.track->path, {}, position.track->path_on_disk});
  }
  if (added.empty()) return;
  const auto old_files = FindOldFiles(added, UncommittedChanges(top_, argument_), git);
  for (Position& position : positions) {
    const auto found = is_only_on_disk(position) ? old_files.find(position.track->path) : old_files.end();
    if (found == old_files.end()) continue;
    position.track->path = found->second.path;
    position.track->paths.push_back(found->second.path);
    position.track->moved_from.push_back({"", found->second.path});
    position.is_finished = false;
  }
}

void VersionWalk::FollowRenames(std::vector<Position>& positions, const std::vector<GitCommit>& commits, Git& git) const {
  std::map<std::string, std::vector<Position*>> by_commit;
  for (Position& position : positions) {
    if (position.adder != nullptr) by_commit[position.adder->id].push_back(&position);
  }
  std::vector<std::string> ids;
  ids.reserve(by_commit.size());
  for (const auto& [id, of_commit] : by_commit) ids.push_back(id);
  if (ids.empty()) return;
  for (const GitCommit& commit : ChangesOf(top_, ids, argument_)) {
    std::vector<AddedFile> added;
    for (const Position* position : by_commit[commit.id]) added.push_back({position->track->path, position->added, ""});
    const auto old_files = FindOldFiles(added, commit.changes, git);
    for (Position* position : by_commit[commit.id]) {
      FileTrack& track = *position->track;
      const auto found = old_files.find(track.path);
      if (found != old_files.end()) {
        track.path = found->second.path;
        track.paths.push_back(track.path);
        track.moved_from.push_back({commit.id, track.path});
      } else if (!WasChangedBefore(track.path, *position->adder, commits)) {
        track.beginning = BeginningAt(*position->adder);
        if (position->adder->parents > 0) track.begun_by = commit.id;
        position->is_finished = true;
      }
    }
  }
}

std::string VersionWalk::BeginningAt(const GitCommit& commit) const {
  const std::string start = "commit " + commit.short_id;
  if (commit.parents == 0 && ShallowCommits(argument_).contains(commit.id)) {
    return "begins with " + start + ", the oldest of this shallow clone; fetch older versions with: git fetch --unshallow";
  }
  if (commit.parents > 1) {
    return "begins with " + start +
           ", a merge whose first parent does not have the file: versions of the merged branch are missing";
  }
  return "begins with " + start + ", which added the file";
}

}  // namespace korvel
