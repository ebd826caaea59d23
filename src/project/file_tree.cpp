// Lists and reads the files of a state; does not interpret them. Tested by tests/tool/against_test.cpp.
#include "project/file_tree.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include "base/input_error.h"
#include "base/paths.h"
#include "base/text.h"
#include "project/found_project.h"
#include "project/git_call.h"
#include "project/git_log.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

// An empty directory or path adds nothing.
std::string JoinPaths(const std::string& directory, const std::string& path) {
  if (directory.empty() || path.empty()) return directory + path;
  return directory.ends_with('/') ? directory + path : directory + "/" + path;
}

class Disk : public FileTree {
 public:
  Disk(std::string top, std::string shown, Links links) : top_(std::move(top)), shown_(std::move(shown)), links_(links) {}

  bool HasFile(const std::string& path) const override {
    if (IsOutOfReach(path)) return false;
    std::error_code ignored;
    const fs::file_status status =
        links_ == Links::kFollow ? fs::status(OnDisk(path), ignored) : fs::symlink_status(OnDisk(path), ignored);
    return fs::exists(status) && !fs::is_directory(status);
  }

  bool HasName(const std::string& path) const override {
    std::error_code ignored;
    return !IsOutOfReach(path) && fs::exists(fs::symlink_status(OnDisk(path), ignored));
  }

  std::vector<std::string> Below(const std::string& directory) const override {
    std::vector<std::string> files;
    if (IsNotSearched(directory)) return files;
    std::error_code error;
    fs::recursive_directory_iterator entry(OnDisk(directory), error);
    if (error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) return files;
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
      std::error_code ignored;
      const bool is_directory = entry->is_directory(ignored);
      if (is_directory && (entry->path().filename() == ".git" || IsLeftOut(entry->path()))) entry.disable_recursion_pending();
      if (!IsListed(*entry)) continue;
      files.push_back(JoinPaths(directory, entry->path().lexically_relative(OnDisk(directory)).string()));
    }
    if (error) {
      throw InputError{{ToolMessage(OneLine(Display(directory)) + ": its files cannot be listed: " + error.message())}};
    }
    std::ranges::sort(files);
    return files;
  }

  Bytes Read(const std::string& path) override {
    const OpenFile file = OpenBelow(top_, path, Display(path), links_);
    Bytes bytes = ReadAll(file);
    if (file.size > 0) RequireUnchanged(file.name, file.state);
    return bytes;
  }

  std::string Display(const std::string& path) const override { return JoinPaths(shown_, path); }

 protected:
  virtual bool IsLeftOut(const fs::path&) const { return false; }
  Links links() const { return links_; }

 private:
  std::string OnDisk(const std::string& path) const { return JoinPaths(top_, path); }

  // Whether only a link leads to the directory of a file.
  bool IsOutOfReach(const std::string& path) const { return links_ == Links::kRefuse && IsBelowLink(top_, path); }

  // Reading a link that is not followed fails: a file that became one must not seem to be deleted.
  bool IsListed(const fs::directory_entry& entry) const {
    std::error_code ignored;
    if (entry.is_symlink(ignored)) return links_ == Links::kRefuse || !entry.is_directory(ignored);
    return entry.is_regular_file(ignored);
  }

  // Whether a directory, or one above it below the top, is a link or left out.
  bool IsNotSearched(const std::string& directory) const {
    fs::path path = top_;
    return std::ranges::any_of(fs::path(directory), [&](const fs::path& name) {
      std::error_code ignored;
      return fs::is_symlink(path /= name, ignored) || IsLeftOut(path);
    });
  }

  std::string top_;
  std::string shown_;
  Links links_;
};

class DiskSeenFrom : public Disk {
 public:
  DiskSeenFrom(std::string here, const std::string& top, Links links)
      : Disk(top, "", links), here_(std::move(here)), above_(top) {}

  // Not of a baseline: the call names it.
  Bytes ReadProject(const std::string& path) override { return ReadFoundProject(above_, path, Display(path), links()); }

  std::string Display(const std::string& path) const override { return (above_ / path).lexically_relative(here_).string(); }

 private:
  fs::path here_;
  fs::path above_;
};

// Files of the repository, ordered by path.
const GitFile* FindFile(const std::vector<GitFile>& files, const std::string& path) {
  const auto file = std::ranges::lower_bound(files, path, {}, &GitFile::path);
  return file != files.end() && file->path == path ? &*file : nullptr;
}

std::vector<std::string> FilesBelow(const std::vector<GitFile>& files, const std::string& directory) {
  const std::string prefix = PrefixOf(directory);
  std::vector<std::string> paths;
  for (auto file = std::ranges::lower_bound(files, prefix, {}, &GitFile::path); file != files.end(); ++file) {
    if (!file->path.starts_with(prefix)) break;
    paths.push_back(file->path);
  }
  return paths;
}

