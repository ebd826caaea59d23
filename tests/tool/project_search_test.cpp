// Where the project file of a call is looked for: directory by directory, up to the top of the repository.
#include "project/project_search.h"

#include <gtest/gtest.h>

#include <map>

#include "tool_test.h"

namespace tool_test {
namespace {

using korvel::DirectoryFacts;
using korvel::SearchProjectFile;

// "PATH" or "PATH on another file system"; "" for nothing.
std::string Search(const std::string& directory, const std::map<std::string, DirectoryFacts>& facts) {
  const auto found = SearchProjectFile(directory, [&](const std::filesystem::path& one) {
    const auto known = facts.find(one.string());
    return known == facts.end() ? DirectoryFacts{.device = 1} : known->second;
  });
  if (!found) return "";
  return found->path + (found->is_on_other_file_system ? " on another file system" : "");
}

constexpr DirectoryFacts kProject{.device = 1, .has_project_file = true};
constexpr DirectoryFacts kTop{.device = 1, .is_repository_top = true};
constexpr DirectoryFacts kOtherDevice{.device = 2};
constexpr DirectoryFacts kProjectElsewhere{.device = 2, .has_project_file = true};

TEST(ProjectSearch, FindsTheNearestFile) {
  EXPECT_EQ(Search("/a/b", {}), "");
  EXPECT_EQ(Search("/a/b", {{"/a/b", kProject}, {"/a", kProject}}), "korvelcheck.toml");
  EXPECT_EQ(Search("/a/b", {{"/a", kProject}}), "../korvelcheck.toml");
  EXPECT_EQ(Search("/a/b", {{"/", kProject}}), "../../korvelcheck.toml");
  EXPECT_EQ(Search("/", {{"/", kProject}}), "korvelcheck.toml");
}

TEST(ProjectSearch, EndsAtTheTopOfTheRepository) {
  EXPECT_EQ(Search("/a/b", {{"/a/b", kTop}, {"/a", kProject}}), "");
  EXPECT_EQ(Search("/a/b", {{"/a", kTop}, {"/", kProject}}), "");
  DirectoryFacts both = kTop;
  both.has_project_file = true;
  EXPECT_EQ(Search("/a/b", {{"/a", both}}), "../korvelcheck.toml");
}

TEST(ProjectSearch, SaysWhenItLeftTheFileSystem) {
  EXPECT_EQ(Search("/a/b", {{"/a", kOtherDevice}}), "");
  EXPECT_EQ(Search("/a/b", {{"/a", kProjectElsewhere}}), "../korvelcheck.toml on another file system");
  EXPECT_EQ(Search("/a/b", {{"/a/b", kProjectElsewhere}}), "korvelcheck.toml");
  // A directory above may be on the first file system again.
  EXPECT_EQ(Search("/a/b", {{"/a", kOtherDevice}, {"/", kProject}}), "../../korvelcheck.toml on another file system");
}

TEST(ProjectSearch, SeesTheDisk) {
  const DirectoryFacts root = korvel::InspectOnDisk("/");
  EXPECT_FALSE(root.has_project_file);
  const DirectoryFacts processes = korvel::InspectOnDisk("/proc");
  EXPECT_NE(root.device, processes.device);
}

class ProjectSearchTest : public ToolTest {};

TEST_F(ProjectSearchTest, FileOnAnotherFileSystemIsAnError) {
  const std::string script = "mount -t tmpfs none sub && cp old.xml same.xml sub && cd sub && exec \"$0\" \"$@\"";
  const auto run = [&](const std::vector<std::string>& arguments) {
    return Korvelcheck(Call{.arguments = arguments, .launcher = {"/usr/bin/unshare", "-rm", "/bin/sh", "-c", script}});
  };
  std::filesystem::create_directory(PathOf("sub"));
  if (run({"--version"}).exit_code != 0) GTEST_SKIP() << "no file system can be mounted here";
  const std::vector<std::string> check = {"check", "old.xml", "same.xml"};
  EXPECT_EQ(run(check).exit_code, 0);
  Write("korvelcheck.toml", "");
  const Outcome outcome = run(check);
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(
      outcome.err,
      "korvelcheck: ../korvelcheck.toml: is on another file system than the working directory; allowed: a project file that "
      "--project names, or --no-project\n");
  EXPECT_EQ(run(Joined(check, {"--project", "../korvelcheck.toml"})).exit_code, 0);
  EXPECT_EQ(run(Joined(check, {"--no-project"})).exit_code, 0);
}

}  // namespace
}  // namespace tool_test
