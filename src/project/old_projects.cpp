// Tested by tests/tool/dropped_files_test.cpp.
#include "project/old_projects.h"

#include <algorithm>

#include "base/input_error.h"
#include "base/paths.h"

namespace korvel {
namespace {

// The bytes of a file, or nullopt if it cannot be read: --project may name a link.
std::optional<Bytes> ReadIfPossible(FileTree& state, const std::string& path) {
  try {
    return state.HasFile(path) ? std::optional(state.Read(path)) : std::nullopt;
  } catch (const InputError&) {
    return std::nullopt;
  }
}

// The text of a file in the old state. It is not read there if it is the same in the new one.
std::string TextIn(FileTree& old_state, FileTree& new_state, const std::string& path) {
  const std::optional<Bytes> present = ReadIfPossible(new_state, path);
  if (!present) return std::string(old_state.Read(path).View());
  const std::optional<Bytes> other = old_state.ReadUnless(path, present->View());
  return std::string(other ? other->View() : present->View());
}

// The path of the project file of the call in the old state, or "". One further up counts only if it is gone: otherwise the call
// has a project file of its own now, and the other one still selects the other files.
std::string PathOfCall(const FileTree& old_state, const FileTree& new_state, const ProjectScope& of_call, bool is_searched) {
  if (of_call.project == nullptr) return "";
  const std::string path = PrefixOf(of_call.directory) + FileNameOf(of_call.project->file);
  if (old_state.HasName(path) || !is_searched) return old_state.HasName(path) ? path : "";
  for (std::string directory = of_call.directory; !directory.empty();) {
    directory.resize(DirectoryOf(directory).size());
    const std::string above = PrefixOf(directory) + kProjectFileName;
    if (old_state.HasName(above)) return new_state.HasName(above) ? "" : above;
  }
  return "";
}

}  // namespace

OldProjects::OldProjects(FileTree& old_state, FileTree& new_state, const ProjectScope& of_call, bool is_searched)
    : path_of_call_(PathOfCall(old_state, new_state, of_call, is_searched)),
      of_call_(ReadOfCall(old_state, new_state, path_of_call_)),
      set_(of_call_ ? &*of_call_ : nullptr, is_searched),
      nearest_(old_state, set_, path_of_call_.empty() ? of_call.directory : std::string(DirectoryOf(path_of_call_))) {}

std::vector<ProjectFault> OldProjects::Faults() const {
  std::vector<ProjectFault> faults = faults_;
  for (const ProjectFault& fault : nearest_.faults()) {
    const bool is_known = std::ranges::find(faults, fault.path, &ProjectFault::path) != faults.end();
    if (!is_known) faults.push_back(fault);
  }
  return faults;
}

std::optional<Project> OldProjects::ReadOfCall(FileTree& old_state, FileTree& new_state, const std::string& path) {
  if (path.empty()) return std::nullopt;
  try {
    return ParseProject(old_state.Display(path), TextIn(old_state, new_state, path));
  } catch (const InputError& error) {
    faults_.push_back({path, error.lines});
    return std::nullopt;
  }
}

}  // namespace korvel
