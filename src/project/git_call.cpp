// Runs the git program, and explains why it failed. Tested by tests/tool/git_test.cpp and shallow_clone_test.cpp.
#include "project/git_call.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "base/did_you_mean.h"
#include "base/input_error.h"
#include "base/text.h"
#include "project/child_process.h"

namespace korvel {
namespace {

constexpr char kNoFetch[] = "GIT_NO_LAZY_FETCH";
constexpr char kLacksObject[] =
    "this partial clone lacks an object, and the network is not used; fetch it by a call of 'korvelcheck check'";

std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }

// The command that git suggests for a repository that another user owns, as in containers: "; allow it with: git config ..."
std::string CommandToTrust(const std::string& text) {
  const std::size_t begin = text.find("git config --global --add safe.directory ");
  return begin == std::string::npos ? "" : "; allow it with: " + OneLine(FirstLine(text.substr(begin)));
}

bool IsHexadecimal(std::string_view text) { return text.find_first_not_of("0123456789abcdef") == std::string_view::npos; }

// Whether a revision is the id of an object, in full.
bool IsObjectId(std::string_view revision) { return (revision.size() == 40 || revision.size() == 64) && IsHexadecimal(revision); }

// A name that begins with '-' would be an option of the commands that name it.
std::vector<std::string> RemotesOf(const std::string& argument) {
  std::vector<std::string> remotes = SplitAt(RunGit({"remote"}, argument).out, '\n');
  std::erase_if(remotes, [](const std::string& remote) { return remote.starts_with('-'); });
  return remotes;
}

// Finds out why a revision does not exist, and which remote may have it.
class Diagnosis {
 public:
  Diagnosis(const std::string& revision, const std::string& argument)
      : revision_(revision), argument_(argument), remotes_(RemotesOf(argument)), is_shallow_(IsShallow(argument)) {}

  std::string Text() const {
    if (RunGit({"rev-list", "--all", "-n", "1"}, argument_).out.empty() && !IsKnown("HEAD")) {
      return "the repository has no commit yet";
    }
    if (IsFile()) return Quote(revision_) + " is a file; allowed: a commit, or a tree of one";
    if (IsObjectId(revision_)) return "commit " + revision_ + " is not in this clone" + FetchOfObject();
    if (IsBeyondShallow()) {
      return Quote(revision_) +
             " is older than the oldest commit of this shallow clone; fetch it with: " + FetchAllCommand(revision_, argument_);
    }
    const std::string unknown = "unknown revision " + Quote(revision_);
    if (const std::string name = OnRemote(); !name.empty()) return unknown + Meant(name);
    return unknown + SimilarReference() + HowToFetch();
  }

 private:
  static std::string Meant(const std::string& name) { return " (did you mean " + QuoteWhole(name) + "?)"; }

  std::string Depth() const { return is_shallow_ ? "--depth=1 " : ""; }

  bool IsKnown(const std::string& revision) const { return !FindObject(revision + "^{tree}", argument_).empty(); }

  bool IsFile() const { return RunGit({"cat-file", "-t", revision_}, argument_).out == "blob\n"; }

  // main~50: there is a main, but not that far back.
  bool IsBeyondShallow() const {
    const std::size_t base = revision_.find_first_of("~^@", 1);
    return is_shallow_ && base != std::string::npos && IsKnown(revision_.substr(0, base));
  }

  std::string FetchOfObject() const {
    if (remotes_.empty()) return "";
    return "; fetch it with: git fetch " + Depth() + ShellWord(remotes_.front()) + " " + revision_;
  }

  bool IsName() const { return RunGit({"check-ref-format", "refs/heads/" + revision_}, argument_).status == 0; }

  std::string CommandForBranch(const std::string& remote, const std::string& branch) const {
    const std::string source = branch.starts_with('-') ? "refs/heads/" + branch : branch;  // which is no option
    return "git fetch " + Depth() + ShellWord(remote) + " " + ShellWord(source + ":refs/remotes/" + remote + "/" + branch);
  }

  std::string HowToFetch() const {
    if (!HasOrigin() && revision_.starts_with(kOrigin)) {
      if (remotes_.empty()) return "; the repository has no remote";
      return "; no remote has the name 'origin'; the remotes are: " + OneLine(Join(remotes_, ", "));
    }
    const std::string fetch = FetchOfBranch();
    return fetch.empty() ? FetchOfName() : fetch;
  }

  bool HasOrigin() const { return std::ranges::find(remotes_, "origin") != remotes_.end(); }

  // A clone of one branch lacks the others; fetching one by name leaves a reference only if the command says so.
  std::string FetchOfBranch() const {
    for (const std::string& remote : remotes_) {
      const bool is_branch = revision_.starts_with(remote + "/") && IsName();
      if (is_branch) return "; fetch it with: " + CommandForBranch(remote, revision_.substr(remote.size() + 1));
    }
    return "";
  }

  // A shallow clone, and one of a single branch, lacks tags and branches that the remote has.
  std::string FetchOfName() const {
    if (remotes_.empty() || !IsPartialClone() || !IsName() || revision_.ends_with("HEAD")) return "";
    const std::string& remote = remotes_.front();
    return "; if it is a tag, fetch it with: git fetch " + Depth() + ShellWord(remote) + " tag " + ShellWord(revision_) +
           "; if it is a branch, fetch it with: " + CommandForBranch(remote, revision_) + " and use " +
           OneLine(remote + "/" + revision_);
  }

