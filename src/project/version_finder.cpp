// Tested by tests/tool/history_git_test.cpp.
#include "project/version_finder.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "base/paths.h"
#include "base/text.h"
#include "project/baseline.h"
#include "project/continued_files.h"
#include "project/git_call.h"
#include "project/history_selection.h"
#include "project/project_path.h"
#include "project/removed_files.h"
#include "project/version_walk.h"
#include "schema/file_bytes.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

// The versions of the files of one call.
class VersionFinder {
 public:
  VersionFinder(const VersionSelection& selection, const Project* project)
      : selection_(selection),
        argument_(selection.paths.empty() ? "git:HEAD" : selection.paths.front()),
        finder_(RequireCommit(argument_), git_),
        range_(Range()),
        tags_(selection.tags ? TagsOf(*selection.tags) : std::vector<std::string>()),
        files_(Select(project)),
        directory_(ProjectDirectory(project, finder_.top())) {}

  std::vector<FileVersions> Run() {
    const std::size_t requested = files_.size();
    std::vector<FoundVersions> found;
    FindVersions(found);
    AddEarlierFiles(found);
    std::set<std::string> paths;
    for (std::size_t i = 0; i < files_.size(); ++i) {
      paths.insert(files_[i].path);
      found[i].is_continued = IsRenamed(i);
      found[i].is_selected = i < requested;
    }
    EndMoved(paths, finder_.top(), argument_, git_, found);
    JoinContinued(
        found, [&] { return Order(); }, git_);
    std::vector<FileVersions> all;
    for (std::size_t i = 0; i < requested; ++i) {
      if (!found[i].is_continued && !IsNoSchema(i, found[i])) all.push_back(std::move(found[i].file));
    }
    return all;
  }

 private:
  // Of the files that have none yet.
  void FindVersions(std::vector<FoundVersions>& found) {
    std::vector<FileTrack> tracks;
    for (std::size_t i = found.size(); i < files_.size(); ++i) tracks.push_back(TrackOf(files_[i]));
    VersionWalk(finder_.top(), range_, argument_).Run(tracks, git_);
    std::ranges::move(tracks, std::back_inserter(tracks_));
    while (found.size() < files_.size()) found.push_back(selection_.tags ? Tagged(found.size()) : Committed(found.size()));
  }

  // A file of the call may continue a removed one that the call does not select, which may continue another one.
  void AddEarlierFiles(std::vector<FoundVersions>& found) {
    std::optional<RemovedLibraries> removed;
    for (std::size_t known = 0; known < found.size();) {
      const std::set<std::string> libraries = AddedLibraries(found, std::exchange(known, found.size()), git_);
      if (libraries.empty()) return;
      if (!removed) {
        removed.emplace(selection_.tags ? RemovedBetween(tags_, git_) : DeletedFiles(finder_.top(), range_, {}, argument_),
                        files_, git_);
      }
      for (const std::string& path : removed->Take(libraries)) {
        if (std::ranges::find(files_, path, &SelectedFile::path) == files_.end()) files_.push_back({path, FromHere(path)});
      }
      FindVersions(found);
    }
  }

  // A removed file that only its suffix selected, and that never was a schema.
  bool IsNoSchema(std::size_t i, const FoundVersions& found) {
    if (!files_[i].is_by_suffix || !found.lost) return false;
    const auto may_be = [&](const FileVersion& version) { return version.in_git && MayBeSchema(*version.in_git, git_); };
    return std::ranges::none_of(found.file.versions, may_be);
  }

  static const std::string& RequireCommit(const std::string& argument) {
    if (FindObject("HEAD", argument).empty()) RefuseRevision("HEAD", argument);
    return argument;
  }

  std::vector<SelectedFile> Select(const Project* project) {
    std::vector<std::string> revisions;
    if (selection_.from) revisions.push_back(*selection_.from);
    for (const std::string& tag : tags_) {
      if (!FindObject(tag + "^{tree}", argument_).empty()) revisions.push_back(tag);
    }
    return SelectHistoryFiles({selection_.paths, revisions, selection_.tags ? "" : range_, argument_, selection_.links}, project,
                              finder_, git_);
  }

