// Selects files; check_project.cpp compares them. Tested by tests/tool/against_test.cpp.
#include "project/project_files.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/glob.h"
#include "project/project_path.h"
#include "qmx/qmx_types.h"
#include "schema/input.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

// The path from a directory to something inside it, "" for itself.
std::string Below(const fs::path& path, const std::string& top, const std::string& shown) {
  std::string below = path.lexically_relative(top);
  if (below == ".") return "";
  if (below.empty() || below == ".." || below.starts_with("../")) {
    throw InputError{{ToolMessage(OneLine(shown) + ": is not inside " + OneLine(top))}};
  }
  return below;
}

// The patterns of the project, from the top of its states.
class Patterns {
 public:
  Patterns(const Project* project, const ProjectStates& states) : project_(project) {
    if (project_ == nullptr) return;
    prefix_ = Below(AbsolutePath(project_->directory), states.top, project_->file);
    if (!prefix_.empty()) prefix_ += '/';
  }

  bool IsEmpty() const { return project_ == nullptr || project_->paths.empty(); }
  const std::vector<ProjectText>& All() const { return project_->paths; }

  bool Match(const ProjectText& pattern, const std::string& path) const {
    if (!path.starts_with(prefix_)) return false;
    const std::string_view below = std::string_view(path).substr(prefix_.size());
    const auto matches = [&](const ProjectText& one) { return MatchesGlob(one.text, below); };
    return matches(pattern) && std::ranges::none_of(project_->exclude, matches);
  }

  bool MatchAny(const std::string& path) const {
    return std::ranges::any_of(All(), [&](const ProjectText& pattern) { return Match(pattern, path); });
  }

  // Where the files of a pattern are.
  std::string Directory(const ProjectText& pattern) const {
    std::string directory = prefix_ + std::string(FixedDirectory(pattern.text));
    if (directory.ends_with('/')) directory.pop_back();
    return directory;
  }

  std::string LocationOf(const ProjectText& pattern) const { return FileLineColumn(project_->file, pattern.location); }

 private:
  const Project* project_;
  std::string prefix_;
};

bool HasSchemaSuffix(const std::string& path) { return path.ends_with(".xml") || path.ends_with(".qmb"); }

void AddMatching(const FileTree& state, const Patterns& patterns, const ProjectText& pattern, std::set<std::string>& files) {
  for (const std::string& file : state.Below(patterns.Directory(pattern))) {
    if (patterns.Match(pattern, file)) files.insert(file);
  }
}

bool IsSchema(FileTree& state, const std::string& path) {
  try {
    LoadBytes(path, state.Read(path));
    return true;
  } catch (const InputError&) {
    return false;
  }
}

// The project file as it is in the old state; nullopt if it has none there, or a faulty one.
std::optional<Project> OldProject(const Project& project, const ProjectStates& states) {
  const std::string path = Below(AbsolutePath(project.file), states.top, project.file);
  if (!states.old_state->HasFile(path)) return std::nullopt;
  try {
    return ParseProject(project.file, project.directory, std::string(states.old_state->Read(path).View()));
  } catch (const InputError&) {
    return std::nullopt;
  }
}

// Adds what only the patterns of the old state select there: a narrower 'paths' or a new 'exclude' must not hide a change. A file
// that has gone is compared; one that still exists is only named.
void AddDropped(const Project& project, const ProjectStates& states, ProjectFiles& files) {
  const std::optional<Project> old_project = OldProject(project, states);
  if (!old_project) return;
  const Patterns patterns(&*old_project, states);
  for (const ProjectText& pattern : patterns.All()) {
    std::set<std::string> selected;
    AddMatching(*states.old_state, patterns, pattern, selected);
    for (const std::string& file : selected) {
      if (files.in_old.contains(file) || !IsSchema(*states.old_state, file)) continue;
      if (!states.new_state->HasFile(file)) {
        files.in_old.insert(file);
      } else if (std::ranges::find(files.dropped, file) == files.dropped.end()) {
        files.dropped.push_back(file);
      }
    }
  }
}

ProjectFiles FilesOfPatterns(const Patterns& patterns, const ProjectStates& states) {
  ProjectFiles files;
  files.is_whole = true;
  InputError faults;
  for (const ProjectText& pattern : patterns.All()) {
    std::set<std::string> in_old;
    std::set<std::string> in_new;
    AddMatching(*states.old_state, patterns, pattern, in_old);
    AddMatching(*states.new_state, patterns, pattern, in_new);
    if (in_old.empty() && in_new.empty()) {
      faults.lines.push_back(OneLine(patterns.LocationOf(pattern) + ": error: " + Quote(pattern.text) +
                                     " matches no file; allowed: patterns that match a file of either state"));
    }
    files.in_old.merge(in_old);
    files.in_new.merge(in_new);
  }
  if (!faults.lines.empty()) throw faults;
  return files;
}

bool IsSchemaOf(const Patterns& patterns, const std::string& path) {
  return patterns.IsEmpty() ? HasSchemaSuffix(path) : patterns.MatchAny(path);
}

// The files that a given path selects in one state.
std::set<std::string> Named(const FileTree& state, const Patterns& patterns, const std::string& path) {
  if (state.HasFile(path)) return {path};
  std::set<std::string> files;
  for (const std::string& file : state.Below(path)) {
    if (IsSchemaOf(patterns, file)) files.insert(file);
  }
  return files;
}

