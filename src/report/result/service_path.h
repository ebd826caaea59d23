// Paths of files as services show them: from the top of the repository, whatever the working directory is.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace korvel {

// Finds the top of the repository once. Const operations may run on several threads at once.
class ServicePaths {
 public:
  // With a prefix, paths are relative to the working directory and begin with the prefix. Without one, they are relative to the
  // top of the work tree of git that contains the working directory; outside of work trees, to the working directory.
  explicit ServicePaths(const std::optional<std::string>& prefix);

  // The path of a file of a report, with '/'. Of "git:REV:PATH", which is relative to the top, that of PATH. "" for standard
  // input. A file outside of the base keeps an absolute path, and a relative path begins with "../".
  std::string Of(const std::string& file) const;

  // The same in a text: "git:REV:" stays in front of the path, and standard input has its name.
  std::string Shown(const std::string& file) const;

 private:
  std::filesystem::path here_;
  std::filesystem::path top_;
  std::filesystem::path base_;  // of the paths
  std::string prefix_;
};

// The name of a file in a text, on one line. With `paths`, as services show it.
std::string ShownName(const std::string& file, const ServicePaths* paths);

}  // namespace korvel
