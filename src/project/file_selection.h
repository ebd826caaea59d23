// Which files the patterns of project files select.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "project/file_tree.h"
#include "project/nearest_projects.h"

namespace korvel {

// The patterns of a project file, which match paths from the top of the states. Borrows the scope.
class Patterns {
 public:
  // The project may be missing.
  explicit Patterns(const ProjectScope& scope) : scope_(scope) {}

  bool IsEmpty() const { return scope_.project == nullptr || scope_.project->paths.empty(); }
  // REQUIRES: not empty.
  const std::vector<ProjectText>& All() const { return scope_.project->paths; }

  bool Match(const ProjectText& pattern, const std::string& path) const;
  bool MatchAny(const std::string& path) const;

  // The same for what the patterns match before `exclude` takes files away.
  bool MatchBeforeExclude(const ProjectText& pattern, const std::string& path) const;
  bool MatchAnyBeforeExclude(const std::string& path) const;

  // What a directory that holds the file selects: what the patterns match; without patterns, what has the suffix .xml or .qmb.
  bool IsSchemaName(const std::string& path) const;

  // The pattern of `exclude` that matches, or null.
  const ProjectText* Excluding(const std::string& path) const;

  // The directory that holds all files of a pattern.
  std::string Directory(const ProjectText& pattern) const;

 private:
  const ProjectScope& scope_;
};

// The same as Patterns::IsSchemaName with the project file of the file.
bool IsSchemaName(NearestProjects& projects, const std::string& path);

// Whether a file of a state is a schema. Reads it.
bool IsSchema(FileTree& state, const std::string& path);

// What a call without paths selects. REQUIRES: the project file of the call has patterns.
class WholeProject {
 public:
  explicit WholeProject(NearestProjects& projects) : projects_(projects), of_call_(projects.OfCall()) {}

  const Patterns& OfCall() const { return of_call_; }

  // Whether a file in the directory of one of the call's patterns is selected.
  bool Selects(const ProjectText& pattern, const std::string& path);

  // Whether Selects was called for every file below the directory of a nested project file, and the call excludes none of them.
  bool IsCovered(const ProjectScope& scope) const;

 private:
  NearestProjects& projects_;
  Patterns of_call_;
  std::set<std::string> left_out_;  // directories with files that the call's project file excludes, with '/' at the end
};

}  // namespace korvel
