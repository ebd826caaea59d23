// The files that the check of a project compared, for commands that need the files themselves.
#pragma once

#include <string>

#include "project/check_project.h"
#include "project/git.h"
#include "report/result/report.h"
#include "schema/input.h"

namespace korvel::tool {

// Throws InputError unless the report is about every file of the project.
void RequireCompleteState(const char* command, const Report& report);

// The path of a file of a project: it must not be taken for standard input or for a file of a commit.
std::string PathOnDisk(const std::string& name);

// Read a file again, in the old and in the new state. Throw InputError.
Input LoadOld(const ComparedFile& file, Git& git);
Input LoadNew(const ComparedFile& file, Git& git);

// The same in both states. An added or deleted file is a library without tables in the other state. REQUIRES: it has a table.
struct FileInBoth {
  Input old_input;
  Input new_input;
};
FileInBoth LoadBoth(const ComparedFile& file, Git& git);

}  // namespace korvel::tool
