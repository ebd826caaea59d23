// Tested by tests/tool/wrong_question_test.cpp.
#include "tool/commands/pair_notes.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "base/input_error.h"
#include "base/text.h"
#include "project/file_versions.h"
#include "project/git.h"
#include "qmx/qmx_metalib_kernel.h"
#include "tool/io/exit.h"

namespace korvel::tool {
namespace {

void Note(const std::string& text) { PrintErrors({ToolMessage("note: " + text)}); }

std::string CallOf(const std::string& command, const std::string& first, const std::string& second) {
  return "korvelcheck " + command + " " + PathWord(first) + " " + PathWord(second);
}

bool AreSameFile(const std::vector<std::string>& paths) {
  std::error_code ignored;
  return paths.front() == paths.back() || std::filesystem::equivalent(paths.front(), paths.back(), ignored);
}

void NoteSameFile(const std::string& command, const std::vector<std::string>& paths) {
  const std::string& path = paths.back();
  const bool is_committed = !ParseGitPath(path) && IsInHead(path);
  Note("OLD and NEW are the same file; " +
       (is_committed ? "to compare it with the last commit: " + CallOf(command, "git:HEAD:./" + path, path)
                     : "to check one file: korvelcheck lint " + PathWord(path)));
}

bool HasCommonTable(const Pair& pair) {
  return std::ranges::any_of(pair.first.tables, [&](std::string_view table) {
    return std::ranges::find(pair.second.tables, table) != pair.second.tables.end();
  });
}

void NoteSwapped(const std::string& command, const Pair& pair, const std::vector<std::string>& paths) {
  const int old_version = qmx_get_metalib_version(pair.first.Library());
  const int new_version = qmx_get_metalib_version(pair.second.Library());
  if (old_version <= new_version) return;
  Note("OLD has version " + std::to_string(old_version) + ", NEW has the lower version " + std::to_string(new_version) +
       "; if they are swapped: " + CallOf(command, paths.back(), paths.front()));
}

}  // namespace

std::string PathWord(const std::string& path) {
  const bool looks_like_option = path.size() > 1 && path.starts_with('-');
  return ShellWord(looks_like_option ? "./" + path : path);
}

void PrintPairNotes(const std::string& command, const Pair& pair, const std::vector<std::string>& paths) {
  if (AreSameFile(paths)) return NoteSameFile(command, paths);
  const std::string old_library = pair.first.LibraryName();
  const std::string new_library = pair.second.LibraryName();
  // A renamed library keeps some of its tables.
  if (old_library != new_library && !HasCommonTable(pair)) {
    return Note("OLD and NEW are different libraries without a common table: " + OneLine(old_library) + " and " +
                OneLine(new_library) + "; expected: two versions of one library");
  }
  NoteSwapped(command, pair, paths);
}

}  // namespace korvel::tool
