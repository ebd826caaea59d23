// Tested by tests/tool/history_git_test.cpp.
#include "project/file_versions.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>
#include <utility>

#include "base/input_error.h"
#include "base/paths.h"
#include "base/text.h"
#include "project/baseline.h"
#include "project/continued_files.h"
#include "project/git_call.h"
#include "project/history_selection.h"
#include "project/project_path.h"
#include "project/version_walk.h"
#include "schema/file_bytes.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

constexpr char kHead[] = "git:HEAD";

// The versions of the files of one call.
class VersionFinder {
 public:
  VersionFinder(const VersionSelection& selection, const Project* project)
      : selection_(selection),
        argument_(selection.paths.empty() ? std::string(kHead) : selection.paths.front()),
        finder_(RequireCommit(argument_), git_),
        range_(Range()),
        tags_(selection.tags ? TagsOf(*selection.tags) : std::vector<std::string>()),
        files_(Select(project)),
        directory_(ProjectDirectory(project, finder_.top())) {}

  std::vector<FileVersions> Run() {
    for (const SelectedFile& file : files_) tracks_.push_back({.path = file.path, .path_on_disk = OnDisk(file)});
    VersionWalk(finder_.top(), range_, argument_).Run(tracks_, git_);
    std::vector<FoundVersions> found;
    for (std::size_t i = 0; i < files_.size(); ++i) found.push_back(selection_.tags ? Tagged(i) : Committed(i));
    for (std::size_t i = 0; i < files_.size(); ++i) found[i].is_continued = IsRenamed(i);
    JoinContinued(
        found, [&] { return Order(); }, git_);
    std::vector<FileVersions> all;
    for (FoundVersions& one : found) {
      if (!one.is_continued) all.push_back(std::move(one.file));
    }
    return all;
  }

 private:
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
    return SelectHistoryFiles({selection_.paths, revisions, selection_.tags ? "" : range_, argument_}, project, finder_, git_);
  }

  // The file in the work tree, or "".
  std::string OnDisk(const SelectedFile& file) const {
    std::error_code ignored;
    const fs::path path = fs::path(finder_.top()) / file.path;
    return fs::is_regular_file(path, ignored) ? path.string() : "";
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

  // The path as it was given, if the file had it then; else from the top.
  std::string NameIn(const std::string& revision, const GitFile& file, const SelectedFile& selected) const {
    const bool is_given = file.path == selected.path && IsFromHere(selected.shown);
    return "git:" + revision + ":" + (is_given ? selected.shown : file.path);
  }

  FileVersion InGit(const std::string& revision, const GitFile& file, const SelectedFile& selected) const {
    return {NameIn(revision, file, selected), PathInProject(directory_, file.path), file};
  }

  // What a removed file is compared with.
  FileVersion Removed(const std::string& name, const std::string& path) const {
    return {.name = name, .path_in_project = PathInProject(directory_, path), .in_git = std::nullopt, .is_removed = true};
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
    if (result.versions.empty() && !track.directory_until.empty()) result.missing = ReasonOfDirectory(track);
    AddUncommitted(track, selected, found);
    AddRemoved(selected, found);
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

  // Why there is no file at a path at which there was a directory.
  std::string ReasonOfDirectory(const FileTrack& track) const {
    if (!FindObject("HEAD:" + track.path, argument_).empty()) return "is a directory that the work tree no longer has";
    return "was a directory until commit " + track.directory_until + " removed or renamed it";
  }

  // A work tree that differs from the last commit is the last version.
  void AddUncommitted(const FileTrack& track, const SelectedFile& selected, FoundVersions& found) {
    FileVersions& result = found.file;
    const bool is_in_head = !result.versions.empty() && !track.removal;
    if (track.path_on_disk.empty()) {
      found.removal = track.removal;
      if (!is_in_head || IsLeftOut(selected.path)) return;
      result.notes.emplace_back("the work tree no longer has the file");
      found.removal = LostPath{"", selected.path};
      return;
    }
    if (result.versions.empty()) found.added_by = "";
    if (is_in_head) {
      const Bytes bytes = ReadAll(OpenInput(track.path_on_disk));
      const GitFile& last = *result.versions.back().in_git;
      if (last.path == selected.path && IsBlobOf(last, bytes.View())) return;
    }
    const std::string shown = fs::path(track.path_on_disk).lexically_relative(AbsolutePath("")).string();
    result.versions.push_back({shown, PathInProject(directory_, selected.path), std::nullopt, shown});
  }

  // The last version of a file that was removed.
  void AddRemoved(const SelectedFile& selected, FoundVersions& found) const {
    if (!found.removal || found.file.versions.empty()) return;
    const LostPath& removal = *found.removal;
    const GitFile file{removal.path, "", ""};
    const std::string name = removal.commit.empty() ? selected.shown : NameIn(removal.short_commit, file, selected);
    found.file.versions.push_back(Removed(name, removal.path));
  }

  // Whether another file is this one under a new path.
  bool IsRenamed(std::size_t i) const {
    const FileTrack& track = tracks_[i];
    const bool is_on_disk = !track.path_on_disk.empty();
    if (is_on_disk) return false;
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
    if (!missing.empty()) result.notes.push_back("not in " + Join(missing, ", "));
    AddRemoved(files_[i], found);
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

// Without any file that has two versions, nothing is compared.
void RequireTwoVersions(const std::vector<FileVersions>& files, const VersionSelection& selection) {
  if (std::ranges::any_of(files, [](const FileVersions& file) { return file.versions.size() >= 2; })) return;
  InputError few;
  for (const FileVersions& file : files) {
    if (!file.missing.empty()) {
      few.lines.push_back(ToolMessage(OneLine(file.file) + ": " + file.missing + "; allowed: a file or directory that exists"));
      continue;
    }
    const std::string what = selection.tags ? "tag that matches " + Quote(*selection.tags) : "commit";
    const std::string number = file.versions.empty() ? "no " + what : "only one " + what;
    const std::string clone = IsShallow(file.file) ? " of this shallow clone" : "";
    few.lines.push_back(
        ToolMessage(OneLine(file.file) + ": is in " + number + clone + "; allowed: a file with at least two versions"));
  }
  throw few;
}

}  // namespace

bool IsInHead(const std::string& path) {
  if (fs::path(path).is_absolute()) return false;
  try {
    return !FindObject("HEAD:./" + path, path).empty();
  } catch (const InputError&) {
    return false;  // without git
  }
}

FileVersions NamedVersions(const std::vector<std::string>& paths, const Project* project) {
  FileVersions named;
  for (const std::string& path : paths) named.versions.push_back({path, PathInProject(project, path), std::nullopt, path});
  return named;
}

std::vector<FileVersions> VersionsInGit(const VersionSelection& selection, const Project* project) {
  std::vector<FileVersions> files = VersionFinder(selection, project).Run();
  RequireTwoVersions(files, selection);
  return files;
}

}  // namespace korvel
