// Asks git about names that are no files. Tested by tests/tool/wrong_question_test.cpp.
#include "project/revision_hint.h"

#include <filesystem>
#include <system_error>

#include "base/input_error.h"
#include "base/text.h"
#include "project/git.h"
#include "project/git_call.h"

namespace korvel {
namespace {

namespace fs = std::filesystem;

// " (did you mean --against git:v1?)"
std::string Meant(const std::string& word, const std::string& option = "") {
  return " (did you mean " + option + ShellWord(word) + "?)";
}

// Whether nothing on the disk has the name. A link to nothing has it.
bool IsMissing(const std::string& path) {
  std::error_code ignored;
  return !fs::exists(fs::symlink_status(path, ignored));
}

// Without git, nothing is known.
bool IsObject(const std::string& name, const std::string& argument) {
  try {
    return !FindObject(name, argument).empty();
  } catch (const InputError&) {
    return false;
  }
}

// "v1" and "v1...".
bool IsRevision(const std::string& name) {
  return IsObject(MergeBaseArgument(name).value_or(name) + "^{tree}", name) && name.find(':') == std::string::npos;
}

std::string HintForRevision(const std::string& revision, const std::vector<std::string>& paths) {
  const std::string plain = MergeBaseArgument(revision).value_or(revision);
  for (const std::string& path : paths) {
    const std::string from_here = "./" + path;
    const bool is_relative = !path.empty() && path != "-" && !fs::path(path).is_absolute();
    if (is_relative && path != revision && IsObject(plain + ":" + from_here, path)) {
      return Meant("git:" + revision + ":" + from_here);
    }
  }
  return "; git has a revision of this name: its files are " + ShellWord("git:" + revision + ":PATH");
}

}  // namespace

std::string HintForFile(const std::string& path, const std::vector<std::string>& paths) {
  if (path == "-" || !IsMissing(path)) return "";
  if (IsRevision(path)) return HintForRevision(path, paths);
  const bool is_file = path.find(':') != std::string::npos && IsObject(path, path);
  return is_file ? Meant("git:" + path) : "";
}

std::string HintForBaseline(const std::string& name) { return IsMissing(name) && IsRevision(name) ? Meant("git:" + name) : ""; }

std::string HintForPath(const std::string& path) {
  return IsMissing(path) && IsRevision(path) ? Meant("git:" + path, "--against ") : "";
}

}  // namespace korvel
