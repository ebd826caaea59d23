// Reads files from commits; git_call.cpp explains failures. Tested by tests/tool/git_test.cpp.
#include "project/git.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/paths.h"
#include "base/text.h"
#include "project/blob_id.h"
#include "project/git_call.h"
#include "qmx/qmx_xml.h"

namespace korvel {
namespace {

constexpr std::string_view kGitPrefix = "git:";
constexpr std::string_view kMergeBase = "...";

// Where the revision ends: at a colon that is not part of it, as in HEAD^{/fix: the key}.
std::size_t EndOfRevision(std::string_view text) {
  int depth = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '{') ++depth;
    if (text[i] == '}') --depth;
    if (text[i] == ':' && depth <= 0) return i;
  }
  return std::string_view::npos;
}

void RequireRevision(const std::string& revision, const std::string& argument) {
  if (revision.empty()) RefuseArgument(argument, "the revision is missing");
  for (const char* const mark : {"-", "^"}) {  // an option; what git takes to be left out
    if (revision.starts_with(mark)) RefuseArgument(argument, std::string("a revision must not begin with '") + mark + "'");
  }
  const std::size_t dots = revision.find(kMergeBase);
  const bool is_misplaced = dots == 0 || (dots != std::string::npos && dots + kMergeBase.size() != revision.size());
  if (is_misplaced) RefuseArgument(argument, "'...' has no place there; allowed: git:REV..., the merge base of REV and HEAD");
}

// "a/./b/../c" as "a/c"; nullopt for a path that leads out of the top.
std::optional<std::string> Normal(const std::string& path) {
  std::vector<std::string> parts;
  for (const std::string& part : SplitAt(path, '/')) {
    if (part == ".." && parts.empty()) return std::nullopt;
    if (part == "..") {
      parts.pop_back();
    } else if (!part.empty() && part != ".") {
      parts.push_back(part);
    }
  }
  return Join(parts, "/");
}

// Lines of "git ls-tree -z": MODE SP TYPE SP OBJECT TAB PATH NUL.
std::vector<GitFile> Listed(const std::string& output) {
  std::vector<GitFile> files;
  for (const std::string& line : SplitAt(output, '\0')) {
    const std::size_t mode_end = line.find(' ');
    const std::size_t type_end = line.find(' ', mode_end + 1);
    const std::size_t object_end = line.find('\t', type_end + 1);
    if (object_end == std::string::npos) continue;
    files.push_back(
        {line.substr(object_end + 1), line.substr(0, mode_end), line.substr(type_end + 1, object_end - type_end - 1)});
  }
  return files;
}

std::string_view NameOf(std::string_view path) { return path.substr(path.rfind('/') + 1); }

// A file with the same name in another directory, otherwise one with a similar path.
std::string SimilarPath(const std::string& path, const std::vector<GitFile>& files) {
  std::vector<std::string_view> near;
  for (const GitFile& file : files) {
    if (NameOf(file.path) == NameOf(path)) return " (did you mean " + QuoteWhole(file.path) + "?)";
    const bool may_be_near = file.path.size() <= path.size() + 2 && path.size() <= file.path.size() + 2;
    if (may_be_near) near.emplace_back(file.path);
  }
  return DidYouMean(path, near);
}

struct ModeName {
  std::string_view mode;
  const char* what;
};

void RequireFile(const GitFile& file, const std::string& argument) {
  static constexpr ModeName kNoFiles[] = {{"040000", "a directory"}, {"120000", "a symbolic link"}, {"160000", "a submodule"}};
  for (const auto& [mode, what] : kNoFiles) {
    if (file.mode == mode) RefuseArgument(argument, std::string("is ") + what + " in that commit; allowed: a file");
  }
}

std::string WithoutLineEnd(std::string text) {
  if (text.ends_with('\n')) text.pop_back();
  return text;
}

}  // namespace

std::optional<GitPath> ParseGitPath(const std::string& argument) {
  if (!argument.starts_with(kGitPrefix)) return std::nullopt;
  const std::string rest = argument.substr(kGitPrefix.size());
  const std::size_t colon = EndOfRevision(rest);
  if (colon == std::string::npos) RefuseArgument(argument, "the path is missing; allowed: git:REV:PATH");
  GitPath path{rest.substr(0, colon), rest.substr(colon + 1)};
  RequireRevision(path.revision, argument);
  if (path.path.empty()) RefuseArgument(argument, "the path is missing; allowed: git:REV:PATH");
  return path;
}

