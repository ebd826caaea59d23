// Finds schema files that an earlier state selects and the new one does not: a narrower 'paths', a new 'exclude' or another
// nested project file must not hide a change.
#pragma once

#include <string>
#include <vector>

#include "project/file_selection.h"
#include "project/project_files.h"

namespace korvel {

// Adds the files that only the project files of the old state select there, for a call without paths. One that has gone is added
// to the compared files; one that still exists to the dropped ones, if it is a schema in either state. `whole` is of the new
// state. Also adds the project files of the old state that cannot be read.
void AddDropped(WholeProject& whole, const ProjectStates& states, ProjectFiles& files);

// The same for the files and directories that a call names. A file that had no project file is dropped only by a nested one: the
// first project file of a call drops nothing.
void AddDroppedBelow(const std::vector<std::string>& paths, const ProjectStates& states, ProjectFiles& files);

}  // namespace korvel
