// Tested by tests/report/service_path_test.cpp.
#include "report/result/service_path.h"

#include <string_view>
#include <system_error>

#include "base/paths.h"
#include "base/text.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

// The nearest directory with an entry .git, as git finds it; outside of repositories the directory itself.
fs::path TopOf(const fs::path& directory) {
  std::error_code ignored;
  for (fs::path top = directory; top.has_relative_path(); top = top.parent_path()) {
    if (fs::exists(top / ".git", ignored)) return top;
  }
  return directory;
}

// PATH of "git:REV:PATH"; nullopt for other names.
std::optional<std::string> PathInCommit(const std::string& file) {
  constexpr std::string_view kGit = "git:";
  const std::size_t colon = file.find(':', kGit.size());
  if (!file.starts_with(kGit) || colon == std::string::npos) return std::nullopt;
  return file.substr(colon + 1);
}

}  // namespace

ServicePaths::ServicePaths(const std::optional<std::string>& prefix) : prefix_(prefix.value_or("")) {
  std::error_code ignored;
  here_ = fs::current_path(ignored);
  top_ = TopOf(here_);
  base_ = prefix ? here_ : top_;
}

std::string ServicePaths::Of(const std::string& file) const {
  if (file == "<stdin>") return "";
  const std::optional<std::string> in_commit = PathInCommit(file);
  const fs::path given = in_commit.value_or(file);
  const bool is_from_here = !in_commit || IsFromHere(*in_commit);
  const fs::path whole = ((is_from_here ? here_ : top_) / given).lexically_normal();
  const fs::path relative = whole.lexically_relative(base_);
  if (LeadsOut(relative) && given.is_absolute()) return whole.generic_string();
  return (fs::path(prefix_) / relative).lexically_normal().generic_string();
}

std::string ServicePaths::Shown(const std::string& file) const {
  const std::string path = file.empty() ? "" : Of(file);
  if (path.empty()) return file;
  const std::optional<std::string> in_commit = PathInCommit(file);
  return in_commit ? file.substr(0, file.size() - in_commit->size()) + path : path;
}

std::string ShownName(const std::string& file, const ServicePaths* paths) {
  return paths == nullptr ? OneLine(file) : OneLine(paths->Shown(file));
}

}  // namespace korvel
