// Tested by tests/tool/history_removal_test.cpp.
#include "project/continued_files.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/input_error.h"
#include "base/text.h"
#include "project/moved_files.h"
#include "project/removed_files.h"
#include "schema/input.h"

namespace korvel {
namespace {

// The last state of a removed file, or the first state of an added one.
struct FileEnd {
  FoundVersions* found;
  Input input;
  std::size_t time;  // when it was removed or added; later ones are larger
  bool is_taken = false;
};

class Joiner {
 public:
  Joiner(const std::vector<std::string>& order, Git& git) : git_(git) {
    for (std::size_t i = 0; i < order.size(); ++i) times_[order[i]] = i;
    times_[""] = order.size();
  }

  // Later removals come last, so that a file may be continued several times. Among files that are equally similar to it, the
  // first that was added continues it.
  void Run(const std::vector<FoundVersions*>& removed, const std::vector<FoundVersions*>& added) {
    std::vector<FileEnd> old_files;
    std::vector<FileEnd> new_files;
    for (FoundVersions* const one : removed) {
      const std::vector<FileVersion>& versions = one->file.versions;
      Load(*one, versions[versions.size() - 2], one->removal->commit, old_files);
    }
    for (FoundVersions* const one : added) Load(*one, one->file.versions.front(), *one->added_by, new_files);
    std::ranges::stable_sort(old_files, {}, &FileEnd::time);
    std::ranges::stable_sort(new_files, {}, &FileEnd::time);
    for (const FileEnd& old_file : old_files) Continue(old_file, new_files);
  }

 private:
  void Load(FoundVersions& found, const FileVersion& version, const std::string& when, std::vector<FileEnd>& ends) {
    if (version.is_link) return;
    try {
      Input input =
          version.in_git ? LoadBytes(version.name, git_.ReadFile(*version.in_git, version.name)) : LoadFile(version.path_on_disk);
      ends.push_back({&found, std::move(input), times_.at(when)});
    } catch (const InputError&) {
      return;  // nobody knows what it contains
    }
  }

  static void Continue(const FileEnd& old_file, std::vector<FileEnd>& new_files) {
    std::vector<FileEnd*> later;
    std::vector<const Source*> sources;
    for (FileEnd& one : new_files) {
      if (one.is_taken || one.time < old_file.time || one.found == old_file.found) continue;
      later.push_back(&one);
      sources.push_back(&one.input);
    }
    const Source* const before = &old_file.input;
    for (const auto& [from, to] : FindMoved({&before, 1}, sources)) {
      later[to]->is_taken = true;
      Join(*old_file.found, *later[to]->found);
    }
  }

  static void Join(FoundVersions& from, FoundVersions& to) {
    FileVersions& old_file = from.file;
    FileVersions& file = to.file;
    old_file.versions.pop_back();
    const FileVersion& first = file.versions.front();
    old_file.notes.push_back(OneLine(first.in_git ? first.in_git->path : file.file) + " continues " +
                             OneLine(from.removal->path) + ": both hold a library of the same name");
    file.notes.erase(file.notes.begin(), file.notes.begin() + static_cast<std::ptrdiff_t>(to.beginning_notes));
    file.notes.insert(file.notes.begin(), old_file.notes.begin(), old_file.notes.end());
    file.versions.insert(file.versions.begin(), old_file.versions.begin(), old_file.versions.end());
    to.beginning_notes = from.beginning_notes;
    from.is_continued = true;
  }

  Git& git_;
  std::map<std::string, std::size_t> times_;
};

// The file was moved to a path whose versions are not here.
void EndAt(const LostPath& lost, const std::string& new_path, FoundVersions& found) {
  FileVersions& file = found.file;
  const std::string by = lost.commit.empty() ? "the work tree" : "commit " + lost.short_commit;
  file.versions.pop_back();
  found.removal.reset();
  const std::string removed = by + " removed " + OneLine(lost.path);
  std::erase_if(file.notes, [&](const std::string& note) { return note == removed || note == kLostInWorkTree; });
  file.notes.push_back(by + " moved " + OneLine(lost.path) + " to " + OneLine(new_path) +
                       ", which is not selected: the history ends here");
  if (file.versions.size() < 2) file.moved = "was moved to " + OneLine(new_path) + " by " + by;
}

}  // namespace

void EndMoved(const std::set<std::string>& paths, const std::string& top, const std::string& argument, Git& git,
              std::vector<FoundVersions>& found) {
  std::vector<FoundVersions*> removed;
  std::vector<LostPath> lost;
  for (FoundVersions& one : found) {
    if (one.is_continued || !one.removal || !one.lost || one.lost->path != one.removal->path) continue;
    removed.push_back(&one);
    lost.push_back(*one.lost);
  }
  if (lost.empty()) return;
  const std::vector<std::string> new_paths = NewPathsOf(lost, top, argument, git);
  for (std::size_t i = 0; i < lost.size(); ++i) {
    if (new_paths[i].empty() || paths.contains(new_paths[i])) continue;
    EndAt(lost[i], new_paths[i], *removed[i]);
    removed[i]->is_continued = !removed[i]->is_selected;
  }
}

void JoinContinued(std::vector<FoundVersions>& found, const std::function<std::vector<std::string>()>& order, Git& git) {
  std::vector<FoundVersions*> removed;
  std::vector<FoundVersions*> added;
  for (FoundVersions& one : found) {
    const std::vector<FileVersion>& versions = one.file.versions;
    if (one.is_continued || versions.empty()) continue;
    if (one.added_by) added.push_back(&one);
    if (versions.size() >= 2 && versions.back().is_removed) removed.push_back(&one);
  }
  if (!removed.empty() && !added.empty()) Joiner(order(), git).Run(removed, added);
}

}  // namespace korvel
