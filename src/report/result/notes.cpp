// Tested by tests/report/formats_test.cpp and tests/tool/against_test.cpp.
#include "report/result/notes.h"

#include <algorithm>
#include <iterator>
#include <map>

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
  lines.reserve(projects.size());
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

namespace {

// The beginning of a path: a directory, or the top of the work tree or of a commit.
std::string DirectoryText(const std::string& path, std::size_t length) {
  const std::string directory = path.substr(0, length);
  return PathText(directory.ends_with('/') ? directory : directory + "./");
}

// Whether the last `length` bytes of a path are whole names: "a.xml" of "shop/a.xml" and of "git:v1:a.xml".
bool EndsInNames(const std::string& path, std::size_t length) {
  if (length == path.size()) return true;
  const char before = path[path.size() - length - 1];
  return before == '/' || (before == ':' && path.starts_with("git:"));
}

// "shop/ -> db/shop/" for a file that kept its name, and as many directories above it as possible. Empty for a renamed file.
std::string DirectoriesOf(const FileNote& note) {
  const std::string& from = note.old_file;
  const std::string& to = note.new_file;
  const auto rest = std::mismatch(from.rbegin(), from.rend(), to.rbegin(), to.rend());
  auto same = static_cast<std::size_t>(rest.first - from.rbegin());
  while (same > 0 && !(EndsInNames(from, same) && EndsInNames(to, same))) --same;
  if (same == 0) return "";
  return DirectoryText(from, from.size() - same) + " -> " + DirectoryText(to, to.size() - same);
}

}  // namespace

std::vector<std::string> ShortNotesOf(const Report& report) {
  std::map<std::string, std::size_t> moves;
  const auto directories_of = [](const FileNote& note) {
    return note.kind == FileNote::Kind::kMoved ? DirectoriesOf(note) : std::string();
  };
  for (const FileNote& note : report.files) ++moves[directories_of(note)];
  std::vector<std::string> lines = BaselinesOf(report);
  std::ranges::move(ProjectsOf(report.projects), std::back_inserter(lines));
  for (const FileNote& note : report.files) {
    const std::string directories = directories_of(note);
    std::size_t& files = moves[directories];
    if (directories.empty() || files == 1) {
      lines.push_back(ToText(note));
    } else if (files > 1) {
      lines.push_back("moved: " + directories + " (" + Counted(files, "file") + ")");
      files = 0;
    }
  }
  return lines;
}

std::vector<std::string> NotesOf(const Report& report, const ServicePaths* paths) {
  std::vector<std::string> lines = BaselinesOf(report);
  std::ranges::move(ProjectsOf(report.projects, paths), std::back_inserter(lines));
  for (const FileNote& note : report.files) lines.push_back(ToText(note, paths));
  return lines;
}

}  // namespace korvel
