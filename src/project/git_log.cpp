// Reads the raw output of git log and git diff. Tested by tests/tool/history_git_test.cpp.
#include "project/git_log.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <utility>

#include "project/git_call.h"

namespace korvel {
namespace {

// What a configuration could change about the output.
const std::vector<std::string> kRaw = {"-z", "--raw", "--no-abbrev", "--no-ext-diff", "--no-textconv", "-O/dev/null"};
const std::vector<std::string> kRenames = {"-M50%", "-l1000"};
const std::vector<std::string> kPlain = {"-c", "log.showSignature=false", "-c", "log.follow=false",
                                         "-c", "log.showRoot=true",       "-c", "i18n.logOutputEncoding=UTF-8"};

void Append(std::vector<std::string>& arguments, const std::vector<std::string>& more) {
  arguments.insert(arguments.end(), more.begin(), more.end());
}

std::string WithoutZeros(const std::string& object) {
  return object.find_first_not_of('0') == std::string::npos ? std::string() : object;
}

// Fields that end with NUL. A commit is "@ID PARENTS"; a change is ":MODE MODE OBJECT OBJECT STATUS" and one or two paths.
class RawReader {
 public:
  explicit RawReader(const std::string& output) : fields_(SplitAt(output, '\0')) {}

  std::vector<GitCommit> Commits() {
    std::vector<GitCommit> commits;
    while (next_ < fields_.size()) {
      const std::string field = Next();
      if (field.starts_with('@')) {
        const std::vector<std::string> words = SplitAt(field.substr(1), ' ');
        commits.push_back({words.at(0), "", words.size() - 1, {}});
      } else if (field.starts_with(':') && !commits.empty()) {
        commits.back().changes.push_back(Change(field));
      }
    }
    return commits;
  }

  std::vector<GitChange> Changes() {
    std::vector<GitChange> changes;
    while (next_ < fields_.size()) {
      const std::string field = Next();
      if (field.starts_with(':')) changes.push_back(Change(field));
    }
    return changes;
  }

 private:
  // After a commit, the first field begins with a line end.
  std::string Next() {
    std::string field = next_ < fields_.size() ? fields_[next_++] : "";
    if (field.starts_with('\n')) field.erase(0, 1);
    return field;
  }

  GitChange Change(const std::string& head) {
    std::vector<std::string> words = SplitAt(head.substr(1), ' ');
    words.resize(5);
    GitChange change;
    change.status = words[4].empty() ? 'M' : words[4].front();
    change.before = {NextPath(), words[0], WithoutZeros(words[2])};
    const bool has_two = change.status == 'R' || change.status == 'C';
    change.after = {has_two ? NextPath() : change.before.path, words[1], WithoutZeros(words[3])};
    return change;
  }

  std::string NextPath() { return next_ < fields_.size() ? fields_[next_++] : ""; }

