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
#include "project/git_call.h"
#include "project/project_files.h"
#include "project/project_path.h"
#include "project/version_walk.h"
#include "schema/file_bytes.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

constexpr char kHead[] = "git:HEAD";

// A file of the call.
struct SelectedFile {
  std::string path;   // from the top
  std::string shown;  // on the disk
};

// Paths of the call, from the top of the repository.
class PathFinder {
 public:
  PathFinder(const std::string& argument, Git& git)
      : top_(AbsolutePath(Git::Top(argument))), is_top_(git.Prefix(argument).empty()) {}

  const std::string& top() const { return top_; }

  // The path from the working directory if it leads to a file there, else from the top.
  fs::path OnDisk(const std::string& given) const {
    std::error_code ignored;
    const fs::path from_here = AbsolutePath(given);
    const bool is_here = is_top_ || IsFromHere(given) || fs::path(given).is_absolute() || fs::exists(from_here, ignored);
    return is_here ? from_here : AbsolutePath((fs::path(top_) / given).string());
  }

  std::string FromTop(const std::string& given) const {
    const fs::path path = OnDisk(given).lexically_relative(top_);
    if (LeadsOut(path)) RefuseArgument(given, "is outside of the repository");
    return path.string();
  }

 private:
  std::string top_;
  bool is_top_;
};

// The files that directories or the project select.
void AddSelected(const std::vector<std::string>& paths, const Project* project, std::vector<SelectedFile>& files) {
  ProjectSet projects(project, false);  // a history is judged by the project file of the call
  const ProjectStates states = OpenStates(ResolveBaseline(kHead), projects);
  const ProjectFiles selected = SelectFiles(paths, states);
  std::set<std::string> all = selected.in_old;
  all.insert(selected.in_new.begin(), selected.in_new.end());
  for (const std::string& path : all) files.push_back({path, states.new_state->Display(path)});
}

std::vector<SelectedFile> Select(const VersionSelection& selection, const Project* project, const PathFinder& finder) {
  std::vector<SelectedFile> files;
  if (selection.paths.empty()) AddSelected({}, project, files);
  for (const std::string& given : selection.paths) {
    std::error_code ignored;
    const fs::path on_disk = finder.OnDisk(given);
    if (fs::is_directory(on_disk, ignored)) {
      AddSelected({on_disk.string()}, project, files);
    } else {
      files.push_back({finder.FromTop(given), given});
    }
  }
  std::set<std::string> seen;
  std::erase_if(files, [&](const SelectedFile& file) { return !seen.insert(file.path).second; });
  return files;
}

// The versions of the files of one call.
class VersionFinder {
 public:
  VersionFinder(const VersionSelection& selection, const Project* project)
      : selection_(selection),
        argument_(selection.paths.empty() ? std::string(kHead) : selection.paths.front()),
        finder_(RequireCommit(argument_), git_),
        files_(Select(selection, project, finder_)),
        directory_(ProjectDirectory(project, finder_.top())) {}

  std::vector<FileVersions> Run() {
    for (const SelectedFile& file : files_) tracks_.push_back({.path = file.path, .path_on_disk = OnDisk(file)});
    VersionWalk(finder_.top(), Range(), argument_).Run(tracks_, git_);
    std::vector<FileVersions> all;
    for (std::size_t i = 0; i < files_.size(); ++i) all.push_back(selection_.tags ? Tagged(i) : Committed(i));
    return all;
  }

 private:
  static const std::string& RequireCommit(const std::string& argument) {
    if (FindObject("HEAD", argument).empty()) RefuseRevision("HEAD", argument);
    return argument;
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

  FileVersions Committed(std::size_t i) {
    const FileTrack& track = tracks_[i];
    const SelectedFile& selected = files_[i];
    FileVersions result{selected.shown, {}, {}};
    if (!track.beginning.empty()) result.notes.push_back(track.beginning);
    if (selection_.from) AddFrom(track, selected, result);
    std::for_each(track.versions.rbegin(), track.versions.rend(), [&](const CommittedVersion& version) {
      result.versions.push_back(InGit(version.commit, version.file, selected));
    });
    result.notes.insert(result.notes.end(), track.notes.rbegin(), track.notes.rend());
    if (result.versions.empty() && !track.directory_until.empty()) result.missing = ReasonOfDirectory(track);
    AddUncommitted(track, selected, result);
    return result;
  }

  void AddFrom(const FileTrack& track, const SelectedFile& selected, FileVersions& result) const {
    const auto found = in_from_.find(track.path);
    if (found == in_from_.end()) {
      result.notes.insert(result.notes.begin(), OneLine(*selection_.from) + " does not have the file");
      return;
    }
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
  void AddUncommitted(const FileTrack& track, const SelectedFile& selected, FileVersions& result) {
    const bool is_in_head = !result.versions.empty() && !track.is_deleted;
    if (track.path_on_disk.empty()) {
      if (is_in_head && !IsLeftOut(selected.path)) result.notes.emplace_back("the work tree no longer has the file");
      return;
    }
    if (is_in_head) {
      const Bytes bytes = ReadAll(OpenInput(track.path_on_disk));
      const GitFile& last = *result.versions.back().in_git;
      if (last.path == selected.path && IsBlobOf(last, bytes.View())) return;
    }
    const std::string shown = fs::path(track.path_on_disk).lexically_relative(AbsolutePath("")).string();
    result.versions.push_back({shown, PathInProject(directory_, selected.path), std::nullopt, shown});
  }

  // A sparse checkout lacks files that are in the index.
  bool IsLeftOut(const std::string& path) {
    if (!left_out_) {
      left_out_.emplace();
      for (const GitFile& file : Git::FilesLeftOut(argument_)) left_out_->insert(file.path);
    }
    return left_out_->contains(path);
  }

  FileVersions Tagged(std::size_t i) {
    FileVersions result{files_[i].shown, {}, {}};
    if (tags_.empty()) tags_ = TagsOf(*selection_.tags);
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
        continue;
      }
      const bool is_same = !result.versions.empty() && result.versions.back().in_git->object == file->object &&
                           result.versions.back().in_git->path == file->path;
      if (!is_same) result.versions.push_back(InGit(name, *file, files_[i]));
    }
    if (!missing.empty()) result.notes.push_back("not in " + Join(missing, ", "));
    return result;
  }

  const VersionSelection& selection_;
  std::string argument_;
  Git git_;
  PathFinder finder_;
  std::vector<SelectedFile> files_;
  std::string directory_;  // of the project, from the top
  std::vector<FileTrack> tracks_;
  std::map<std::string, GitFile> in_from_;  // the files of --from
  std::vector<std::string> tags_;
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
