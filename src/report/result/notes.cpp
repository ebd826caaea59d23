// Tested by tests/report/formats_test.cpp and tests/tool/against_test.cpp.
#include "report/result/notes.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"
#include "report/result/words.h"

namespace korvel {

std::vector<std::string> BaselinesOf(const Report& report) {
  std::vector<std::string> lines;
  for (const ReportBaseline& baseline : report.baselines) {
    const std::string& origin = baseline.origin;
    if (origin.empty() && report.baselines.size() == 1) continue;
    lines.push_back("baseline: " + OneLine(baseline.name) + (origin.empty() ? "" : " (" + origin + ")"));
  }
  return lines;
}

std::vector<std::string> ProjectsOf(const std::vector<ReportProject>& projects, const ServicePaths* paths) {
  std::vector<std::string> lines;
  for (const auto& [file, files] : projects) {
    lines.push_back("project file: " + ShownName(file, paths) + " (" + Counted(files, "file") + ")");
  }
  return lines;
}

std::string ToText(const FileNote& note, const ServicePaths* paths) {
  const std::string old_file = ShownName(note.old_file, paths);
  const std::string new_file = ShownName(note.new_file, paths);
  switch (note.kind) {
    case FileNote::Kind::kAdded:
      return "added: " + new_file + " (nothing to compare it with)";
    case FileNote::Kind::kDeleted:
      return "deleted: " + old_file;
    case FileNote::Kind::kOlder:
      return old_file + " has faults: compared with " + new_file + ", its last version without faults";
    case FileNote::Kind::kMoved:
      break;
  }
  return "moved: " + old_file + " -> " + new_file;
}

std::vector<std::string> NotesOf(const Report& report, const ServicePaths* paths) {
  std::vector<std::string> lines = BaselinesOf(report);
  std::ranges::move(ProjectsOf(report.projects, paths), std::back_inserter(lines));
  for (const FileNote& note : report.files) lines.push_back(ToText(note, paths));
  return lines;
}

}  // namespace korvel
