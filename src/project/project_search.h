// Looks for the project file of a call. Does not read it.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace korvel {

// What the search looks at in a directory.
struct DirectoryFacts {
  dev_t device = 0;
  bool has_project_file = false;   // anything of that name, also a link to nothing
  bool is_repository_top = false;  // it has .git
};

using InspectDirectory = std::function<DirectoryFacts(const std::filesystem::path& directory)>;

// The facts on the disk.
DirectoryFacts InspectOnDisk(const std::filesystem::path& directory);

struct FoundProjectFile {
  std::string path;                      // from the directory in which the search began: "../../korvelcheck.toml"
  bool is_on_other_file_system = false;  // the search left the file system of that directory
};

// The project file in a directory or the nearest one above it, up to the top of its repository, or nullopt. The
// directory is absolute.
std::optional<FoundProjectFile> SearchProjectFile(std::filesystem::path directory, const InspectDirectory& inspect);

}  // namespace korvel
