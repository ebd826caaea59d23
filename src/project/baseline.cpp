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

// The id of the commit, or "" for a directory, a tree without a commit and an unknown revision.
std::string CommitOf(const Baseline& baseline) {
  return baseline.revision ? FindObject(*baseline.revision + "^{commit}", baseline.name) : "";
}

// X of "git:X...".
std::optional<std::string> ParseMergeBase(const std::string& argument) {
  const std::optional<std::string> revision = argument.starts_with(kTagPrefix) ? std::nullopt : ParseGitRevision(argument);
  return revision ? MergeBaseArgument(*revision) : std::nullopt;
}

// A merge base of X and HEAD. One of several is named by its id.
Baseline MergeBaseOf(const std::string& other, const std::string& base, const std::string& argument, bool is_only) {
  const std::string id = base.substr(0, 12);
  const std::string origin = "merge base of " + OneLine(other) + " and HEAD";
  if (is_only) return {argument, base, "commit " + id + ", the " + origin};
  return {"git:" + id, base, "a " + origin};
}

// The baselines that an argument names: several if REV of "git:REV..." and HEAD have several merge bases.
std::vector<Baseline> AllOf(const std::string& argument) {
  const std::optional<std::string> other = ParseMergeBase(argument);
  if (!other) return {ResolveBaseline(argument)};
  const std::vector<std::string> bases = Git::MergeBases(*other, argument);
  std::vector<Baseline> baselines;
  baselines.reserve(bases.size());
  for (const std::string& base : bases) baselines.push_back(MergeBaseOf(*other, base, argument, bases.size() == 1));
  return baselines;
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
  if (const auto other = ParseMergeBase(argument)) {
    return MergeBaseOf(*other, Git::MergeBase(*other, argument), argument, true);
  }
  return {argument, ParseGitRevision(argument)};
}

std::vector<Baseline> ResolveBaselines(const std::vector<std::string>& arguments) {
  std::vector<Baseline> baselines;
  std::vector<std::string> commits;
  for (const std::string& argument : arguments) {
    for (Baseline& baseline : AllOf(argument)) {
      std::string commit = CommitOf(baseline);
      const auto same = std::ranges::find(commits, commit);
      if (!commit.empty() && same != commits.end()) {
        AppendPart(baselines[static_cast<std::size_t>(same - commits.begin())].origin, "; ", "also " + OneLine(argument));
        continue;
      }
      baselines.push_back(std::move(baseline));
      commits.push_back(std::move(commit));
    }
  }
  return baselines;
}

std::vector<std::string> BaselinesOf(const Project& project) {
  std::vector<std::string> arguments;
  for (const ProjectText& entry : project.against) arguments.push_back(RelativeTo(project.directory, entry.text));
  return arguments;
}

bool IsCheckedOut(const Baseline& baseline) {
  if (!baseline.revision) return false;
  const std::string commit = CommitOf(baseline);
  const std::string object = commit.empty() ? FindObject(*baseline.revision + "^{tree}", baseline.name) : commit;
  return !object.empty() && object == FindObject(commit.empty() ? "HEAD^{tree}" : "HEAD^{commit}", baseline.name);
}

bool IsAheadOfHead(const Baseline& baseline) {
  if (!baseline.revision || !baseline.origin.empty() || IsShallow(baseline.name)) return false;
  const std::string commit = CommitOf(baseline);
  if (commit.empty()) return false;
  const GitResult base = RunGit({"merge-base", commit, "HEAD"}, baseline.name);
  return base.status == 0 && base.out != commit + "\n";
}

}  // namespace korvel
