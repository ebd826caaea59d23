// A directory of schema files that is a git repository.
#pragma once

#include <string>
#include <vector>

#include "tool_test.h"

namespace tool_test {

class GitTest : public ToolTest {
 protected:
  GitTest();

  // Runs git in the directory and returns its output. The test fails if git fails.
  std::string Git(const std::vector<std::string>& arguments) const { return GitIn("", arguments); }
  std::string GitIn(const std::string& directory, const std::vector<std::string>& arguments) const;
  // Commits all files. Returns the id of the commit.
  std::string Commit(const std::string& subject) const;
  // Runs the program with git's settings, in a subdirectory. Today is 2026-01-01.
  Outcome Run(const std::vector<std::string>& arguments, const std::string& directory = "") const;
  // The messages of the program for an input error.
  void ExpectRefused(const std::vector<std::string>& arguments, const std::string& err) const;
  // Puts a program named git before the real one: a shell script that finds the real one as $REAL_GIT.
  void ReplaceGit(const std::string& script);

  std::vector<std::string> environment_;
};

}  // namespace tool_test
