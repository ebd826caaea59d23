// Tested by tests/tool/waiver_test.cpp.
#include "project/project_path.h"

#include <optional>
#include <system_error>

#include "base/paths.h"
#include "project/git.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

fs::path DirectoryOf(const Project* project) { return AbsolutePath(project == nullptr ? "" : project->directory); }

}  // namespace

fs::path AbsolutePath(const std::string& path) {
  std::error_code ignored;
  std::string normal = fs::absolute(path.empty() ? "." : path, ignored).lexically_normal();
  while (normal.size() > 1 && normal.back() == '/') normal.pop_back();
  const fs::path whole = normal;
  return fs::is_directory(whole, ignored) ? fs::weakly_canonical(whole, ignored)
                                          : fs::weakly_canonical(whole.parent_path(), ignored) / whole.filename();
}

std::string ProjectDirectory(const Project* project, const std::string& top) {
  const fs::path directory = DirectoryOf(project).lexically_relative(top);
  return LeadsOut(directory) || directory == "." ? "" : directory.string();
}

std::string PathInProject(const std::string& directory, const std::string& path) {
  return directory.empty() ? path : fs::path(path).lexically_relative(directory).string();
}

std::string PathInProject(const Project* project, const std::string& given) {
  if (given == "-") return "<stdin>";
  const std::optional<GitPath> in_git = ParseGitPath(given);
  const std::string& path = in_git ? in_git->path : given;
  const bool is_from_top = in_git && !IsFromHere(path);
  if (is_from_top) return fs::path(path).lexically_normal().string();
  const fs::path absolute = AbsolutePath(path);
  const fs::path relative = absolute.lexically_relative(DirectoryOf(project));
  return LeadsOut(relative) ? absolute.filename().string() : relative.string();
}

}  // namespace korvel
