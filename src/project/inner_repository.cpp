// Tested by tests/tool/against_test.cpp and lint_project_test.cpp.
#include "project/inner_repository.h"

#include <filesystem>
#include <system_error>

#include "base/paths.h"
#include "base/text.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

bool IsRepository(const fs::path& directory) {
  std::error_code ignored;
  return fs::exists(directory / ".git", ignored);
}

}  // namespace

std::string RepositoryOf(const ProjectStates& states, const std::string& path) {
  if (!states.is_work_tree) return "";
  for (std::string directory = path; !directory.empty();) {
    if (IsRepository(fs::path(states.top) / directory)) return directory;
    directory.resize(DirectoryOf(directory).size());
  }
  return "";
}

std::string RepositoryAt(const ProjectStates& states, const std::string& path) {
  std::string repository = RepositoryOf(states, path);
  if (!states.is_work_tree || !repository.empty()) return repository;
  std::error_code error;
  const fs::path top = states.top;
  for (fs::recursive_directory_iterator one(top / path, error), end; !error && one != end; one.increment(error)) {
    if (one->path().filename() == ".git") one.disable_recursion_pending();
    std::error_code ignored;
    if (fs::is_directory(one->symlink_status(ignored)) && IsRepository(one->path()))
      return one->path().lexically_relative(top).string();
  }
  return "";
}

std::string Describe(const ProjectStates& states, const std::string& repository) {
  return "the repository in " + OneLine(states.new_state->Display(repository)) + ", such as a submodule; " +
         (states.has_old ? "check it there" : "run the command there, or name its files");
}

}  // namespace korvel
