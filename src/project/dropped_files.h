// Finds schema files that an earlier state selects and the new one does not: a narrower 'paths', a new 'exclude' or another
// nested project file must not hide a change.
#pragma once

#include <string>
#include <vector>

#include "project/file_selection.h"
#include "project/project_files.h"

namespace korvel {

// Adds the files that only the project files of the old state select there, for a call without paths. One that has gone is added
// to the compared files, one that still exists to the dropped ones. `whole` is of the new state.
void AddDropped(WholeProject& whole, const ProjectStates& states, ProjectFiles& files);

// The same for the directories that a call names, as far as nested project files select or drop the files.
void AddDroppedBelow(const std::vector<std::string>& directories, const ProjectStates& states, ProjectFiles& files);

}  // namespace korvel
