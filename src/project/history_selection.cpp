// Tested by tests/tool/history_git_test.cpp and history_removal_test.cpp.
#include "project/history_selection.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include "base/input_error.h"
#include "base/paths.h"
#include "base/text.h"
#include "project/baseline.h"
#include "project/file_selection.h"
#include "project/git_call.h"
#include "project/git_log.h"
#include "project/project_files.h"
#include "project/project_path.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

constexpr char kHead[] = "git:HEAD";

// The files of HEAD, and the names of files that earlier commits had.
class PastTree : public FileTree {
 public:
  PastTree(std::unique_ptr<FileTree> head, std::set<std::string> past) : head_(std::move(head)), past_(std::move(past)) {}

  bool HasFile(const std::string& path) const override { return past_.contains(path) || head_->HasFile(path); }
  std::vector<std::string> Below(const std::string& directory) const override {
    const std::vector<std::string> in_head = head_->Below(directory);
    std::set<std::string> files(in_head.begin(), in_head.end());
    const std::string prefix = PrefixOf(directory);
    for (auto file = past_.lower_bound(prefix); file != past_.end() && file->starts_with(prefix); ++file) files.insert(*file);
    return {files.begin(), files.end()};
  }
  Bytes Read(const std::string& path) override {
    if (!head_->HasFile(path)) throw InputError{{ToolMessage(OneLine(path) + ": is not in HEAD")}};
    return head_->Read(path);
  }
  std::string Display(const std::string& path) const override { return head_->Display(path); }

 private:
  std::unique_ptr<FileTree> head_;
  std::set<std::string> past_;
};

class HistorySelection {
 public:
  HistorySelection(const HistoryRequest& request, const Project* project, const PathFinder& finder, Git& git)
      : request_(request), finder_(finder), git_(git), projects_(project, false) {}  // judged by the project file of the call

  std::vector<SelectedFile> Files() {
    if (request_.paths.empty()) AddSelected({});
    for (const std::string& given : request_.paths) {
      if (IsDirectory(given)) {
        AddSelected({finder_.OnDisk(given).string()});
      } else {
        files_.push_back({finder_.FromTop(given), given});
      }
    }
    std::set<std::string> named;
    for (const SelectedFile& file : files_) {
      if (!file.is_by_suffix) named.insert(file.path);
    }
    for (SelectedFile& file : files_) file.is_by_suffix = !named.contains(file.path);
    std::set<std::string> seen;
    std::erase_if(files_, [&](const SelectedFile& file) { return !seen.insert(file.path).second; });
    return std::move(files_);
  }

 private:
  bool IsDirectory(const std::string& given) {
    std::error_code ignored;
    const fs::path on_disk = finder_.OnDisk(given);
    if (fs::exists(on_disk, ignored)) return fs::is_directory(on_disk, ignored);
    return !States().old_state->Below(finder_.FromTop(given)).empty();
  }

  void AddSelected(const std::vector<std::string>& paths) {
    const ProjectFiles selected = SelectFiles(paths, States());
    std::set<std::string> all = selected.in_old;
    all.insert(selected.in_new.begin(), selected.in_new.end());
    const bool is_by_suffix = Patterns(States().projects->OfCall()).IsEmpty();
    for (const std::string& path : all) files_.push_back({path, States().new_state->Display(path), is_by_suffix});
  }

  // Opened for the first directory.
  const ProjectStates& States() {
    if (!states_) {
      states_ = OpenStates(ResolveBaseline(kHead), projects_, request_.links);
      states_->old_state = std::make_unique<PastTree>(std::move(states_->old_state), Past());
    }
    return *states_;
  }

  std::set<std::string> Past() {
    std::set<std::string> past;
    for (const std::string& revision : request_.revisions) {
      for (const GitFile& file : git_.Files(revision, "git:" + revision)) past.insert(file.path);
    }
    if (!request_.range.empty()) {
      for (GitFile& file : DeletedFiles(finder_.top(), request_.range, Directories(), request_.argument)) {
        past.insert(std::move(file.path));
      }
    }
    return past;
  }

  // Where the files of the call may be; empty: anywhere.
  std::vector<std::string> Directories() {
    std::vector<std::string> directories;
    for (const std::string& given : request_.paths) directories.push_back(finder_.FromTop(given));
    if (directories.empty() && projects_.OfCall() != nullptr) {
      const Patterns patterns(states_->projects->OfCall());
      if (patterns.IsEmpty()) return {};
      for (const ProjectText& pattern : patterns.All()) directories.push_back(patterns.Directory(pattern));
    }
    const bool has_top = std::ranges::any_of(directories, [](const std::string& one) { return one.empty() || one == "."; });
    return has_top ? std::vector<std::string>() : directories;
  }

  const HistoryRequest& request_;
  const PathFinder& finder_;
  Git& git_;
  ProjectSet projects_;
  std::optional<ProjectStates> states_;
  std::vector<SelectedFile> files_;
};

}  // namespace

PathFinder::PathFinder(const std::string& argument, Git& git)
    : top_(AbsolutePath(Git::Top(argument))), is_top_(git.Prefix(argument).empty()) {}

fs::path PathFinder::OnDisk(const std::string& given) const {
  std::error_code ignored;
  const fs::path from_here = AbsolutePath(given);
  const bool is_here = is_top_ || IsFromHere(given) || fs::path(given).is_absolute() || fs::exists(from_here, ignored);
  return is_here ? from_here : AbsolutePath((fs::path(top_) / given).string());
}

std::string PathFinder::FromTop(const std::string& given) const {
  const fs::path path = OnDisk(given).lexically_relative(top_);
  if (LeadsOut(path)) RefuseArgument(given, "is outside of the repository");
  return path.string();
}

std::vector<SelectedFile> SelectHistoryFiles(const HistoryRequest& request, const Project* project, const PathFinder& finder,
                                             Git& git) {
  return HistorySelection(request, project, finder, git).Files();
}

}  // namespace korvel
