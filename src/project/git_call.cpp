// Asks the git program, and tells why it has no answer. Held by tests/tool/git_test.cpp.
#include "project/git_call.h"

#include <algorithm>
#include <string_view>
#include <system_error>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/one_line.h"
#include "base/quote.h"
#include "project/child_process.h"

namespace korvel {
namespace {

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

// What git offers to do about a repository of somebody else, as jobs in containers have it: "; allow it with: git config ..."
std::string WayOut(const std::string& text) {
  const std::size_t begin = text.find("git config --global --add safe.directory ");
  return begin == std::string::npos ? "" : "; allow it with: " + OneLine(FirstLine(text.substr(begin)));
}

bool IsHexadecimal(std::string_view text) { return text.find_first_not_of("0123456789abcdef") == std::string_view::npos; }

// Whether a revision is the id of an object, in full.
bool IsObjectId(std::string_view revision) { return (revision.size() == 40 || revision.size() == 64) && IsHexadecimal(revision); }

// What is missing about a revision, and which remotes could have it.
class Diagnosis {
 public:
  Diagnosis(const std::string& revision, const std::string& argument)
      : revision_(revision),
        argument_(argument),
        remotes_(SplitAt(CallGit({"remote"}, argument).out, '\n')),
        is_shallow_(CallGit({"rev-parse", "--is-shallow-repository"}, argument).out == "true\n") {}

  std::string Text() const {
    if (CallGit({"rev-list", "--all", "-n", "1"}, argument_).out.empty() && !IsKnown("HEAD")) {
      return "the repository has no commit yet";
    }
    if (IsFile()) return Quote(revision_) + " is a file; allowed: a commit, or a tree of one";
    if (IsObjectId(revision_)) return "commit " + revision_ + " is not in this clone" + FetchOfObject();
    if (IsBeyondShallow()) return Quote(revision_) + " lies beyond the end of this shallow clone; " + kFetchAll;
    if (const std::string fetch = FetchOfBranch(); !fetch.empty()) return Unknown() + "; bring it with: " + fetch;
    return Unknown() + LikeReference();
  }

 private:
  static constexpr const char* kFetchAll = "bring it with: git fetch --unshallow";

  std::string Unknown() const { return "unknown revision " + Quote(revision_); }

  bool IsKnown(const std::string& revision) const {
    return CallGit({"rev-parse", "--verify", "--quiet", "--end-of-options", revision + "^{tree}"}, argument_).status == 0;
  }

  bool IsFile() const { return CallGit({"cat-file", "-t", revision_}, argument_).out == "blob\n"; }

  // main~50: there is a main, but not that far back.
  bool IsBeyondShallow() const {
    const std::size_t base = revision_.find_first_of("~^@", 1);
    return is_shallow_ && base != std::string::npos && IsKnown(revision_.substr(0, base));
  }

  std::string FetchOfObject() const {
    if (remotes_.empty()) return "";
    const std::string depth = is_shallow_ ? "--depth=1 " : "";
    return "; bring it with: git fetch " + depth + OneLine(remotes_.front()) + " " + revision_;
  }

  // A clone of one branch has no other; to fetch one by name leaves no reference to it behind unless it is told to.
  std::string FetchOfBranch() const {
    for (const std::string& remote : remotes_) {
      const std::string branch = revision_.starts_with(remote + "/") ? revision_.substr(remote.size() + 1) : "";
      if (branch.empty() || CallGit({"check-ref-format", "--branch", branch}, argument_).status != 0) continue;
      if (!LikeReference().empty()) return "";
      const std::string depth = is_shallow_ ? "--depth=1 " : "";
      return OneLine("git fetch " + depth + remote + " " + branch + ":refs/remotes/" + remote + "/" + branch);
    }
    return "";
  }

  std::string LikeReference() const {
    std::vector<std::string> names = SplitAt(CallGit({"for-each-ref", "--format=%(refname:short)"}, argument_).out, '\n');
    // A clone for a job has the branches of others as those of its remote alone.
    for (const std::string& name : names) {
      if (name.ends_with("/" + revision_)) return " (did you mean " + Quote(name) + "?)";
    }
    if (revision_.find_first_of("~^@") == std::string::npos) names.emplace_back("HEAD");
    return DidYouMean(revision_, std::vector<std::string_view>(names.begin(), names.end()));
  }

  const std::string& revision_;
  const std::string& argument_;
  std::vector<std::string> remotes_;
  bool is_shallow_;
};

}  // namespace

std::vector<std::string> SplitAt(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    parts.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

std::string FirstComplaint(const std::string& text) {
  std::string line = FirstLine(text);
  for (const std::string_view word : {"fatal: ", "error: "}) {
    if (line.starts_with(word)) line.erase(0, word.size());
  }
  return OneLine(line);
}

void RefuseArgument(const std::string& argument, const std::string& reason) {
  throw InputError{{ToolMessage(OneLine(argument) + ": " + reason)}};
}

GitAnswer CallGit(const std::vector<std::string>& arguments, const std::string& argument) {
  std::vector<std::string> command = {"git", "--literal-pathspecs"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  try {
    ChildProcess git(command);
    GitAnswer answer;
    answer.out = git.ReadAll();
    answer.status = git.Wait();
    const std::string errors = git.ErrorText();
    answer.error = FirstComplaint(errors) + WayOut(errors);
    return answer;
  } catch (const std::system_error& fault) {
    if (fault.code() == std::errc::no_such_file_or_directory) RefuseArgument(argument, "needs git, which is not installed");
    RefuseArgument(argument, "git cannot be started: " + fault.code().message());
  }
}

std::string AskGit(const std::vector<std::string>& arguments, const std::string& argument) {
  GitAnswer answer = CallGit(arguments, argument);
  if (answer.status == 0) return std::move(answer.out);
  const std::string reason = answer.error.empty() ? "exit code " + std::to_string(answer.status) : answer.error;
  RefuseArgument(argument, "git " + arguments.front() + " fails: " + reason);
}

void RefuseRevision(const std::string& revision, const std::string& argument) {
  const GitAnswer repository = CallGit({"rev-parse", "--git-dir"}, argument);
  if (repository.status != 0) RefuseArgument(argument, repository.error);
  RefuseArgument(argument, Diagnosis(revision, argument).Text());
}

}  // namespace korvel