  std::vector<std::string> fields_;
  std::size_t next_ = 0;
};

constexpr char kFormat[] = "--format=@%H %P";
constexpr std::size_t kAtOnce = 1000;  // commits, because a command line is limited

// Lists commits without walking: calls `list` with the arguments of git log for some of the commits at a time.
void EachPart(const std::string& top, const std::vector<std::string>& commits, auto list) {
  for (std::size_t begin = 0; begin < commits.size(); begin += kAtOnce) {
    std::vector<std::string> arguments = kPlain;
    Append(arguments, {"-C", top, "log", "--no-walk=unsorted"});
    const auto first = commits.begin() + static_cast<std::ptrdiff_t>(begin);
    arguments.insert(arguments.end(), first, first + static_cast<std::ptrdiff_t>(std::min(kAtOnce, commits.size() - begin)));
    list(std::move(arguments));
  }
}

// The output with whole ids of objects has no short ids of commits.
void AddShortIds(const std::string& top, std::vector<GitCommit>& commits, const std::string& argument) {
  std::vector<std::string> ids;
  ids.reserve(commits.size());
  for (const GitCommit& commit : commits) ids.push_back(commit.id);
  std::map<std::string, std::string> short_ids;
  EachPart(top, ids, [&](std::vector<std::string> arguments) {
    Append(arguments, {"--no-patch", "--format=%H %h", "--"});
    for (const std::string& line : SplitAt(GitOutput(arguments, argument), '\n')) {
      const std::size_t end = line.find(' ');
      short_ids[line.substr(0, end)] = line.substr(end + 1);
    }
  });
  for (GitCommit& commit : commits) commit.short_id = short_ids[commit.id];
}

}  // namespace

std::vector<GitCommit> LogOf(const std::string& top, const std::string& range, const std::vector<std::string>& paths,
                             const std::string& argument) {
  std::vector<std::string> arguments = kPlain;
  Append(arguments, {"-C", top, "log", "--first-parent", "-m", "--no-renames", kFormat});
  Append(arguments, kRaw);
  Append(arguments, {range, "--"});
  Append(arguments, paths);
  std::vector<GitCommit> commits = RawReader(GitOutput(arguments, argument)).Commits();
  AddShortIds(top, commits, argument);
  return commits;
}

std::vector<GitFile> DeletedFiles(const std::string& top, const std::string& range, const std::vector<std::string>& directories,
                                  const std::string& argument) {
  std::vector<std::string> arguments = kPlain;
  Append(arguments, {"-C", top, "log", "--first-parent", "-m", "--no-renames", "--diff-filter=D", kFormat});
  Append(arguments, kRaw);
  Append(arguments, {range, "--"});
  Append(arguments, directories);
  std::vector<GitFile> files;
  for (const GitCommit& commit : RawReader(GitOutput(arguments, argument)).Commits()) {
    for (const GitChange& change : commit.changes) files.push_back(change.before);
  }
  return files;
}

std::vector<std::string> CommitsOf(const std::string& top, const std::string& range, const std::string& argument) {
  return SplitAt(GitOutput({"-C", top, "rev-list", "--first-parent", range, "--"}, argument), '\n');
}

std::vector<GitCommit> ChangesOf(const std::string& top, const std::vector<std::string>& commits, const std::string& argument) {
  std::vector<GitCommit> all;
  EachPart(top, commits, [&](std::vector<std::string> arguments) {
    Append(arguments, {"--first-parent", "-m", kFormat});
    Append(arguments, kRaw);
    Append(arguments, kRenames);
    arguments.emplace_back("--");
    std::ranges::move(RawReader(GitOutput(arguments, argument)).Commits(), std::back_inserter(all));
  });
  return all;
}

std::vector<GitChange> UncommittedChanges(const std::string& top, const std::string& argument) {
  std::vector<std::string> arguments = kPlain;
  Append(arguments, {"-C", top, "diff"});
  Append(arguments, kRaw);
  Append(arguments, kRenames);
  Append(arguments, {"--ignore-submodules=all", "HEAD", "--"});
  return RawReader(GitOutput(arguments, argument)).Changes();
}

ObjectFinder::ObjectFinder() : names_({"git", "cat-file", "--batch-check=%(objectname) %(objecttype)"}) {}

std::optional<GitFile> ObjectFinder::Find(const std::string& revision, const std::string& path) {
  if (path.find('\n') != std::string::npos || !names_.Write(revision + ":" + path + "\n")) return std::nullopt;
  std::string line;
  for (char byte = 0; names_.Read(&byte, 1) == 1 && byte != '\n';) line += byte;
  const std::size_t end = line.find(' ');
  if (end == std::string::npos || line.substr(end) != " blob") return std::nullopt;
  return GitFile{path, "100644", line.substr(0, end)};
}

std::set<std::string> ShallowCommits(const std::string& argument) {
  std::string path = RunGit({"rev-parse", "--git-path", "shallow"}, argument).out;
  if (path.ends_with('\n')) path.pop_back();
  std::ifstream file(path);
  std::set<std::string> commits;
  for (std::string line; std::getline(file, line);) commits.insert(line);
  return commits;
}

}  // namespace korvel
