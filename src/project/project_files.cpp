// Selects files; check_project.cpp compares them. Tested by tests/tool/against_test.cpp.
#include "project/project_files.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/paths.h"
#include "base/text.h"
#include "project/dropped_files.h"
#include "project/file_selection.h"
#include "project/git.h"
#include "project/inner_repository.h"
#include "project/near_pattern.h"
#include "project/project_path.h"
#include "project/revision_hint.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

// The path from a directory to something inside it, "" for itself.
std::string Below(const fs::path& path, const std::string& top, const std::string& shown) {
  const fs::path below = path.lexically_relative(top);
  if (LeadsOut(below)) throw InputError{{ToolMessage(OneLine(shown) + ": is not inside " + OneLine(top))}};
  return below == "." ? "" : below.string();
}

std::string NoMatch(const ProjectScope& scope, const ProjectText& pattern, bool is_excluded, const ProjectStates& states) {
  const std::string directory = Patterns(scope).Directory(pattern);
  const std::string repository = directory.empty() ? "" : RepositoryAt(states, directory);
  std::string what = " matches no file";
  if (is_excluded) {
    what = " matches only files that 'exclude' leaves out";
  } else if (!repository.empty()) {
    what += " outside " + Describe(states, repository);
  } else {
    what += ToText(FindNearPattern(pattern.text, scope, *states.new_state));
  }
  return OneLine(FileLineColumn(PathText(scope.project->file), pattern.location) + ": error: " + Quote(pattern.text) + what +
                 "; allowed: patterns that match a file" + (states.has_old ? " of either state" : ""));
}

// Whether a directory is, or contains, another one; through links as well.
bool Contains(const fs::path& directory, const fs::path& other) {
  std::error_code error;
  const fs::path below = fs::relative(other, directory, error);
  return !error && !LeadsOut(below);
}

// Whether the condition holds for any of the files below a directory.
bool AnyBelow(const std::set<std::string>& files, const std::string& directory, auto condition) {
  const std::string prefix = PrefixOf(directory);
  for (auto file = files.lower_bound(prefix); file != files.end() && file->starts_with(prefix); ++file) {
    if (condition(*file)) return true;
  }
  return false;
}

// Marks the nested project files whose schemas are all selected. Their patterns must match files, too.
void AddCovered(const WholeProject& whole, const ProjectStates& states, const ProjectFiles& files, InputError& faults) {
  NearestProjects& projects = *states.projects;
  projects.projects().SetCovered(0);
  for (const ProjectScope& scope : projects.nested()) {
    if (!whole.IsCovered(scope)) continue;
    projects.projects().SetCovered(scope.position);
    const Patterns patterns(scope);
    for (const ProjectText& pattern : scope.project->paths) {
      const auto matches = [&](const std::string& file) {
        return projects.Of(file).position == scope.position && patterns.Match(pattern, file);
      };
      const bool is_matched =
          AnyBelow(files.in_new, scope.directory, matches) || AnyBelow(files.in_old, scope.directory, matches);
      if (is_matched) continue;
      const bool is_excluded = std::ranges::any_of(states.new_state->Below(scope.directory), [&](const std::string& file) {
        return patterns.MatchBeforeExclude(pattern, file);
      });
      faults.lines.push_back(NoMatch(scope, pattern, is_excluded, states));
    }
  }
}

ProjectFiles FilesOfPatterns(WholeProject& whole, const ProjectStates& states) {
  ProjectFiles files;
  files.is_whole = true;
  InputError faults;
  const Patterns& patterns = whole.OfCall();
  for (const ProjectText& pattern : patterns.All()) {
    bool is_matched = false;
    bool is_excluded = false;
    const auto add = [&](const FileTree& state, std::set<std::string>& selected) {
      for (const std::string& file : state.Below(patterns.Directory(pattern))) {
        is_matched = is_matched || patterns.Match(pattern, file);
        is_excluded = is_excluded || patterns.MatchBeforeExclude(pattern, file);
        if (whole.Selects(pattern, file)) selected.insert(file);
      }
    };
    add(*states.old_state, files.in_old);
    add(*states.new_state, files.in_new);
    if (!is_matched) faults.lines.push_back(NoMatch(states.projects->OfCall(), pattern, is_excluded, states));
  }
  states.projects->RequireNoFaults();
  AddCovered(whole, states, files, faults);
  if (!faults.lines.empty()) throw faults;
  return files;
}

