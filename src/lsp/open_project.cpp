// Tested by tests/lsp/server_test.cpp.
#include "lsp/open_project.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>

#include "base/input_error.h"
#include "base/paths.h"
#include "base/text.h"
#include "lsp/open_files.h"
#include "project/found_project.h"
#include "project/git_call.h"
#include "project/project_path.h"

namespace korvel::lsp {
namespace {

namespace fs = std::filesystem;

void Enter(const fs::path& directory) {
  std::error_code error;
  fs::current_path(directory, error);
  if (error) throw InputError{{ToolMessage(OneLine(directory.string()) + ": " + error.message())}};
}

// A new document may be in a directory that does not exist yet.
fs::path ExistingDirectoryOf(const std::string& path) {
  std::error_code ignored;
  fs::path directory = fs::path(path).parent_path();
  while (!fs::is_directory(directory, ignored) && directory != directory.parent_path()) directory = directory.parent_path();
  return directory;
}

// HEAD and all branches and tags with their commits; "" outside of repositories.
std::string References() {
  try {
    return RunGit({"show-ref", "--head"}, "HEAD").out;
  } catch (const InputError&) {
    return "";  // there is no git
  }
}

std::string ToText(const struct stat& status) {
  std::string text;
  for (const auto number : {std::uint64_t{status.st_ino}, static_cast<std::uint64_t>(status.st_size),
                            static_cast<std::uint64_t>(status.st_mtim.tv_sec), static_cast<std::uint64_t>(status.st_mtim.tv_nsec),
                            std::uint64_t{status.st_uid}}) {
    text += std::to_string(number) + " ";
  }
  return text;
}

// Changes with every write to the file, with its owner, and if it becomes a link.
std::string StateOfDisk(const std::string& path) {
  struct stat entry {};
  struct stat target {};
  if (::lstat(path.c_str(), &entry) != 0) return "";
  return ToText(entry) + (::stat(path.c_str(), &target) == 0 ? ToText(target) : "");
}

}  // namespace

std::string EnterProjectOf(const std::string& path) {
  Enter(ExistingDirectoryOf(path));
  const std::string top = RepositoryTop();
  std::string root = top;
  for (std::optional<std::string> file = FindProjectFile(); file; file = FindProjectFile()) {
    Enter(AbsolutePath(std::string(DirectoryOf(*file))));
    root = fs::current_path();
    if (top.empty() || root == top) break;
    Enter("..");
  }
  if (root.empty()) root = fs::current_path();
  Enter(root);
  return root;
}

OpenProject::OpenProject(const Options& call, const Documents& documents, SourceCache& baseline_files)
    : options_(call), documents_(documents) {
  const std::optional<std::string> file = call.uses_projects ? FindProjectFile() : std::nullopt;
  if (file) project_ = ParseProject(*file, TextOfProjectFile(*file));
  set_ = std::make_unique<ProjectSet>(project(), call.uses_projects);
  references_ = References();
  for (const Baseline& baseline : ResolveBaselines(call.baselines(project()))) {
    ProjectCheck& check = checks_.emplace_back();
    check.states = OpenStates(baseline, *set_, call.links, [&](std::unique_ptr<FileTree> disk, const std::string& top) {
      return WithOpenFiles(std::move(disk), top, call.links, documents);
    });
    check.options = options();
    check.allow_new = true;
    check.old_files = &baseline_files;
  }
  RememberFiles();
}

CheckOptions OpenProject::options() { return {.project = project(), .max_findings = kMaxDocumentFindings, .log = log_.handle()}; }

std::string OpenProject::TextOfProjectFile(const std::string& path) const {
  const Document* const document = documents_.FindPath(AbsolutePath(path).string());
  std::string saved = TextOfProject(path, false, options_.links);  // which may refuse it
  return document == nullptr ? saved : document->good_text;
}

std::string OpenProject::StateOf(const std::string& file) const {
  const Document* const document = documents_.FindPath(AbsolutePath(file).string());
  return StateOfDisk(file) + (document == nullptr ? "" : "\n" + document->good_text);
}

// A directory without a project file may get one, and that of a baseline may go.
void OpenProject::RememberFiles() {
  const auto remember = [&](const std::string& file) { files_.emplace(file, StateOf(file)); };
  remember(kProjectFileName);
  std::ranges::for_each(set_->Files(), remember);
  for (const ProjectCheck& check : checks_) {
    if (!check.states.baseline.revision) remember(check.states.baseline.name);
    for (const std::string& path : check.states.projects->LookedFor()) remember((fs::path(check.states.top) / path).string());
  }
}

bool OpenProject::IsCurrent() const {
  const auto is_same = [&](const auto& file) { return StateOf(file.first) == file.second; };
  const auto is_commit = [](const ProjectCheck& check) { return check.states.baseline.revision.has_value(); };
  return std::ranges::all_of(files_, is_same) && (std::ranges::none_of(checks_, is_commit) || references_ == References());
}

}  // namespace korvel::lsp