// A call may name only the new path of a moved file, as hooks do; the file is not new then.
std::vector<std::string> RemovedElsewhere(const ProjectFiles& files, const Patterns& patterns, const ProjectStates& states) {
  std::vector<std::string> removed;
  if (std::ranges::includes(files.in_old, files.in_new)) return removed;
  for (const std::string& file : states.old_state->Below("")) {
    if (IsSchemaOf(patterns, file) && !files.in_old.contains(file) && !states.new_state->HasFile(file)) removed.push_back(file);
  }
  return removed;
}

// The nearest directory that contains a path, or is it, and is a repository of its own below the top. "" without such a
// directory, and if the baseline is no commit.
std::string RepositoryOf(const ProjectStates& states, const std::string& path) {
  if (!states.baseline.revision) return "";
  std::error_code ignored;
  for (std::string directory = path; !directory.empty();) {
    if (fs::exists(fs::path(states.top) / directory / ".git", ignored)) return directory;
    const std::size_t slash = directory.rfind('/');
    directory.resize(slash == std::string::npos ? 0 : slash);
  }
  return "";
}

// Why a path selects nothing.
std::string Missing(const ProjectStates& states, const Patterns& patterns, const std::string& given, const std::string& path) {
  const std::string begin = OneLine(given) + ": ";
  if (const std::string repository = RepositoryOf(states, path); !repository.empty()) {
    return ToolMessage(begin + "belongs to the repository in " + OneLine(states.new_state->Display(repository)) +
                       ", such as a submodule; check it there");
  }
  if (!states.new_state->Below(path).empty()) {
    const std::string lacks = patterns.IsEmpty() ? "has the suffix .xml or .qmb" : "matches 'paths' of the project file";
    return ToolMessage(begin + "no file in it " + lacks);
  }
  const std::string directory = path.substr(0, path.rfind('/') == std::string::npos ? 0 : path.rfind('/'));
  std::vector<std::string> files = states.new_state->Below(directory);
  std::vector<std::string_view> near(files.begin(), files.end());
  return ToolMessage(begin + "no schema file in either state" + DidYouMean(path, near));
}

ProjectFiles FilesOfPaths(const std::vector<std::string>& paths, const Patterns& patterns, const ProjectStates& states) {
  ProjectFiles files;
  InputError missing;
  std::set<std::string> seen;
  for (const std::string& given : paths) {
    const std::string path = Below(AbsolutePath(given), states.top, given);
    if (!seen.insert(path).second) {
      files.repeated.push_back(given);
      continue;
    }
    const bool is_elsewhere = !RepositoryOf(states, path).empty();
    std::set<std::string> in_old = is_elsewhere ? std::set<std::string>() : Named(*states.old_state, patterns, path);
    std::set<std::string> in_new = is_elsewhere ? std::set<std::string>() : Named(*states.new_state, patterns, path);
    if (in_old.empty() && in_new.empty()) missing.lines.push_back(Missing(states, patterns, given, path));
    files.in_old.merge(in_old);
    files.in_new.merge(in_new);
  }
  if (!missing.lines.empty()) throw missing;
  files.removed_elsewhere = RemovedElsewhere(files, patterns, states);
  return files;
}

}  // namespace

ProjectStates OpenStates(const Baseline& baseline, const Project* project) {
  const std::string& name = baseline.name;
  ProjectStates states;
  states.baseline = baseline;
  if (baseline.revision) {
    states.top = AbsolutePath(Git::Top(name));
    states.old_state = CommitTree(*baseline.revision, name);
    states.new_state = WorkTreeSeenFrom(AbsolutePath(""), states.top, name);
  } else {
    std::error_code error;
    if (!fs::is_directory(name, error)) {
      const std::string reason = error ? error.message() : "is not a directory";
      throw InputError{{ToolMessage(OneLine(name) + ": " + reason + "; allowed: " + kAllowedBaselines)}};
    }
    states.top = AbsolutePath(project == nullptr ? "" : project->directory);
    states.old_state = DiskTree(name, name);
    states.new_state = DiskTreeSeenFrom(AbsolutePath(""), states.top);
  }
  states.project_directory = ProjectDirectory(project, states.top);
  return states;
}

ProjectFiles SelectFiles(const std::vector<std::string>& paths, const Project* project, const ProjectStates& states) {
  const Patterns patterns(project, states);
  if (!paths.empty()) return FilesOfPaths(paths, patterns, states);
  if (!patterns.IsEmpty()) {
    ProjectFiles files = FilesOfPatterns(patterns, states);
    AddDropped(*project, states, files);
    return files;
  }
  throw InputError{
      {ToolMessage("no schema files are selected; allowed: files and directories as arguments, or 'paths' in "
                   "[schemas] of korvelcheck.toml")}};
}

bool HasSchema(const Project* project, const ProjectStates& states) {
  const Patterns patterns(project, states);
  return std::ranges::any_of(states.old_state->Below(""), [&](const std::string& path) {
    return IsSchemaOf(patterns, path) && IsSchema(*states.old_state, path);
  });
}

std::vector<std::string> ShownFiles(const ProjectFiles& files, const ProjectStates& states) {
  std::set<std::string> paths = files.in_old;
  paths.insert(files.in_new.begin(), files.in_new.end());
  paths.insert(files.removed_elsewhere.begin(), files.removed_elsewhere.end());
  std::vector<std::string> shown;
  shown.reserve(paths.size());
  for (const std::string& path : paths) shown.push_back(states.new_state->Display(path));
  return shown;
}

}  // namespace korvel
