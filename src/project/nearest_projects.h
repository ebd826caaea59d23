// Which project file judges a schema file: the nearest one at or above it, up to the top of the repository.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "project/file_tree.h"
#include "project/project.h"
#include "report/result/report.h"

namespace korvel {

// The project files of a call. The first one governs the call; it may be missing. The others are nested project files, in the
// order in which they were found.
class ProjectSet {
 public:
  // `of_call` may be null, and must outlive the set. Without `is_searched`, it judges every schema file.
  ProjectSet(const Project* of_call, bool is_searched) : projects_{of_call}, is_covered_{false}, is_searched_(is_searched) {}
  ProjectSet(const ProjectSet&) = delete;
  ProjectSet& operator=(const ProjectSet&) = delete;

  bool is_searched() const { return is_searched_; }
  std::size_t size() const { return projects_.size(); }
  // Null for a missing project file of the call.
  const Project* operator[](std::size_t position) const { return projects_[position]; }
  const Project* OfCall() const { return projects_.front(); }

  // As shown, without a missing project file of the call.
  std::vector<std::string> Files() const;

  // Whether any of them has settings of tables.
  bool HasTableSettings() const;

  // The position of the nested project file that is shown by this name, or nullopt.
  std::optional<std::uint32_t> Find(const std::string& file) const;
  // Adds a nested project file. Returns its position.
  std::uint32_t Add(Project project);

  // Whether the call checks all schema files that a project file selects.
  bool IsCovered(std::size_t position) const { return is_covered_[position]; }
  void SetCovered(std::size_t position) { is_covered_[position] = true; }

 private:
  std::vector<const Project*> projects_;
  std::vector<bool> is_covered_;
  std::deque<Project> nested_;
  std::map<std::string, std::uint32_t, std::less<>> by_file_;
  bool is_searched_;
};

// A project file, and where it lies in a tree.
struct ProjectScope {
  const Project* project = nullptr;  // null: none
  std::uint32_t position = 0;        // in the set
  std::string directory = {};        // a path from the top; paths in fingerprints and waivers start there
};

// Why a project file cannot be read.
struct ProjectFault {
  std::string path;                // from the top
  std::vector<std::string> lines;  // "FILE:LINE:COLUMN: error: what; allowed"
};

// Finds the project file of each schema file in a tree. Looks each directory up once, and reads each project file once.
//
// A file without a project file at or above it is judged by that of the call. A project file with an error is passed over; see
// RequireNoFaults. For one thread.
class NearestProjects {
 public:
  // `directory` is the path of the call's project file, or else of the working directory, from the top of the tree. The tree
  // and the set must outlive this.
  NearestProjects(FileTree& tree, ProjectSet& projects, std::string directory);

  // The path is from the top. Results stay valid.
  const ProjectScope& Of(const std::string& path);
  const ProjectScope& OfCall() const { return of_call_; }
  // Whether the project file lies elsewhere than that of the call.
  bool IsNested(const ProjectScope& scope) const { return &scope != &of_call_; }

  ProjectSet& projects() { return projects_; }
  const std::deque<ProjectScope>& nested() const { return nested_; }

  // The paths of the project files that it has looked for so far, from the top, whether they exist or not.
  std::vector<std::string> LookedFor() const;

  // The project files with errors, in the order in which they were found.
  const std::vector<ProjectFault>& faults() const { return faults_; }
  // Throws InputError if there are any, with all of their lines.
  void RequireNoFaults() const;

 private:
  const ProjectScope& In(std::string_view directory);
  const ProjectScope* Read(const std::string& directory);

  FileTree& tree_;
  ProjectSet& projects_;
  ProjectScope of_call_;
  std::deque<ProjectScope> nested_;
  std::map<std::string, const ProjectScope*, std::less<>> directories_;
  std::vector<ProjectFault> faults_;
};

// Which project file of a set judged which file.
using JudgedFile = std::pair<std::uint32_t, std::string>;

// The project files of a call with the number of files that each judged. A nested project file that judged nothing is not among
// them. Every file counts once, however often it is listed.
std::vector<ReportProject> ListOf(const ProjectSet& projects, std::vector<JudgedFile> judged);

}  // namespace korvel
