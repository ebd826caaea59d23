#include "git_repository.h"

namespace tool_test {
namespace {

// $0 is the program that every test runs.
constexpr char kRealGit[] = "/usr/bin/git";

}  // namespace

GitTest::GitTest()
    : environment_{"PATH=/usr/bin:/bin",
                   "HOME=/nonexistent",
                   "GIT_CONFIG_GLOBAL=/dev/null",
                   "GIT_CONFIG_NOSYSTEM=1",
                   "GIT_CEILING_DIRECTORIES=" + PathOf("").parent_path().parent_path().string(),
                   "GIT_AUTHOR_NAME=A",
                   "GIT_AUTHOR_EMAIL=a@example.org",
                   "GIT_AUTHOR_DATE=2026-01-01T00:00:00Z",
                   "GIT_COMMITTER_NAME=C",
                   "GIT_COMMITTER_EMAIL=c@example.org",
                   "GIT_COMMITTER_DATE=2026-01-01T00:00:00Z",
                   "SOURCE_DATE_EPOCH=1767225600"} {  // 2026-01-01
  Git({"init", "-q", "-b", "main"});
}

std::string GitTest::GitIn(const std::string& directory, const std::vector<std::string>& arguments) const {
  const std::string run_git = std::string("exec ") + kRealGit + " \"$@\"";
  const Outcome outcome = RunProgram(Call{.arguments = arguments,
                                          .directory = PathOf(directory),
                                          .launcher = {"/bin/sh", "-c", run_git},
                                          .environment = environment_});
  EXPECT_EQ(outcome.exit_code, 0) << "git " << arguments.front() << ": " << outcome.err;
  return outcome.out;
}

std::string GitTest::Commit(const std::string& subject) const {
  Git({"add", "-A"});
  Git({"commit", "-q", "--allow-empty", "-m", subject});
  const std::string id = Git({"rev-parse", "HEAD"});
  return id.substr(0, id.find('\n'));
}

Outcome GitTest::Run(const std::vector<std::string>& arguments, const std::string& directory) const {
  return RunProgram(Call{.arguments = arguments, .directory = PathOf(directory), .environment = environment_});
}

void GitTest::ExpectRefused(const std::vector<std::string>& arguments, const std::string& err) const {
  ExpectInputError(Run(arguments), err);
}

void GitTest::ReplaceGit(const std::string& script) {
  std::filesystem::create_directory(PathOf("bin"));
  Write("bin/git", "#!/bin/sh\n" + script + "\n");
  std::filesystem::permissions(PathOf("bin/git"), std::filesystem::perms::owner_all);
  environment_.front() = "PATH=" + PathOf("bin").string() + ":/usr/bin:/bin";
  environment_.push_back(std::string("REAL_GIT=") + kRealGit);
}

}  // namespace tool_test
