// The pairs of files that the check of a project compared, for commands that need the files themselves.
#pragma once

#include <string>
#include <vector>

#include "project/git.h"
#include "report/result/report.h"
#include "schema/input.h"

namespace korvel::tool {

// A file that changed, in both states, with its tables. Borrows the report.
struct ChangedPair {
  std::string old_name;  // as reports show them
  std::string new_name;
  bool is_deleted = false;  // the new state has no such file
  std::vector<const TableResult*> tables;
};

// In the order of the report, without added files.
std::vector<ChangedPair> ChangedPairsOf(const Report& report);

// Throws InputError unless the report is about one baseline, and about every file of the project.
void RequireOneCompleteState(const char* command, const Report& report);

// The path of a file of a project: it must not be taken for standard input or for a file of a commit.
std::string PathOnDisk(const std::string& name);

// Reads the new file of a pair again. Throws InputError.
Input LoadNew(const ChangedPair& pair, Git& git);

}  // namespace korvel::tool