  FileTrack TrackOf(const SelectedFile& file) const {
    const EntryKind kind = KindBelow(finder_.top(), file.path, selection_.links);
    const std::string on_disk = kind == EntryKind::kFile ? (fs::path(finder_.top()) / file.path).string() : "";
    return {.path = file.path, .path_on_disk = on_disk, .is_link_on_disk = kind == EntryKind::kLink};
  }

  std::string Range() {
    if (!selection_.from) return "HEAD";
    const std::string name = "git:" + *selection_.from;
    static_cast<void>(ParseGitRevision(name));
    for (const GitFile& file : git_.Files(*selection_.from, name)) in_from_.emplace(file.path, file);
    const std::optional<std::string> other = MergeBaseArgument(*selection_.from);
    const std::string commit = other ? Git::MergeBase(*other, name) : *selection_.from;
    const std::string id = FindObject(commit + "^{commit}", name);
    if (id.empty()) RefuseArgument(name, "is not a commit");
    return id + "..HEAD";
  }

  // A path of the work tree as it is shown.
  std::string FromHere(const std::string& path) const {
    return (fs::path(finder_.top()) / path).lexically_relative(AbsolutePath("")).string();
  }

  // The path as it was given, if the file had it then; else from the top.
  std::string NameIn(const std::string& revision, const GitFile& file, const SelectedFile& selected) const {
    const bool is_given = file.path == selected.path && IsFromHere(selected.shown);
    return "git:" + revision + ":" + (is_given ? selected.shown : file.path);
  }

  FileVersion InGit(const std::string& revision, const GitFile& file, const SelectedFile& selected) const {
    return {NameIn(revision, file, selected), PathInProject(directory_, file.path), file};
  }

  FoundVersions Committed(std::size_t i) {
    const FileTrack& track = tracks_[i];
    const SelectedFile& selected = files_[i];
    FoundVersions found{{selected.shown, {}, {}}};
    FileVersions& result = found.file;
    if (!track.beginning.empty()) result.notes.push_back(track.beginning);
    if (!track.begun_by.empty()) found.added_by = track.begun_by;
    if (selection_.from) AddFrom(track, selected, found);
    found.beginning_notes = result.notes.size();
    std::for_each(track.versions.rbegin(), track.versions.rend(), [&](const CommittedVersion& version) {
      result.versions.push_back(InGit(version.commit, version.file, selected));
    });
    result.notes.insert(result.notes.end(), track.notes.rbegin(), track.notes.rend());
    AddUncommitted(track, selected, found);
    AddRemoved(track, selected, found);
    return found;
  }

  void AddFrom(const FileTrack& track, const SelectedFile& selected, FoundVersions& found_versions) const {
    FileVersions& result = found_versions.file;
    const auto found = in_from_.find(track.path);
    if (found == in_from_.end()) {
      result.notes.insert(result.notes.begin(), OneLine(*selection_.from) + " does not have the file");
      return;
    }
    found_versions.added_by.reset();
    result.notes.clear();
    result.notes.push_back("begins with " + OneLine(*selection_.from) + " (--from)");
    result.versions.push_back(InGit(*selection_.from, found->second, selected));
  }

  // A work tree that differs from the last commit is the last version.
  void AddUncommitted(const FileTrack& track, const SelectedFile& selected, FoundVersions& found) {
    FileVersions& result = found.file;
    const bool is_in_head = !result.versions.empty() && !track.removal;
    if (track.is_link_on_disk) {
      AddLink(selected, is_in_head, found);
      return;
    }
    if (track.path_on_disk.empty()) {
      found.removal = track.removal;
      if (!is_in_head || IsLeftOut(selected.path)) return;
      result.notes.emplace_back(kLostInWorkTree);
      found.removal = LostPath{"", selected.path};
      return;
    }
    if (result.versions.empty()) found.added_by = "";
    if (is_in_head) {
      const Bytes bytes = ReadAll(OpenInput(track.path_on_disk));
      const GitFile& last = *result.versions.back().in_git;
      if (last.path == selected.path && IsBlobOf(last, bytes.View())) return;
    }
    const std::string shown = FromHere(selected.path);
    result.versions.push_back({shown, PathInProject(directory_, selected.path), std::nullopt, shown});
  }

