// Tested by tests/tool/fix_command_test.cpp and explain_finding_test.cpp.
#include "tool/commands/next_commands.h"

#include <filesystem>
#include <system_error>

#include "base/text.h"
#include "project/git.h"
#include "tool/commands/pair_notes.h"

namespace korvel::tool {
namespace {

bool IsWritable(const std::string& path) {
  std::error_code ignored;
  return path != "-" && !ParseGitPath(path) && std::filesystem::is_regular_file(std::filesystem::symlink_status(path, ignored));
}

// " --against git:main --table orders schemas": what the check compares.
std::string ComparedWords(const CheckRequest& request, bool names_baseline) {
  std::string words;
  if (names_baseline) {
    for (const std::string& baseline : request.baselines) words += " --against " + ShellWord(baseline);
  }
  for (const std::string& table : request.options.tables) words += " --table " + ShellWord(table);
  for (const std::string& path : request.paths) words += " " + PathWord(path);
  return words;
}

std::string SettingsRemark(const CheckRequest& request) {
  const PartialSettings& given = request.options.given;
  const bool has_settings = given.type || given.created_as || given.server_version || given.whitelist || given.list_num ||
                            !request.searches_projects || request.links == Links::kFollow;
  return has_settings ? " (with the same settings)" : "";
}

}  // namespace

std::string FixCommand(const CheckRequest& request, bool names_baseline) {
  const std::vector<std::string>& paths = request.paths;
  const bool compares_files = !request.HasBaseline();
  if (compares_files && !(IsWritable(paths.back()) && paths.front() != "-")) return "";
  return "korvelcheck suggest --write" + ComparedWords(request, names_baseline) + SettingsRemark(request);
}

std::string WaiveCommand(const CheckRequest& request, bool names_baseline, const std::string& fingerprint) {
  return "korvelcheck waive " + fingerprint + ComparedWords(request, names_baseline) + " --reason 'REASON' --until YYYY-MM-DD" +
         SettingsRemark(request);
}

}  // namespace korvel::tool
