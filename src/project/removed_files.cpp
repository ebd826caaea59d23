// Tested by tests/tool/history_removal_test.cpp and history_moves_test.cpp.
#include "project/removed_files.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <utility>

#include "base/input_error.h"
#include "project/git_call.h"
#include "project/git_log.h"
#include "project/rename_search.h"
#include "schema/input.h"

namespace korvel {
namespace {

// Sets the new paths of the lost files at these positions.
void FindNewPaths(const std::vector<LostPath>& lost, const std::vector<std::size_t>& positions,
                  const std::vector<GitChange>& changes, const std::string& top, Git& git, std::vector<std::string>& new_paths) {
  std::set<std::string_view> suffixes;
  for (const std::size_t i : positions) suffixes.insert(SuffixOf(lost[i].path));
  std::vector<AddedFile> added;
  for (const GitChange& change : changes) {
    const bool is_added = (change.status == 'A' || change.status == 'R') && change.after.mode != kLinkMode;
    if (!is_added || !suffixes.contains(SuffixOf(change.after.path))) continue;
    added.push_back({change.after.path, change.after, top + "/" + change.after.path});
  }
  for (const auto& [new_path, old_file] : FindOldFiles(added, changes, git)) {
    for (const std::size_t i : positions) {
      if (lost[i].path == old_file.path && SuffixOf(new_path) == SuffixOf(old_file.path)) new_paths[i] = new_path;
    }
  }
}

// Nothing if the version cannot be read.
std::optional<std::string> LibraryOf(const FileVersion& version, Git& git) {
  if (version.is_link) return std::nullopt;
  try {
    const Input input =
        version.in_git ? LoadBytes(version.name, git.ReadFile(*version.in_git, version.name)) : LoadFile(version.path_on_disk);
    return std::string(input.LibraryName());
  } catch (const InputError&) {
    return std::nullopt;
  }
}

}  // namespace

std::string_view SuffixOf(std::string_view path) {
  const std::size_t dot = path.rfind('.');
  return dot == std::string_view::npos ? std::string_view() : path.substr(dot);
}

std::vector<std::string> NewPathsOf(const std::vector<LostPath>& lost, const std::string& top, const std::string& argument,
                                    Git& git) {
  std::vector<std::string> new_paths(lost.size());
  std::map<std::string, std::vector<std::size_t>> by_commit;
  for (std::size_t i = 0; i < lost.size(); ++i) by_commit[lost[i].commit].push_back(i);
  std::vector<std::string> ids;
  for (const auto& [id, positions] : by_commit) {
    if (!id.empty()) ids.push_back(id);
  }
  if (!ids.empty()) {
    for (const GitCommit& commit : ChangesOf(top, ids, argument)) {
      FindNewPaths(lost, by_commit[commit.id], commit.changes, top, git, new_paths);
    }
  }
  const auto uncommitted = by_commit.find("");
  if (uncommitted != by_commit.end()) {
    FindNewPaths(lost, uncommitted->second, UncommittedChanges(top, argument), top, git, new_paths);
  }
  return new_paths;
}

std::set<std::string> AddedLibraries(const std::vector<FoundVersions>& found, std::size_t first, Git& git) {
  std::set<std::string> libraries;
  for (std::size_t i = first; i < found.size(); ++i) {
    if (!found[i].added_by || found[i].file.versions.empty()) continue;
    if (const auto name = LibraryOf(found[i].file.versions.front(), git)) libraries.insert(*name);
  }
  return libraries;
}

bool MayBeSchema(const GitFile& file, Git& git) {
  try {
    const Bytes bytes = git.ReadFile(file, file.path);
    if (bytes.View().find("<metalib") != std::string_view::npos) return true;
  } catch (const InputError&) {
    return true;  // nobody knows
  }
  return LibraryOf({.name = file.path, .path_in_project = "", .in_git = file}, git).has_value();
}

std::vector<GitFile> RemovedBetween(const std::vector<std::string>& tags, Git& git) {
  std::vector<GitFile> removed;
  std::vector<GitFile> before;
  for (const std::string& tag : tags) {
    if (FindObject(tag + "^{tree}", tag).empty()) continue;
    std::vector<GitFile> files = git.Files(tag, "git:" + tag);
    std::set<std::string_view> paths;
    for (const GitFile& file : files) paths.insert(file.path);
    std::ranges::copy_if(before, std::back_inserter(removed), [&](const GitFile& file) { return !paths.contains(file.path); });
    before = std::move(files);
  }
  return removed;
}

RemovedLibraries::RemovedLibraries(const std::vector<GitFile>& removed, const std::vector<SelectedFile>& files, Git& git) {
  std::set<std::string_view> suffixes;
  for (const SelectedFile& file : files) suffixes.insert(SuffixOf(file.path));
  for (const GitFile& file : removed) {
    if (!suffixes.contains(SuffixOf(file.path))) continue;
    try {
      const Input input = LoadBytes(file.path, git.ReadFile(file, file.path));
      paths_[std::string(input.LibraryName())].insert(file.path);
    } catch (const InputError&) {
      continue;  // no schema
    }
  }
}

std::set<std::string> RemovedLibraries::Take(const std::set<std::string>& libraries) {
  std::set<std::string> taken;
  for (const std::string& library : libraries) {
    const auto found = paths_.find(library);
    if (found == paths_.end()) continue;
    taken.merge(found->second);
    paths_.erase(found);
  }
  return taken;
}

}  // namespace korvel
