// Tested by tests/tool/baseline_test.cpp.
#include "project/baseline.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <utility>

#include "base/text.h"
#include "project/git.h"
#include "project/git_call.h"

namespace korvel {
namespace {

constexpr std::string_view kTagPrefix = "git-tag:";
constexpr std::string_view kTags = "refs/tags/";

// At most `count` tags, 0 for all: "v1.10.0" before "v1.9.0", and "v1.10.0" before "v1.10.0-rc1".
std::vector<std::string> NewestTags(const std::string& pattern, std::size_t count, const std::string& argument) {
  const std::string tags = GitOutput({"-c", "versionsort.suffix=-", "for-each-ref", "--count=" + std::to_string(count),
                                      "--sort=-version:refname", "--format=%(refname)", std::string(kTags) + pattern},
                                     argument);
  if (!tags.empty()) return SplitAt(tags, '\n');
  const std::string depth = IsShallow(argument) ? "--depth=1 " : "";
  RefuseArgument(argument, "no tag matches " + Quote(pattern) + "; fetch the tags with: git fetch " + depth + "--tags");
}

Baseline ResolveTag(const std::string& argument) {
  const std::string pattern = argument.substr(kTagPrefix.size());
  if (pattern.empty()) RefuseArgument(argument, "the pattern is missing; allowed: git-tag:PATTERN, such as git-tag:v*");
  const std::string tag = NewestTags(pattern, 1, argument).front();
  return {"git:" + tag.substr(kTags.size()), tag, "the newest tag that matches " + OneLine(pattern)};
}

// The id of the commit; "" for a directory, for a tree without a commit, and if there is none.
std::string CommitOf(const Baseline& baseline) {
  return baseline.revision ? FindObject(*baseline.revision + "^{commit}", baseline.name) : "";
}

std::string RelativeTo(const std::string& directory, const std::string& argument) {
  const bool is_git = argument.starts_with("git:") || argument.starts_with(kTagPrefix);
  return is_git ? argument : (std::filesystem::path(directory) / argument).string();
}

}  // namespace

std::vector<std::string> TagsOf(const std::string& pattern) {
  std::vector<std::string> tags = NewestTags(pattern, 0, "--tags " + pattern);
  std::ranges::reverse(tags);
  return tags;
}

Baseline ResolveBaseline(const std::string& argument) {
  if (argument.starts_with(kTagPrefix)) return ResolveTag(argument);
  const std::optional<std::string> revision = ParseGitRevision(argument);
  if (!revision) return {argument, std::nullopt};
  const std::optional<std::string> other = MergeBaseArgument(*revision);
  if (!other) return {argument, revision};
  const std::string base = Git::MergeBase(*other, argument);
  return {argument, base, "commit " + base.substr(0, 12) + ", the merge base of " + OneLine(*other) + " and HEAD"};
}

std::vector<Baseline> ResolveBaselines(const std::vector<std::string>& arguments) {
  std::vector<Baseline> baselines;
  std::vector<std::string> commits;
  for (const std::string& argument : arguments) {
    Baseline baseline = ResolveBaseline(argument);
    std::string commit = CommitOf(baseline);
    const auto same = std::ranges::find(commits, commit);
    if (!commit.empty() && same != commits.end()) {
      AppendPart(baselines[static_cast<std::size_t>(same - commits.begin())].origin, "; ", "also " + OneLine(argument));
      continue;
    }
    baselines.push_back(std::move(baseline));
    commits.push_back(std::move(commit));
  }
  return baselines;
}

std::vector<std::string> BaselinesOf(const Project& project) {
  std::vector<std::string> arguments;
  for (const ProjectText& entry : project.against) arguments.push_back(RelativeTo(project.directory, entry.text));
  return arguments;
}

bool IsCheckedOut(const Baseline& baseline) {
  const std::string commit = CommitOf(baseline);
  return !commit.empty() && FindObject("HEAD^{commit}", baseline.name) == commit;
}

}  // namespace korvel
