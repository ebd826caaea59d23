// Finds project files; project_file.cpp reads them. Tested by tests/tool/project_file_test.cpp.
#include "project/project.h"

#include <filesystem>
#include <system_error>

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

bool IsThere(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::exists(std::filesystem::symlink_status(path, ignored));
}

bool IsRepositoryTop(const std::filesystem::path& directory) { return IsThere(directory / ".git"); }

}  // namespace

Project ReadProject(const std::string& path) {
  const Bytes bytes = ReadAll(OpenRegular(path));
  return ParseProject(path, std::string(bytes.View()));
}

// A relative path upwards, which can be opened from the working directory.
std::optional<std::string> FindProjectFile() {
  std::error_code error;
  std::string up;
  for (std::filesystem::path directory = std::filesystem::current_path(error); !error; directory = directory.parent_path()) {
    const std::string path = up + kProjectFileName;
    // A dangling link counts: opening it is an error, and ignoring it would ignore the project's settings.
    if (IsThere(path)) return path;
    if (IsRepositoryTop(directory) || directory == directory.parent_path()) break;
    up += "../";
  }
  return std::nullopt;
}

std::string RepositoryTop() {
  std::error_code error;
  for (std::filesystem::path directory = std::filesystem::current_path(error); !error; directory = directory.parent_path()) {
    if (IsRepositoryTop(directory)) return directory;
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
