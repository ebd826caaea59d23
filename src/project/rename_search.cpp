// Tested by tests/tool/history_git_test.cpp.
#include "project/rename_search.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "base/input_error.h"
#include "project/moved_files.h"
#include "project/removed_files.h"
#include "schema/input.h"

namespace korvel {
namespace {

std::optional<Input> LoadIfReadable(const AddedFile& added, Git& git) {
  try {
    if (added.file.object.empty()) return LoadFile(added.path_on_disk);
    return LoadBytes(added.path, git.ReadFile(added.file, added.path));
  } catch (const InputError&) {
    return std::nullopt;
  }
}

// Schemas that could be read, with pointers to them.
struct ReadableFiles {
  std::vector<AddedFile> files;
  std::vector<Input> inputs;

  void Add(const AddedFile& file, Git& git) {
    std::optional<Input> input = LoadIfReadable(file, git);
    if (!input) return;
    files.push_back(file);
    inputs.push_back(std::move(*input));
  }
  std::vector<const Source*> Sources() const {
    std::vector<const Source*> sources;
    for (const Input& input : inputs) sources.push_back(&input);
    return sources;
  }
};

}  // namespace

std::map<std::string, GitFile> FindOldFiles(const std::vector<AddedFile>& added, const std::vector<GitChange>& changes,
                                            Git& git) {
  std::map<std::string, GitFile> old_files;
  std::set<std::string_view> suffixes;
  ReadableFiles now;
  for (const AddedFile& file : added) {
    const auto is_it = [&](const GitChange& change) { return change.status == 'R' && change.after.path == file.path; };
    const auto renamed = std::ranges::find_if(changes, is_it);
    if (renamed != changes.end()) {
      old_files.emplace(file.path, renamed->before);
    } else {
      suffixes.insert(SuffixOf(file.path));
      now.Add(file, git);
    }
  }
  ReadableFiles before;
  for (const GitChange& change : changes) {
    const bool may_be_moved = change.status == 'D' && suffixes.contains(SuffixOf(change.before.path));
    if (may_be_moved && !now.files.empty()) before.Add({change.before.path, change.before, ""}, git);
  }
  for (const auto& [from, to] : FindMoved(before.Sources(), now.Sources())) {
    old_files.emplace(now.files[to].path, before.files[from].file);
  }
  return old_files;
}

}  // namespace korvel