std::optional<std::string> ParseGitRevision(const std::string& argument) {
  if (!argument.starts_with(kGitPrefix)) return std::nullopt;
  std::string revision = argument.substr(kGitPrefix.size());
  if (EndOfRevision(revision) != std::string::npos) RefuseArgument(argument, "names a path; allowed: git:REV");
  RequireRevision(revision, argument);
  return revision;
}

std::optional<std::string> MergeBaseArgument(const std::string& revision) {
  if (!revision.ends_with(kMergeBase)) return std::nullopt;
  return revision.substr(0, revision.size() - kMergeBase.size());
}

bool IsBlobOf(const GitFile& file, std::string_view bytes) {
  constexpr std::string_view kRegularFile = "100";  // 100644, 100755
  return file.mode.starts_with(kRegularFile) && file.object == BlobId(bytes);
}

Bytes Git::Read(const GitPath& path) {
  const std::scoped_lock lock(mutex_);
  const std::string argument = std::string(kGitPrefix) + path.revision + ":" + path.path;
  const GitFile file = Find(path, argument);
  RequireFile(file, argument);
  return ReadObject(file.object, argument);
}

std::vector<GitFile> Git::Files(const std::string& revision, const std::string& argument) {
  const std::scoped_lock lock(mutex_);
  return Listed(GitOutput({"ls-tree", "-r", "-z", "--full-tree", TreeOf(revision, argument)}, argument));
}

// Lines of "git ls-files -t -s -z": "S" SP MODE SP OBJECT SP STAGE TAB PATH NUL; other letters are for files on the disk.
std::vector<GitFile> Git::FilesLeftOut(const std::string& argument) {
  std::vector<GitFile> files;
  if (RunGit({"config", "--type=bool", "core.sparseCheckout"}, argument).out != "true\n") return files;
  const std::string top = Top(argument);
  for (const std::string& line : SplitAt(GitOutput({"-C", top, "ls-files", "-t", "-s", "-z"}, argument), '\0')) {
    const std::size_t mode_end = line.find(' ', 2);
    const std::size_t object_end = line.find(' ', mode_end + 1);
    const std::size_t stage_end = line.find('\t', object_end + 1);
    if (!line.starts_with("S ") || stage_end == std::string::npos) continue;
    files.push_back(
        {line.substr(stage_end + 1), line.substr(2, mode_end - 2), line.substr(mode_end + 1, object_end - mode_end - 1)});
  }
  return files;
}

Bytes Git::ReadFile(const GitFile& file, const std::string& argument) {
  RequireFile(file, argument);
  const std::scoped_lock lock(mutex_);
  return ReadObject(file.object, argument);
}

std::string Git::PlainRevision(const std::string& revision, const std::string& argument) {
  const std::optional<std::string> other = MergeBaseArgument(revision);
  return other ? MergeBase(*other, argument) : revision;
}

std::vector<std::string> Git::MergeBases(const std::string& revision, const std::string& argument) {
  for (const std::string& one : {revision, std::string("HEAD")}) {
    if (FindObject(one + "^{commit}", argument).empty()) RefuseRevision(one, argument);
  }
  const GitResult result = RunGit({"merge-base", "--all", revision, "HEAD"}, argument);
  if (result.status == 0) return SplitAt(WithoutLineEnd(result.out), '\n');
  if (!result.error.empty()) RefuseArgument(argument, result.error);
  const std::string text = Quote(revision) + " and HEAD have no commit in common";
  if (!IsShallow(argument)) RefuseArgument(argument, text);
  RefuseArgument(argument, text + " in this shallow clone; fetch the others with: " + FetchAllCommand(revision, argument));
}

std::string Git::MergeBase(const std::string& revision, const std::string& argument) {
  const std::vector<std::string> bases = MergeBases(revision, argument);
  if (bases.size() == 1) return bases.front();
  RefuseArgument(argument, Quote(revision) + " and HEAD have " + std::to_string(bases.size()) +
                               " merge bases; allowed: one of them: " + Join(bases, ", "));
}