  bool IsPartialClone() const {
    const GitResult branches = RunGit({"config", "--get-all", "remote." + remotes_.front() + ".fetch"}, argument_);
    return is_shallow_ || branches.out.find("refs/heads/*:") == std::string::npos;
  }

  std::vector<std::string> References() const {
    return SplitAt(RunGit({"for-each-ref", "--format=%(refname:short)"}, argument_).out, '\n');
  }

  // A clone of a pipeline has other branches only as branches of its remote, which may have another name than usual.
  std::string OnRemote() const {
    const bool is_renamed = !HasOrigin() && revision_.starts_with(kOrigin);
    const std::string branch = is_renamed ? revision_.substr(kOrigin.size()) : revision_;
    for (const std::string& name : References()) {
      if (name == branch || name.ends_with("/" + branch)) return name;
    }
    return "";
  }

  // The nearest name, or a tag of a version with more numbers: v1.0.2 for v1.0.
  std::string SimilarReference() const {
    std::vector<std::string> names = References();
    if (revision_.find_first_of("~^@") == std::string::npos) names.emplace_back("HEAD");
    std::string nearest = DidYouMean(revision_, std::vector<std::string_view>(names.begin(), names.end()));
    if (!nearest.empty()) return nearest;
    const auto longer =
        std::ranges::find_if(names, [this](const std::string& name) { return name.starts_with(revision_ + "."); });
    return longer == names.end() ? "" : Meant(*longer);
  }

  static constexpr std::string_view kOrigin = "origin/";

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
  const bool lacks_object = text.find(" from promisor remote") != std::string::npos;
  if (lacks_object && std::getenv(kNoFetch) != nullptr) return kLacksObject;
  std::string line = FirstLine(text);
  for (const std::string_view word : {"fatal: ", "error: "}) {
    if (line.starts_with(word)) line.erase(0, word.size());
  }
  return OneLine(line);
}

// The list of protocols also overrides what the configuration of a repository allows. Versions of git before 2.45 know only it.
void KeepGitOffline() {
  ::setenv(kNoFetch, "1", 1);
  ::setenv("GIT_ALLOW_PROTOCOL", "", 1);
  ::setenv("GIT_TERMINAL_PROMPT", "0", 1);
}

void RefuseArgument(const std::string& argument, const std::string& reason) {
  throw InputError{{ToolMessage(OneLine(argument) + ": " + reason)}};
}

GitResult RunGit(const std::vector<std::string>& arguments, const std::string& argument) {
  // Without a program that a configuration names to watch the work tree.
  std::vector<std::string> command = {"git", "--literal-pathspecs", "-c", "core.fsmonitor=false"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  try {
    ChildProcess git(command);
    GitResult result;
    result.out = git.ReadAll();
    result.status = git.Wait();
    const std::string errors = git.ErrorText();
    result.error = FirstComplaint(errors) + CommandToTrust(errors);
    return result;
  } catch (const std::system_error& fault) {
    if (fault.code() == std::errc::no_such_file_or_directory) RefuseArgument(argument, "needs git, which is not installed");
    RefuseArgument(argument, "git cannot be started: " + fault.code().message());
  }
}

std::string GitOutput(const std::vector<std::string>& arguments, const std::string& argument) {
  GitResult result = RunGit(arguments, argument);
  if (result.status == 0) return std::move(result.out);
  const std::string reason = result.error.empty() ? "exit code " + std::to_string(result.status) : result.error;
  std::size_t command = 0;
  while (arguments[command] == "-c" || arguments[command] == "-C") command += 2;  // with what they take
  RefuseArgument(argument, "git " + arguments[command] + " fails: " + reason);
}

std::string FindObject(const std::string& revision, const std::string& argument) {
  return FirstLine(RunGit({"rev-parse", "--verify", "--quiet", "--end-of-options", revision}, argument).out);
}

std::string FetchAllCommand(const std::string& revision, const std::string& argument) {
  constexpr std::string_view kFetched = "FETCH_HEAD";
  std::string command = "git fetch --unshallow";
  const std::vector<std::string> remotes = RemotesOf(argument);
  if (!revision.starts_with(kFetched) || remotes.empty()) return command;
  return command + " " + ShellWord(remotes.front()) + " " + FindObject(std::string(kFetched), argument);
}

bool IsShallow(const std::string& argument) { return RunGit({"rev-parse", "--is-shallow-repository"}, argument).out == "true\n"; }

void RefuseRevision(const std::string& revision, const std::string& argument) {
  const GitResult repository = RunGit({"rev-parse", "--git-dir"}, argument);
  if (repository.status != 0) RefuseArgument(argument, repository.error);
  const GitResult tree = RunGit({"cat-file", "-e", revision + "^{tree}"}, argument);
  if (tree.error == kLacksObject) RefuseArgument(argument, tree.error);
  RefuseArgument(argument, Diagnosis(revision, argument).Text());
}

}  // namespace korvel