// Files that a sparse checkout leaves out are not deleted: they are as in the index.
class WorkTree : public DiskSeenFrom {
 public:
  WorkTree(std::string here, std::string top, std::string argument, Links links)
      : DiskSeenFrom(std::move(here), top, links),
        left_out_(Git::FilesLeftOut(argument)),
        top_(std::move(top)),
        argument_(std::move(argument)) {
    std::ranges::sort(left_out_, {}, &GitFile::path);
  }

  bool HasFile(const std::string& path) const override {
    return DiskSeenFrom::HasFile(path) || FindFile(left_out_, path) != nullptr;
  }

  bool HasName(const std::string& path) const override {
    return DiskSeenFrom::HasName(path) || FindFile(left_out_, path) != nullptr;
  }

  std::vector<std::string> Below(const std::string& directory) const override {
    std::vector<std::string> files = DiskSeenFrom::Below(directory);
    std::ranges::copy(FilesBelow(left_out_, directory), std::back_inserter(files));
    std::ranges::sort(files);
    files.erase(std::unique(files.begin(), files.end()), files.end());
    return files;
  }

  std::set<std::string> IgnoredFiles() const override {
    const std::string files = GitOutput({"-C", top_, "ls-files", "--others", "--ignored", "--exclude-standard", "-z"}, argument_);
    const std::vector<std::string> paths = SplitAt(files, '\0');
    return {paths.begin(), paths.end()};
  }

  Bytes Read(const std::string& path) override {
    const GitFile* const file = FindLeftOut(path);
    return file == nullptr ? DiskSeenFrom::Read(path) : git_.ReadFile(*file, Display(path));
  }

  Bytes ReadProject(const std::string& path) override {
    return FindLeftOut(path) == nullptr ? DiskSeenFrom::ReadProject(path) : Read(path);
  }

 protected:
  // A submodule has its own commits: those of this repository lack its files, which would all be new.
  bool IsLeftOut(const fs::path& directory) const override {
    std::error_code ignored;
    return fs::exists(directory / ".git", ignored);
  }

 private:
  const GitFile* FindLeftOut(const std::string& path) const {
    return DiskSeenFrom::HasFile(path) ? nullptr : FindFile(left_out_, path);
  }

  Git git_;
  std::vector<GitFile> left_out_;
  std::string top_;
  std::string argument_;
};

class Commit : public FileTree {
 public:
  Commit(const std::string& revision, std::string argument)
      : revision_(revision), argument_(std::move(argument)), files_(git_.Files(revision, argument_)) {
    std::ranges::sort(files_, {}, &GitFile::path);
  }

  bool HasFile(const std::string& path) const override { return Find(path) != nullptr; }

  std::vector<std::string> Below(const std::string& directory) const override { return FilesBelow(files_, directory); }

  Bytes Read(const std::string& path) override { return git_.ReadFile(*Find(path), Display(path)); }

  // Most files of a commit are as they are on the disk. Their ids show that without git.
  std::optional<Bytes> ReadUnless(const std::string& path, std::string_view known) override {
    if (IsBlobOf(*Find(path), known)) return std::nullopt;
    return FileTree::ReadUnless(path, known);
  }

  std::string ObjectOf(const std::string& path) const override { return Find(path)->object; }

  bool TakeEarlier(const std::string& path, const TakeVersion& take) override {
    const std::string commit = Git::PlainRevision(revision_, argument_);
    for (const GitCommit& one : LogOf(Git::Top(argument_), commit, {path}, argument_)) {
      const GitFile& file = one.changes.front().after;
      const std::string name = "git:" + one.short_id + ":" + path;
      const bool is_file = file.mode.starts_with("100");  // not deleted, no link, no submodule
      if (is_file && take(name, git_.ReadFile(file, name))) return true;
    }
    return false;
  }

  std::string Display(const std::string& path) const override { return argument_ + ":" + path; }

 private:
  const GitFile* Find(const std::string& path) const { return FindFile(files_, path); }

  std::string revision_;
  std::string argument_;
  Git git_;
  std::vector<GitFile> files_;
};

}  // namespace

std::optional<Bytes> FileTree::ReadUnless(const std::string& path, std::string_view known) {
  Bytes bytes = Read(path);
  if (bytes.View() == known) return std::nullopt;
  return bytes;
}

std::unique_ptr<FileTree> DiskTree(const std::string& top, const std::string& shown, Links links) {
  return std::make_unique<Disk>(top, shown, links);
}

std::unique_ptr<FileTree> DiskTreeSeenFrom(const std::string& here, const std::string& top, Links links) {
  return std::make_unique<DiskSeenFrom>(here, top, links);
}

std::unique_ptr<FileTree> WorkTreeSeenFrom(const std::string& here, const std::string& top, const std::string& argument,
                                           Links links) {
  return std::make_unique<WorkTree>(here, top, argument, links);
}

std::unique_ptr<FileTree> CommitTree(const std::string& revision, const std::string& argument) {
  return std::make_unique<Commit>(revision, argument);
}

}  // namespace korvel
