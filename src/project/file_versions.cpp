// Tested by tests/tool/history_git_test.cpp.
#include "project/file_versions.h"

#include <algorithm>
#include <filesystem>

#include "base/input_error.h"
#include "base/text.h"
#include "project/git_call.h"
#include "project/project_path.h"
#include "project/version_finder.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

// Without any file that has two versions, nothing is compared.
void RequireTwoVersions(const std::vector<FileVersions>& files, const VersionSelection& selection) {
  if (std::ranges::any_of(files, [](const FileVersions& file) { return file.versions.size() >= 2; })) return;
  InputError few;
  for (const FileVersions& file : files) {
    if (!file.moved.empty()) {
      few.lines.push_back(ToolMessage(OneLine(file.file) + ": " + file.moved + "; allowed: a file or directory that exists"));
      continue;
    }
    const std::string what = selection.tags ? "tag that matches " + Quote(*selection.tags) : "commit";
    const std::string number = file.versions.empty() ? "no " + what : "only one " + what;
    const std::string clone = IsShallow(file.file) ? " of this shallow clone" : "";
    few.lines.push_back(
        ToolMessage(OneLine(file.file) + ": is in " + number + clone + "; allowed: a file with at least two versions"));
  }
  if (files.empty())
    few.lines.push_back(ToolMessage("no selected file was ever a schema; allowed: a file with at least two versions"));
  throw few;
}

}  // namespace

bool IsInHead(const std::string& path) {
  if (fs::path(path).is_absolute()) return false;
  try {
    return !FindObject("HEAD:./" + path, path).empty();
  } catch (const InputError&) {
    return false;  // without git
  }
}

FileVersions NamedVersions(const std::vector<std::string>& paths, const Project* project) {
  FileVersions named;
  for (const std::string& path : paths) named.versions.push_back({path, PathInProject(project, path), std::nullopt, path});
  return named;
}

std::vector<FileVersions> VersionsInGit(const VersionSelection& selection, const Project* project) {
  std::vector<FileVersions> files = FindVersionsInGit(selection, project);
  RequireTwoVersions(files, selection);
  return files;
}

}  // namespace korvel
