// A project whose files are open: its project files and baselines, loaded once for many checks.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "lsp/documents.h"
#include "lsp/serve.h"
#include "project/check_project.h"
#include "project/nearest_projects.h"
#include "vesk/closed_category.h"

namespace korvel::lsp {

// Findings of a document: an author fixes the first ones first, and all that a check might find would take many seconds.
inline constexpr std::size_t kMaxDocumentFindings = 100;

// The directory that a file is checked from, as by a call there: that of the outermost project file above the file in its
// repository; without a repository, that of the nearest one; without a project file, the top of the repository, else the
// directory of the file. Changes the working directory to it. Throws InputError.
std::string EnterProjectOf(const std::string& path);

// Everything relative begins at the working directory, which must be that of the project in every call.
class OpenProject {
 public:
  // All must outlive the project; `baseline_files` keeps files of commits. Throws InputError for project files with errors and
  // unknown baselines.
  OpenProject(const Options& call, const Documents& documents, SourceCache& baseline_files);
  OpenProject(const OpenProject&) = delete;
  OpenProject& operator=(const OpenProject&) = delete;

  // Whether nothing it was loaded from has changed: project files; directories that are baselines; commits, branches and
  // tags if a baseline is one of them. Then it runs git.
  bool IsCurrent() const;

  // Null without one.
  const Project* project() const { return project_ ? &*project_ : nullptr; }
  ProjectSet& set() { return *set_; }
  const ProjectSet& set() const { return *set_; }
  // Of every check of the project.
  CheckOptions options();
  // One for each baseline, without files.
  std::vector<ProjectCheck>& checks() { return checks_; }
  Links links() const { return options_.links; }

  // A check may have looked for nested project files, which count from now on.
  void RememberFiles();

 private:
  std::string TextOfProjectFile(const std::string& path) const;
  // What changes if the file does.
  std::string StateOf(const std::string& file) const;

  const Options& options_;
  const Documents& documents_;
  vesk::ClosedCategory log_;
  std::optional<Project> project_;
  std::unique_ptr<ProjectSet> set_;
  std::vector<ProjectCheck> checks_;
  std::string references_;                    // of the repository
  std::map<std::string, std::string> files_;  // with their states: existing and possible project files, baselines
};

}  // namespace korvel::lsp