std::string Git::Prefix(const std::string& argument) {
  if (!prefix_) {
    const GitResult result = RunGit({"rev-parse", "--show-prefix"}, argument);
    if (result.status != 0) RefuseArgument(argument, result.error);
    prefix_ = WithoutLineEnd(result.out);
  }
  return *prefix_;
}

std::string Git::Top(const std::string& argument) {
  const GitResult result = RunGit({"rev-parse", "--show-toplevel"}, argument);
  if (result.status != 0) RefuseArgument(argument, result.error);
  return WithoutLineEnd(result.out);
}

std::string Git::TreeOf(const std::string& revision, const std::string& argument) {
  std::string& tree = trees_[revision];
  if (tree.empty()) {
    tree = FindObject(PlainRevision(revision, argument) + "^{tree}", argument);
    if (tree.empty()) RefuseRevision(revision, argument);
  }
  return tree;
}

std::string Git::FromTop(const std::string& path, const std::string& argument) {
  const std::optional<std::string> normal = Normal(IsFromHere(path) ? Prefix(argument) + path : path);
  if (!normal) RefuseArgument(argument, "is outside of the repository");
  return *normal;
}

GitFile Git::Find(const GitPath& path, const std::string& argument) {
  const std::string tree = TreeOf(path.revision, argument);
  const std::string from_top = FromTop(path.path, argument);
  if (from_top.empty()) RequireFile({"", "040000", tree}, argument);
  const std::vector<GitFile> found = Listed(GitOutput({"ls-tree", "-z", "--full-tree", tree, "--", from_top}, argument));
  if (found.size() == 1) return found.front();
  const std::vector<GitFile> all = Listed(GitOutput({"ls-tree", "-r", "-z", "--full-tree", tree}, argument));
  RefuseArgument(argument, "is not in that commit" + SimilarPath(from_top, all));
}

Bytes Git::ReadObject(const std::string& object, const std::string& argument) {
  Bytes bytes;
  const std::size_t size = RequestObject(object, argument);
  bytes.data = std::make_unique_for_overwrite<char[]>(size + 1);
  // The object is followed by the end of a line.
  if (ReadNext(bytes.data.get(), size + 1) != size + 1) RefuseEnded(argument);
  bytes.size = size;
  return bytes;
}

// Size of the object, whose bytes come next.
std::size_t Git::RequestObject(const std::string& object, const std::string& argument) {
  if (objects_ == nullptr) objects_ = std::make_unique<ChildProcess>(std::vector<std::string>{"git", "cat-file", "--batch"});
  if (!objects_->Write(object + "\n")) RefuseEnded(argument);
  std::string header;  // OBJECT SP TYPE SP SIZE, or OBJECT SP "missing"
  for (char byte = 0;; header += byte) {
    if (ReadNext(&byte, 1) == 0) RefuseEnded(argument);
    if (byte == '\n') break;
  }
  std::size_t size = 0;
  const std::string_view number = std::string_view(header).substr(header.rfind(' ') + 1);
  if (std::from_chars(number.data(), number.data() + number.size(), size).ec != std::errc()) {
    RefuseArgument(argument, "the repository has no object " + object + "; run 'git fsck'");
  }
  if (size <= qmx::kMaxFileBytes) return size;
  objects_.reset();  // which would write all of it first
  RefuseArgument(argument, "is too large; allowed: at most " + std::to_string(qmx::kMaxFileBytes) + " bytes");
}

// Reads from git cat-file. If that hung, it was ended: the next request starts another one.
std::size_t Git::ReadNext(char* to, std::size_t size) {
  try {
    return objects_->Read(to, size);
  } catch (const OutputTimeoutError&) {
    objects_.reset();
    throw;
  }
}

void Git::RefuseEnded(const std::string& argument) {
  const int status = objects_->Wait();
  const std::string complaint = FirstComplaint(objects_->ErrorText());
  objects_.reset();
  RefuseArgument(argument, "git cat-file ended unexpectedly with exit code " + std::to_string(status) +
                               (complaint.empty() ? "" : ": " + complaint));
}

}  // namespace korvel
