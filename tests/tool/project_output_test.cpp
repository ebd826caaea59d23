// Outputs and logs never replace or change a project file.
#include <gmock/gmock.h>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class ProjectOutputTest : public ProjectTest {
 protected:
  ProjectOutputTest() { Write("schemas/deep/korvelcheck.toml", kNested); }

  // Runs a call that must end with an error about a file, which keeps its content.
  void ExpectKept(const std::vector<std::string>& call, const std::string& file, const std::string& error) const {
    const std::string before = Read(file);
    const Outcome outcome = Run(call);
    EXPECT_EQ(outcome.exit_code, 2) << call.front();
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr(error)) << call.front();
    EXPECT_EQ(Read(file), before) << call.front();
  }

  static constexpr char kNested[] = "# items\n";
};

// Calls with several options for outputs, which name a file in the end.
const std::vector<std::vector<std::string>> kCalls = {
    {"check", "--against", "git:HEAD", "-o"},
    {"check", "--against", "git:HEAD", "--report", "json"},
    {"check", "git:HEAD:schemas/deep/items.xml", "schemas/deep/items.xml", "-o"},
    {"check", "git:HEAD:schemas/deep/items.xml", "schemas/deep/items.xml", "--report", "json"},
    {"compat", "schemas/users.xml", "schemas/users.xml", "-o"},
    {"values", "schemas/users.xml", "schemas/users.xml", "-o"},
    {"lint", "-o"},
    {"lint", "schemas/deep/items.xml", "--report", "json"},
    {"diff", "--against", "git:HEAD", "-o"},
    {"diff", "schemas/users.xml", "schemas/users.xml", "-o"},
    {"layout", "-o"},
    {"layout", "schemas/users.xml", "-o"},
    {"layout", "--against", "git:HEAD", "-o"},
    {"history", "--git", "--report", "json"},
    {"suggest", "--against", "git:HEAD", "-o"},
    {"suggest", "schemas/users.xml", "schemas/users.xml", "--file", "-o"},
    {"waivers", "--against", "git:HEAD", "-o"},
    {"compile", "schemas/users.xml", "-o"},
    {"dump", "schemas/users.xml", "-o"},
    {"rules", "-o"},
    {"explain", "primary-key.size", "-o"},
    {"man", "-o"},
    {"completion", "bash", "-o"},
    {"help", "-o"},
};

std::vector<std::string> WithFile(std::vector<std::string> call, const std::string& file) {
  call.back() == "json" ? static_cast<void>(call.back() += "=" + file) : call.push_back(file);
  return call;
}

TEST_F(ProjectOutputTest, KeepsTheProjectFileOfTheCall) {
  for (const std::vector<std::string>& call : kCalls) {
    ExpectKept(WithFile(call, "korvelcheck.toml"), "korvelcheck.toml", "korvelcheck.toml would replace ");
  }
}

// Only the project file of the call was protected.
TEST_F(ProjectOutputTest, KeepsNestedProjectFiles) {
  const std::string nested = "schemas/deep/korvelcheck.toml";
  for (const std::vector<std::string>& call : kCalls) {
    ExpectKept(WithFile(call, nested), nested, " " + nested + " would replace a project file\n");
  }
  std::filesystem::create_symlink(nested, PathOf("report"));
  ExpectKept({"lint", "-o", "report"}, nested, "-o report would replace a project file\n");
  // Also if the call fails before it knows what it reads.
  EXPECT_EQ(Run({"check", "--against", "git:nothing", "-o", "report"}).exit_code, 2);
  EXPECT_EQ(Run({"check", "--wrong", "-o", nested}).exit_code, 2);
  EXPECT_EQ(Read(nested), kNested);
}

TEST_F(ProjectOutputTest, LogsDoNotChangeProjectFiles) {
  for (const std::string file : {"korvelcheck.toml", "schemas/deep/korvelcheck.toml"}) {
    ExpectKept({"check", "--against", "git:HEAD", "--log", file}, file, "--log " + file + " would change ");
    ExpectKept({"lint", "--log", file}, file, "--log " + file + " would change ");
  }
}

// The name of the target says nothing.
TEST_F(ProjectOutputTest, KeepsTargetsOfLinksThatAreProjectFiles) {
  std::filesystem::rename(PathOf("schemas/deep/korvelcheck.toml"), PathOf("items.toml"));
  std::filesystem::create_symlink("../../items.toml", PathOf("schemas/deep/korvelcheck.toml"));
  for (const std::vector<std::string>& call : {std::vector<std::string>{"check", "--against", "git:HEAD"},
                                               {"check", "git:HEAD:schemas/deep/items.xml", "schemas/deep/items.xml"},
                                               {"diff", "--against", "git:HEAD"},
                                               {"suggest", "--against", "git:HEAD"},
                                               {"layout"},
                                               {"lint", "schemas/deep/items.xml"}}) {
    ExpectKept(Joined(call, {"--follow-symlinks", "-o", "items.toml"}), "items.toml", "-o items.toml would replace an input\n");
  }
}

}  // namespace
}  // namespace tool_test
