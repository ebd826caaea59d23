// lint of directories and of the files of a project.
#include <gmock/gmock.h>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class LintProjectTest : public ProjectTest {
 protected:
  std::vector<std::string> Linted(const std::vector<std::string>& paths, const std::string& directory = "") const {
    std::vector<std::string> call = {"lint", "--format", "json"};
    call.insert(call.end(), paths.begin(), paths.end());
    return Tables(Run(call, directory));
  }
};

TEST_F(LintProjectTest, WithoutFilesTheProjectIsChecked) {
  const auto all = ElementsAre("schemas/deep/items.xml: items allowed", "schemas/orders.xml: orders allowed",
                               "schemas/users.xml: users allowed");
  EXPECT_THAT(Linted({}), all);
  EXPECT_THAT(Linted({}, "schemas"),
              ElementsAre("deep/items.xml: items allowed", "orders.xml: orders allowed", "users.xml: users allowed"));
  Write("schemas/draft.xml", "<metalib>");
  const Outcome outcome = Run({"lint"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.out, HasSubstr("verdict: incomplete (1 file was not checked)\n"));
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\nexclude = ['schemas/draft.xml']\n");
  EXPECT_THAT(Linted({}), all);
}

TEST_F(LintProjectTest, WorksWithoutARepository) {
  std::filesystem::remove_all(PathOf(".git"));
  environment_.front() = "PATH=/nonexistent";
  EXPECT_THAT(Linted({}), testing::SizeIs(3));
  EXPECT_THAT(Linted({"schemas/deep"}), ElementsAre("schemas/deep/items.xml: items allowed"));
}

TEST_F(LintProjectTest, DirectoriesAreSearched) {
  Write("schemas/deep/b.txt", "no schema");
  Write("named.txt", Schema("named"));
  EXPECT_THAT(Linted({"named.txt", "schemas/deep"}),
              ElementsAre("named.txt: named allowed", "schemas/deep/items.xml: items allowed"));
  // Each file once.
  EXPECT_THAT(Linted({"schemas/users.xml", "schemas", "schemas/deep"}),
              ElementsAre("schemas/users.xml: users allowed", "schemas/deep/items.xml: items allowed",
                          "schemas/orders.xml: orders allowed"));
  EXPECT_THAT(Linted({".", "--no-project"}, "schemas/deep"), ElementsAre("items.xml: items allowed"));
}

TEST_F(LintProjectTest, NothingToCheckIsAnError) {
  std::filesystem::create_directory(PathOf("empty"));
  ExpectRefused({"lint", "empty"}, "korvelcheck: empty: no schema file\n");
  ExpectRefused(
      {"lint", "--no-project"},
      "korvelcheck: no schema files are selected; allowed: files and directories as arguments, or 'paths' in [schemas] of "
      "korvelcheck.toml\n");
  Write("korvelcheck.toml", "[schemas]\npaths = ['none/*.xml']\n");
  ExpectRefused({"lint"}, "korvelcheck.toml:2:10: error: 'none/*.xml' matches no file; allowed: patterns that match a file\n");
}

// The message said only that there is no schema file.
TEST_F(LintProjectTest, RepositoriesInsideAreNamed) {
  std::filesystem::create_directories(PathOf("vendor/lib/deep"));
  GitIn("vendor/lib", {"init", "-q"});
  Write("vendor/lib/deep/a.xml", Schema("a"));
  const std::string repository = "the repository in vendor/lib, such as a submodule; run the command there, or name its files";
  for (const std::string command : {"lint", "layout"}) {
    ExpectRefused({command, "vendor/lib"}, "korvelcheck: vendor/lib: belongs to " + repository + "\n");
    ExpectRefused({command, "vendor/lib/deep"}, "korvelcheck: vendor/lib/deep: belongs to " + repository + "\n");
    ExpectRefused({command, "vendor"}, "korvelcheck: vendor: no schema file outside " + repository + "\n");
  }
  EXPECT_THAT(Linted({"vendor/lib/deep/a.xml"}), ElementsAre("vendor/lib/deep/a.xml: a allowed"));
  EXPECT_THAT(Linted({"deep"}, "vendor/lib"), ElementsAre("deep/a.xml: a allowed"));
  Write("korvelcheck.toml", "[schemas]\npaths = ['vendor/**/*.xml']\n");
  ExpectRefused({"lint"}, "korvelcheck.toml:2:10: error: 'vendor/**/*.xml' matches no file outside " + repository +
                              "; allowed: patterns that match a file\n");
}

// Who adds a file to a project must not make the program read files elsewhere.
TEST_F(LintProjectTest, FoundLinksAreNotFollowed) {
  std::filesystem::create_symlink("users.xml", PathOf("schemas/link.xml"));
  for (const std::vector<std::string>& call : {std::vector<std::string>{"lint"}, {"lint", "schemas"}}) {
    const Outcome outcome = Run(call);
    EXPECT_EQ(outcome.exit_code, 2);
    EXPECT_THAT(outcome.err, HasSubstr("korvelcheck: schemas/link.xml: is a symbolic link; allowed: "));
  }
  EXPECT_EQ(Run({"lint", "schemas/link.xml"}).exit_code, 0);
  EXPECT_EQ(Run({"lint", "schemas", "--follow-symlinks"}).exit_code, 0);
}

TEST_F(LintProjectTest, ReportsTablesThatTwoFilesDeclare) {
  Write("schemas/copy.xml", Schema("users"));
  const Outcome outcome = Run({"lint"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out,
              HasSubstr("\nschemas/users.xml:2:1: warning [project.repeated-table] table 'users' is also declared at "
                        "schemas/copy.xml:2:1\n"));
  EXPECT_THAT(outcome.out, HasSubstr(" 0 removed; 1 warning\n")) << "it was not counted";
  EXPECT_THAT(Run({"lint", "--fail-on", "warning"}).out, HasSubstr(" 0 removed; 1 error\n"));
  EXPECT_THAT(Run({"lint", "--format", "json"}).out, HasSubstr("\"rule\": \"project.repeated-table\""));
  EXPECT_EQ(Run({"lint"}).exit_code, 0);
  EXPECT_EQ(Run({"lint", "--fail-on", "warning"}).exit_code, 1);
  // Files that are named may be versions of each other.
  EXPECT_THAT(Run({"lint", "schemas"}).out, Not(HasSubstr("repeated-table")));
}

TEST_F(LintProjectTest, FilesOfOtherProjectFilesMayDeclareTheSameTable) {
  Write("schemas/deep/korvelcheck.toml", "");
  Write("schemas/deep/copy.xml", Schema("users"));
  EXPECT_THAT(Run({"lint"}).out, Not(HasSubstr("repeated-table")));
}

TEST_F(LintProjectTest, ReportsAreNotWrittenOverFoundFiles) {
  const std::string before = Read("schemas/users.xml");
  for (const std::vector<std::string>& call : {std::vector<std::string>{"lint"}, {"lint", "schemas"}}) {
    std::vector<std::string> words = call;
    words.insert(words.end(), {"-o", "schemas/users.xml"});
    ExpectRefused(words, "korvelcheck: -o schemas/users.xml would replace an input\n");
  }
  EXPECT_EQ(Read("schemas/users.xml"), before);
}

}  // namespace
}  // namespace tool_test