// The files that a given path selects in one state.
std::set<std::string> Named(const FileTree& state, NearestProjects& projects, const std::string& path) {
  if (state.HasFile(path)) return {path};
  std::set<std::string> files;
  for (const std::string& file : state.Below(path)) {
    if (IsSchemaName(projects, file)) files.insert(file);
  }
  return files;
}

// Whether the project files of either state select a file of the old one: its patterns may have moved with it.
bool WasSchemaName(const ProjectStates& states, const std::string& path) {
  return IsSchemaName(*states.projects, path) || IsSchemaName(states.old_projects->nearest(), path);
}

// A call may name only the new path of a moved file, as hooks do; the file is not new then.
std::vector<std::string> RemovedElsewhere(const ProjectFiles& files, const ProjectStates& states) {
  std::vector<std::string> removed;
  if (std::ranges::includes(files.in_old, files.in_new)) return removed;
  for (const std::string& file : states.old_state->Below("")) {
    const bool is_removed = !files.in_old.contains(file) && !states.new_state->HasFile(file);
    if (is_removed && WasSchemaName(states, file)) removed.push_back(file);
  }
  return removed;
}

// A call may name only the directory that a file was moved from; its tables are not removed then. Files that git ignores are no
// part of the project. Without git, any file may be a copy of the baseline.
std::vector<std::string> AddedElsewhere(const ProjectFiles& files, const ProjectStates& states) {
  std::vector<std::string> added;
  if (!states.baseline.revision || std::ranges::includes(files.in_new, files.in_old)) return added;
  const std::set<std::string> ignored = states.new_state->IgnoredFiles();
  for (const std::string& file : states.new_state->Below("")) {
    if (files.in_new.contains(file) || ignored.contains(file) || states.old_state->HasFile(file)) continue;
    if (IsSchemaName(*states.projects, file)) added.push_back(file);
  }
  return added;
}

// The files and directories in a directory, also those deeper in it.
std::set<std::string> NamesIn(const FileTree& state, const std::string& directory) {
  std::set<std::string> names;
  for (const std::string& file : state.Below(directory)) {
    for (std::string_view name = file; name.size() > directory.size(); name = DirectoryOf(name)) {
      if (!names.emplace(name).second) break;
    }
  }
  return names;
}

// Why a path selects nothing.
std::string Missing(const ProjectStates& states, const std::string& given, const std::string& path) {
  const std::string begin = OneLine(given) + ": ";
  if (const std::string repository = RepositoryOf(states, path); !repository.empty()) {
    return ToolMessage(begin + "belongs to " + Describe(states, repository));
  }
  if (!states.new_state->Below(path).empty()) {
    const ProjectScope& scope = states.projects->Of(path + "/");
    const std::optional<NearPattern> near = FindPatternFor(path, scope, *states.new_state);
    if (!Patterns(scope).IsEmpty())
      return ToolMessage(begin + "no file in it matches 'paths' of the project file" + ToText(near));
    const std::string file = near ? states.new_state->Display(PrefixOf(scope.directory) + near->file) : "";
    return ToolMessage(
        begin + "no file in it has the suffix .xml or .qmb" +
        (near ? "; " + PathText(file) + " is a schema file: name it, or select it by 'paths' of a project file" : ""));
  }
  if (const std::string repository = RepositoryAt(states, path); !repository.empty()) {
    return ToolMessage(begin + "no schema file outside " + Describe(states, repository));
  }
  const std::set<std::string> names = NamesIn(*states.new_state, std::string(DirectoryOf(path)));
  const std::vector<std::string_view> near(names.begin(), names.end());
  return ToolMessage(begin + "no schema file" + (states.has_old ? " in either state" : "") + DidYouMean(path, near) +
                     HintForPath(given));
}

// Of the paths that select nothing, only those with dropped files are allowed.
void RequireFiles(const std::vector<std::pair<std::string, std::string>>& empty, const ProjectStates& states,
                  const ProjectFiles& files) {
  InputError missing;
  if (empty.empty()) return;
  std::set<std::string> dropped = files.in_old;
  for (const DroppedFile& file : files.dropped) dropped.insert(file.path);
  for (const auto& [given, path] : empty) {
    const bool has_dropped = AnyBelow(dropped, path, [](const std::string&) { return true; });
    if (!has_dropped) missing.lines.push_back(Missing(states, given, path));
  }
  if (!missing.lines.empty()) throw missing;
}

