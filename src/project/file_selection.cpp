// Tested by tests/tool/against_test.cpp and nested_project_test.cpp.
#include "project/file_selection.h"

#include <algorithm>

#include "base/input_error.h"
#include "base/paths.h"
#include "project/glob.h"
#include "schema/input.h"

namespace korvel {
namespace {

// The path below a directory; nullopt if it is elsewhere.
std::optional<std::string_view> PathBelow(const std::string& directory, std::string_view path) {
  if (directory.empty()) return path;
  const bool is_below = path.starts_with(directory) && path.substr(directory.size()).starts_with('/');
  return is_below ? std::optional(path.substr(directory.size() + 1)) : std::nullopt;
}

}  // namespace

bool Patterns::MatchBeforeExclude(const ProjectText& pattern, const std::string& path) const {
  const std::optional<std::string_view> below = PathBelow(scope_.directory, path);
  return below && MatchesGlob(pattern.text, *below);
}

bool Patterns::Match(const ProjectText& pattern, const std::string& path) const {
  return MatchBeforeExclude(pattern, path) && Excluding(path) == nullptr;
}

bool Patterns::MatchAny(const std::string& path) const {
  return std::ranges::any_of(All(), [&](const ProjectText& pattern) { return Match(pattern, path); });
}

bool Patterns::MatchAnyBeforeExclude(const std::string& path) const {
  return std::ranges::any_of(All(), [&](const ProjectText& pattern) { return MatchBeforeExclude(pattern, path); });
}

bool Patterns::IsSchemaName(const std::string& path) const {
  if (!IsEmpty()) return MatchAny(path);
  return (path.ends_with(".xml") || path.ends_with(".qmb")) && Excluding(path) == nullptr;
}

const ProjectText* Patterns::Excluding(const std::string& path) const {
  if (scope_.project == nullptr) return nullptr;
  const std::vector<ProjectText>& exclude = scope_.project->exclude;
  const auto found = std::ranges::find_if(exclude, [&](const ProjectText& one) { return MatchBeforeExclude(one, path); });
  return found == exclude.end() ? nullptr : &*found;
}

std::string Patterns::Directory(const ProjectText& pattern) const {
  std::string directory = PrefixOf(scope_.directory) + std::string(FixedDirectory(pattern.text));
  if (directory.ends_with('/')) directory.pop_back();
  return directory;
}

bool IsSchemaName(NearestProjects& projects, const std::string& path) { return Patterns(projects.Of(path)).IsSchemaName(path); }

bool IsSchema(FileTree& state, const std::string& path) {
  try {
    LoadBytes(path, state.Read(path));
    return true;
  } catch (const InputError&) {
    return false;
  }
}

bool WholeProject::Selects(const ProjectText& pattern, const std::string& path) {
  if (of_call_.Excluding(path) != nullptr) {
    left_out_.insert(path.substr(0, path.rfind('/') + 1));
    return false;
  }
  const ProjectScope& scope = projects_.Of(path);
  if (!projects_.IsNested(scope)) return of_call_.Match(pattern, path);
  const Patterns nested(scope);
  if (!nested.IsEmpty()) return nested.MatchAny(path);
  return of_call_.Match(pattern, path) && nested.Excluding(path) == nullptr;
}

bool WholeProject::IsCovered(const ProjectScope& scope) const {
  const std::string prefix = scope.directory + "/";
  const auto holds = [&](const ProjectText& pattern) {
    const std::string directory = of_call_.Directory(pattern);
    return directory.empty() || prefix.starts_with(directory + "/");
  };
  const auto cut = left_out_.lower_bound(prefix);
  const bool is_cut = cut != left_out_.end() && cut->starts_with(prefix);
  return !is_cut && std::ranges::any_of(of_call_.All(), holds);
}

}  // namespace korvel