  // A link in the work tree is a version that cannot be read, unless the last commit has a link there, too.
  void AddLink(const SelectedFile& selected, bool is_in_head, FoundVersions& found) const {
    FileVersions& result = found.file;
    if (is_in_head && result.versions.back().in_git->mode == kLinkMode) return;
    if (result.versions.empty()) found.added_by = "";
    const std::string shown = FromHere(selected.path);
    result.versions.push_back({shown, PathInProject(directory_, selected.path), std::nullopt, shown, true});
  }

  // The last version of a file that was removed.
  void AddRemoved(const FileTrack& track, const SelectedFile& selected, FoundVersions& found) const {
    if (!found.removal || found.file.versions.empty()) return;
    found.lost = selection_.tags ? track.removal : found.removal;
    const LostPath& removal = *found.removal;
    const std::string name =
        removal.commit.empty() ? selected.shown : NameIn(removal.short_commit, {removal.path, "", ""}, selected);
    const std::string in_project = PathInProject(directory_, removal.path);
    found.file.versions.push_back({.name = name, .path_in_project = in_project, .in_git = std::nullopt, .is_removed = true});
  }

  // Whether another file is this one under a new path.
  bool IsRenamed(std::size_t i) const {
    const FileTrack& track = tracks_[i];
    if (!track.path_on_disk.empty() || track.is_link_on_disk) return false;
    const LostPath lost = track.removal.value_or(LostPath{"", track.paths.front()});
    const auto is_it = [&](const LostPath& moved) { return moved.IsSame(lost); };
    return std::ranges::any_of(tracks_, [&](const FileTrack& other) { return std::ranges::any_of(other.moved_from, is_it); });
  }

  // Commits or tags, oldest first.
  std::vector<std::string> Order() const {
    if (selection_.tags) return tags_;
    std::vector<std::string> order = CommitsOf(finder_.top(), range_, argument_);
    std::ranges::reverse(order);
    return order;
  }

  // A sparse checkout lacks files that are in the index.
  bool IsLeftOut(const std::string& path) {
    if (!left_out_) {
      left_out_.emplace();
      for (const GitFile& file : Git::FilesLeftOut(argument_)) left_out_->insert(file.path);
    }
    return left_out_->contains(path);
  }

  FoundVersions Tagged(std::size_t i) {
    FoundVersions found{{files_[i].shown, {}, {}}};
    FileVersions& result = found.file;
    if (!objects_) objects_.emplace();
    std::vector<std::string> missing;
    for (const std::string& tag : tags_) {
      const std::string name = tag.substr(std::string_view("refs/tags/").size());
      std::optional<GitFile> file;
      for (const std::string& path : tracks_[i].paths) {
        if (!file) file = objects_->Find(tag, path);
      }
      if (!file) {
        missing.push_back(OneLine(name));
        if (!found.removal && !result.versions.empty()) found.removal = LostPath{tag, result.versions.back().in_git->path, name};
        continue;
      }
      found.removal.reset();
      if (result.versions.empty() && tag != tags_.front()) found.added_by = tag;
      const bool is_same = !result.versions.empty() && result.versions.back().in_git->object == file->object &&
                           result.versions.back().in_git->path == file->path;
      if (!is_same) result.versions.push_back(InGit(name, *file, files_[i]));
    }
    if (!missing.empty()) result.notes.push_back(OneLine(files_[i].shown) + ": not in " + Join(missing, ", "));
    AddRemoved(tracks_[i], files_[i], found);
    return found;
  }

  const VersionSelection& selection_;
  std::string argument_;
  Git git_;
  PathFinder finder_;
  std::map<std::string, GitFile> in_from_;  // the files of --from
  std::string range_;
  std::vector<std::string> tags_;  // oldest first
  std::vector<SelectedFile> files_;
  std::string directory_;  // of the project, from the top
  std::vector<FileTrack> tracks_;
  std::optional<ObjectFinder> objects_;
  std::optional<std::set<std::string>> left_out_;
};

}  // namespace

std::vector<FileVersions> FindVersionsInGit(const VersionSelection& selection, const Project* project) {
  return VersionFinder(selection, project).Run();
}

}  // namespace korvel
