// Lines about a report as a whole: what was compared, and what became of the files of a project.
#pragma once

#include <string>
#include <vector>

#include "report/result/report.h"
#include "report/result/service_path.h"

namespace korvel {

// "baseline: git:main... (commit 1a2b3c4d5e6f, the merge base of main and HEAD)" of each baseline that needs to be named: one
// whose name does not say what it is, or one of several.
std::vector<std::string> BaselinesOf(const Report& report);

// "project file: svc/korvelcheck.toml (2 files)" of each project file. With `paths`, here and below, files are named as services
// show them.
std::vector<std::string> ProjectsOf(const std::vector<ReportProject>& projects, const ServicePaths* paths = nullptr);

// "added: FILE (nothing to compare it with)", on one line.
std::string ToText(const FileNote& note, const ServicePaths* paths = nullptr);

// All of them, in this order.
std::vector<std::string> NotesOf(const Report& report, const ServicePaths* paths = nullptr);

// The same for text. Files that moved from one directory to another under their names are one line: "moved: shop/ -> db/shop/
// (31 files)".
std::vector<std::string> ShortNotesOf(const Report& report);

}  // namespace korvel
