// What a change of project files may hide, as findings of a report.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "project/project_files.h"
#include "report/result/report.h"

namespace korvel {

// Schema files that are no longer checked: one finding for all files that the same key leaves out and the same pattern selected
// before. Then the project files of the old state that cannot be read.
std::vector<ProjectFinding> FindHiddenFiles(const ProjectFiles& files, const ProjectStates& states);

// A file that was moved to where neither the given paths nor the patterns of a project file select it, so that no later call with
// these paths checks it; nullopt for other files. The paths are from the top.
std::optional<ProjectFinding> FindMovedOut(const std::string& old_path, const std::string& new_path, const ProjectFiles& files,
                                           const ProjectStates& states);

// The nearest directory that contains all of the files of a finding, or its only file: what a waiver names. "." is the directory
// of the project file.
std::string PlaceOf(const ProjectFinding& finding);

// Sets the files of a finding, with the project file whose waivers apply to them, and its fingerprint: a hash of rule, files and
// `change`. Paths are from the top of the states. REQUIRES: there is at least one, and the same project file judges all.
void SetFiles(const std::vector<std::string>& paths, std::string_view change, const ProjectStates& states,
              ProjectFinding& finding);

// "a.xml, b.xml and 7 more" of paths from the top, as reports show them.
std::string ListOfFiles(const std::vector<std::string>& paths, const ProjectStates& states);

}  // namespace korvel
