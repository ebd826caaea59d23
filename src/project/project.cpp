// Finds project files; project_file.cpp interprets them. Tested by tests/tool/project_file_test.cpp.
#include "project/project.h"

#include <filesystem>
#include <system_error>

#include "project/found_project.h"
#include "project/project_search.h"
#include "schema/file_bytes.h"

namespace korvel {
namespace {

template <class T>
void FillIn(std::optional<T>& setting, const std::optional<T>& other) {
  if (!setting) setting = other;
}

void FillIn(PartialSettings& settings, const PartialSettings& others) {
  FillIn(settings.type, others.type);
  FillIn(settings.created_as, others.created_as);
  FillIn(settings.server_version, others.server_version);
  FillIn(settings.whitelist, others.whitelist);
  FillIn(settings.list_num, others.list_num);
}

}  // namespace

Project ReadProject(const std::string& path) {
  const Bytes bytes = ReadAll(OpenRegular(path));
  return ParseProject(path, std::string(bytes.View()));
}

std::optional<std::string> FindProjectFile() {
  std::error_code error;
  const std::filesystem::path here = std::filesystem::current_path(error);
  if (error) return std::nullopt;
  const std::optional<FoundProjectFile> found = SearchProjectFile(here, InspectOnDisk);
  if (!found) return std::nullopt;
  if (found->is_on_other_file_system) {
    RefuseFile(found->path, std::string("is on another file system than the working directory; allowed: ") + kAllowedProjects);
  }
  return found->path;
}

std::string RepositoryTop() {
  std::error_code error;
  for (std::filesystem::path directory = std::filesystem::current_path(error); !error; directory = directory.parent_path()) {
    if (InspectOnDisk(directory).is_repository_top) return directory;
    if (directory == directory.parent_path()) break;
  }
  return "";
}

PartialSettings GivenFor(const PartialSettings& given, const Project* project, const std::string& table) {
  PartialSettings settings = given;
  if (project == nullptr) return settings;
  const auto found = project->tables.find(table);
  if (found != project->tables.end()) FillIn(settings, found->second.settings);
  FillIn(settings, project->defaults);
  return settings;
}

}  // namespace korvel
