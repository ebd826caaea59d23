// Schema files that project files give different settings than before, and calls that they make compare or fail differently.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "project/hidden_changes.h"
#include "project/project_files.h"
#include "report/result/report.h"
#include "schema/settings.h"

namespace korvel {

// Compares the settings that project files of both states give to tables. A change of the settings of a call's own project file
// counts, too; only the first project file of a project changes nothing.
class SettingsChanges {
 public:
  // `given` are the settings of the call, which take precedence over all project files. Both must outlive this.
  SettingsChanges(const ProjectStates& states, const PartialSettings& given) : states_(states), given_(given) {}

  // A table that was compared, with the paths of its file from the top.
  void Add(const std::string& old_path, const std::string& new_path, const std::string& table);

  // One finding about the settings of calls; then one for all files of a project file with the same change.
  std::vector<ProjectFinding> Findings() const;

 private:
  // A project file as shown, its position, and the change.
  struct Key {
    std::string project_file;
    std::uint32_t position;
    std::string change;
    bool operator<(const Key& other) const {
      return std::tie(project_file, position, change) < std::tie(other.project_file, other.position, other.change);
    }
  };

  std::vector<ProjectFinding> OfCall() const;
  bool HaveSameSettings(const Project* old_project, const Project* new_project);

  const ProjectStates& states_;
  const PartialSettings& given_;
  std::map<std::pair<const Project*, const Project*>, bool> same_;
  std::map<Key, std::set<std::string>> files_;
};

}  // namespace korvel
