// Tested by tests/tool/wrong_question_test.cpp.
#include "project/near_pattern.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "base/did_you_mean.h"
#include "base/paths.h"
#include "base/text.h"
#include "project/glob.h"
#include "project/removed_files.h"

namespace korvel {
namespace {

constexpr std::size_t kMaxReads = 20;  // files that are read to find a schema

std::string Lower(std::string text) {
  for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return text;
}

bool IsGlob(std::string_view pattern) { return pattern.find_first_of("*?") != std::string_view::npos; }

bool HasSchemaSuffix(const std::string& path) {
  const std::string lower = Lower(path);
  return lower.ends_with(".xml") || lower.ends_with(".qmb");
}

std::string Suffix(const std::string& path) { return std::string(SuffixOf(FileNameOf(path))); }

// All files of this suffix next to a file.
std::string PatternBeside(const std::string& file) { return PrefixOf(std::string(DirectoryOf(file))) + "*" + Suffix(file); }

bool IsSimilar(std::string_view word, const std::string& other) {
  const std::array<std::string_view, 1> candidates{other};
  return !DidYouMean(word, candidates).empty();
}

// How far a file is from what a pattern matches, and the pattern that matches it.
struct NearFile {
  int distance;
  NearPattern near;
};

std::optional<NearFile> NearFileFor(const std::string& pattern, const std::string& file) {
  const std::string fixed(FixedDirectory(pattern));
  const bool has_wildcard = IsGlob(pattern);
  const std::string beside = has_wildcard ? PatternBeside(file) : file;
  if (MatchesGlob(Lower(pattern), Lower(file))) return NearFile{0, {beside, file}};
  if (!has_wildcard) return IsSimilar(pattern, file) ? std::optional(NearFile{1, {file, file}}) : std::nullopt;
  const std::string directory(DirectoryOf(file));
  if (!fixed.empty() && file.starts_with(fixed + "/")) {
    return NearFile{1, {directory == fixed ? beside : fixed + "/**/*" + Suffix(file), file}};
  }
  if (!fixed.empty() && IsSimilar(fixed, directory)) return NearFile{2, {beside, file}};
  if (MatchesGlob("**/" + pattern, file)) return NearFile{3, {beside, file}};
  return std::nullopt;
}

// The first of the nearest candidates that is a schema.
std::optional<NearPattern> FirstSchema(std::vector<NearFile> candidates, const ProjectScope& scope, FileTree& state) {
  std::ranges::stable_sort(candidates, {}, &NearFile::distance);
  candidates.resize(std::min(candidates.size(), kMaxReads));
  const auto found = std::ranges::find_if(
      candidates, [&](const NearFile& one) { return IsSchema(state, PrefixOf(scope.directory) + one.near.file); });
  return found == candidates.end() ? std::nullopt : std::optional(found->near);
}

// The paths of files from the directory of the project file, without those that it selects or excludes.
std::vector<std::string> NotSelected(const std::string& directory, const ProjectScope& scope, const FileTree& state) {
  const Patterns patterns(scope);
  const std::string prefix = PrefixOf(scope.directory);
  std::vector<std::string> files;
  for (const std::string& file : state.Below(directory)) {
    const bool is_selected = !patterns.IsEmpty() && patterns.MatchAnyBeforeExclude(file);
    if (file.starts_with(prefix) && !is_selected && patterns.Excluding(file) == nullptr)
      files.push_back(file.substr(prefix.size()));
  }
  return files;
}

}  // namespace

std::optional<NearPattern> FindNearPattern(const std::string& pattern, const ProjectScope& scope, FileTree& state) {
  std::vector<NearFile> candidates;
  for (const std::string& file : NotSelected(scope.directory, scope, state)) {
    if (!HasSchemaSuffix(file) && Suffix(file) != Suffix(pattern)) continue;
    if (auto candidate = NearFileFor(pattern, file)) candidates.push_back(std::move(*candidate));
  }
  return FirstSchema(std::move(candidates), scope, state);
}

std::optional<NearPattern> FindPatternFor(const std::string& directory, const ProjectScope& scope, FileTree& state) {
  std::vector<NearFile> candidates;
  for (const std::string& file : NotSelected(directory, scope, state)) {
    candidates.push_back({HasSchemaSuffix(file) ? 0 : 1, {PatternBeside(file), file}});
  }
  return FirstSchema(std::move(candidates), scope, state);
}

std::string ToText(const std::optional<NearPattern>& near) {
  if (!near) return "";
  return " (did you mean '" + OneLine(near->pattern) + "', which matches " + PathText(near->file) + "?)";
}

}  // namespace korvel
