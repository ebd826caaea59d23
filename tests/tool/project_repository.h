// A git repository with a project of three schema files.
#pragma once

#include <string>
#include <vector>

#include "git_repository.h"

namespace tool_test {

class ProjectTest : public GitTest {
 protected:
  ProjectTest();

  // A library with one table of the same name.
  static std::string Schema(const std::string& name, const std::string& key_type = "uint64");

  // Runs "check --against git:HEAD" with more arguments, in a subdirectory.
  Outcome Against(const std::vector<std::string>& more = {}, const std::string& directory = "") const;

  // "FILE: table status" of each table of a JSON report, in its order.
  static std::vector<std::string> Tables(const Outcome& outcome);
};

}  // namespace tool_test
