// Tested by tests/tool/project_search_test.cpp.
#include "project/project_search.h"

#include <sys/stat.h>

#include <system_error>

#include "project/project.h"

namespace korvel {
namespace {

bool IsThere(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
}

}  // namespace

// A dangling link counts as a project file: opening it is an error, and ignoring it would ignore the project's settings.
DirectoryFacts InspectOnDisk(const std::filesystem::path& directory) {
  struct stat status {};
  const bool is_known = ::stat(directory.c_str(), &status) == 0;
  return {is_known ? status.st_dev : dev_t{0}, IsThere(directory / kProjectFileName), IsThere(directory / ".git")};
}

std::optional<FoundProjectFile> SearchProjectFile(std::filesystem::path directory, const InspectDirectory& inspect) {
  const dev_t device = inspect(directory).device;
  FoundProjectFile found;
  for (std::string up;; up += "../", directory = directory.parent_path()) {
    const DirectoryFacts facts = inspect(directory);
    if (facts.device != device) found.is_on_other_file_system = true;
    found.path = up + kProjectFileName;
    if (facts.has_project_file) return found;
    if (facts.is_repository_top || directory == directory.parent_path()) return std::nullopt;
  }
}

}  // namespace korvel