ProjectFiles FilesOfPaths(const std::vector<std::string>& paths, const ProjectStates& states) {
  ProjectFiles files;
  std::vector<std::pair<std::string, std::string>> empty;  // as given, and from the top
  std::set<std::string> seen;
  for (const std::string& given : paths) {
    const std::string path = Below(AbsolutePath(given), states.top, given);
    if (!seen.insert(path).second) {
      files.repeated.push_back(given);
      continue;
    }
    const bool is_elsewhere = !RepositoryOf(states, path).empty();
    std::set<std::string> in_old = is_elsewhere ? std::set<std::string>() : Named(*states.old_state, *states.projects, path);
    std::set<std::string> in_new = is_elsewhere ? std::set<std::string>() : Named(*states.new_state, *states.projects, path);
    if (in_old.empty() && in_new.empty()) empty.emplace_back(given, path);
    files.in_old.merge(in_old);
    files.in_new.merge(in_new);
  }
  for (const std::string& path : seen) states.projects->Of(path);
  states.projects->RequireNoFaults();
  AddDroppedBelow({seen.begin(), seen.end()}, states, files);
  RequireFiles(empty, states, files);
  files.removed_elsewhere = RemovedElsewhere(files, states);
  files.added_elsewhere = AddedElsewhere(files, states);
  files.given = std::move(seen);
  return files;
}

}  // namespace

ProjectStates OpenStates(const Baseline& baseline, ProjectSet& projects, Links links, const ReplaceTree& replace) {
  const Project* const project = projects.OfCall();
  const std::string& name = baseline.name;
  ProjectStates states;
  states.baseline = baseline;
  if (baseline.revision) {
    states.top = AbsolutePath(Git::Top(name));
    states.is_work_tree = true;
    states.old_state = CommitTree(*baseline.revision, name);
    states.new_state = WorkTreeSeenFrom(AbsolutePath(""), states.top, name, links);
  } else {
    std::error_code error;
    if (!fs::is_directory(name, error)) {
      const std::string reason = error ? error.message() : "is not a directory";
      throw InputError{{ToolMessage(OneLine(name) + ": " + reason + HintForBaseline(name) + "; allowed: " + kAllowedBaselines)}};
    }
    states.top = AbsolutePath(project == nullptr ? "" : project->directory);
    if (Contains(name, states.top)) {
      throw InputError{
          {ToolMessage(OneLine(name) + ": is the directory that is checked, or contains it; allowed: an earlier state of it")}};
    }
    states.old_state = DiskTree(name, name, links);
    states.new_state = DiskTreeSeenFrom(AbsolutePath(""), states.top, links);
  }
  if (replace) states.new_state = replace(std::move(states.new_state), states.top);
  states.projects = std::make_unique<NearestProjects>(*states.new_state, projects, ProjectDirectory(project, states.top));
  states.old_projects =
      std::make_unique<OldProjects>(*states.old_state, *states.new_state, states.projects->OfCall(), projects.is_searched());
  return states;
}

ProjectFiles SelectFiles(const std::vector<std::string>& paths, const ProjectStates& states) {
  const Project* const project = states.projects->OfCall().project;
  if (project != nullptr) Below(AbsolutePath(project->directory), states.top, project->file);
  if (!paths.empty()) return FilesOfPaths(paths, states);
  if (project == nullptr || project->paths.empty()) {
    throw InputError{
        {ToolMessage("no schema files are selected; allowed: files and directories as arguments, or 'paths' in "
                     "[schemas] of korvelcheck.toml")}};
  }
  WholeProject whole(*states.projects);
  ProjectFiles files = FilesOfPatterns(whole, states);
  AddDropped(whole, states, files);
  return files;
}

bool HasSchema(const ProjectStates& states) {
  return std::ranges::any_of(states.old_state->Below(""), [&](const std::string& path) {
    return WasSchemaName(states, path) && IsSchema(*states.old_state, path);
  });
}

std::vector<std::string> ShownFiles(const ProjectFiles& files, const ProjectStates& states) {
  std::set<std::string> paths = files.in_old;
  paths.insert(files.in_new.begin(), files.in_new.end());
  paths.insert(files.removed_elsewhere.begin(), files.removed_elsewhere.end());
  paths.insert(files.added_elsewhere.begin(), files.added_elsewhere.end());
  std::vector<std::string> shown;
  shown.reserve(paths.size());
  for (const std::string& path : paths) shown.push_back(states.new_state->Display(path));
  return shown;
}

}  // namespace korvel
