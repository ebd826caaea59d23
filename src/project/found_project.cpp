// Tested by tests/tool/project_owner_test.cpp.
#include "project/found_project.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "base/input_error.h"
#include "base/paths.h"
#include "project/git_call.h"

namespace korvel {
namespace {

// Whether the file lies in a repository of that user that git accepts: its own or one that `safe.directory` names. In a
// container, root often checks a clone of another user.
bool IsInRepositoryOf(uid_t owner, const std::string& file, const std::string& name) {
  const std::string directory(DirectoryOf(file));
  try {
    const GitResult git = RunGit({"-C", directory.empty() ? "." : directory, "rev-parse", "--absolute-git-dir"}, name);
    struct stat status {};
    return git.status == 0 && ::stat(git.out.substr(0, git.out.find('\n')).c_str(), &status) == 0 && status.st_uid == owner;
  } catch (const InputError&) {
    return false;  // there is no git
  }
}

}  // namespace

Bytes ReadFoundProject(const std::string& directory, const std::string& path, const std::string& name, Links links) {
  constexpr uid_t kRoot = 0;
  const OpenFile file = OpenBelow(directory, path, name, links);
  const uid_t owner = file.state.owner;
  const bool is_foreign = owner != kRoot && owner != ::geteuid();
  if (is_foreign && !IsInRepositoryOf(owner, directory.empty() ? path : directory + "/" + path, name)) {
    RefuseFile(name,
               "belongs to user id " + std::to_string(owner) + ", who is neither you nor root; allowed: " + kAllowedProjects);
  }
  Bytes bytes = ReadAll(file);
  if (file.size > 0) RequireUnchanged(name, file.state);
  return bytes;
}

std::string TextOfProject(const std::string& path, bool is_named, Links links) {
  namespace fs = std::filesystem;
  std::error_code ignored;
  if (!fs::exists(is_named ? fs::status(path, ignored) : fs::symlink_status(path, ignored))) return "";
  const Bytes bytes = is_named ? ReadAll(OpenInput(path)) : ReadFoundProject("", path, path, links);
  return std::string(bytes.View());
}

}  // namespace korvel
