// Paths as reports and commits write them: with '/' between names, from the top of a directory.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace korvel {

// Whether a path that may begin at the top of a repository begins in the working directory: "./a" and "../a" do.
inline bool IsFromHere(std::string_view path) { return path.starts_with("./") || path.starts_with("../"); }

// Whether a relative path leads out of the directory that it begins in; an empty path leads nowhere.
inline bool LeadsOut(const std::filesystem::path& relative) { return relative.empty() || *relative.begin() == ".."; }

// The directory of a file, "" for the top.
inline std::string_view DirectoryOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return path.substr(0, slash == std::string_view::npos ? 0 : slash);
}

// The last name of a path.
inline std::string FileNameOf(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// What the paths of all files below a directory begin with: "" for the top, else "directory/".
inline std::string PrefixOf(const std::string& directory) { return directory.empty() ? "" : directory + "/"; }

}  // namespace korvel
