// diff of the schema files of a project.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class DiffProjectTest : public ProjectTest {
 protected:
  // users.xml changes, items.xml gets a comment, orders.xml stays.
  DiffProjectTest() {
    Write("schemas/users.xml", Schema("users", "uint32"));
    Write("schemas/deep/items.xml", Schema("items") + "<!-- a comment -->\n");
  }

  // The outcome with the exit code 0 and an empty standard error.
  std::string Diff(const std::vector<std::string>& more, const std::string& directory = "") const {
    std::vector<std::string> call = {"diff"};
    call.insert(call.end(), more.begin(), more.end());
    const Outcome outcome = Run(call, directory);
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
};

TEST_F(DiffProjectTest, ListsChangedFiles) {
  const std::string users = Diff({"git:HEAD:schemas/users.xml", "schemas/users.xml"});
  EXPECT_EQ(Diff({"--against", "git:HEAD"}),
            "project file: korvelcheck.toml (3 files)\n"
            "git:HEAD:schemas/users.xml -> schemas/users.xml:\n" +
                users + "1 file changed, 0 added, 0 deleted; 1 table changed, 0 new, 0 removed\n");
  EXPECT_THAT(users, HasSubstr("type of uid: uint64 -> uint32"));
}

TEST_F(DiffProjectTest, TheProjectFileNamesTheBaseline) {
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\nagainst = 'git:HEAD'\n");
  EXPECT_EQ(Diff({}), Diff({"--against", "git:HEAD"}));
  EXPECT_THAT(Diff({"users.xml"}, "schemas"), HasSubstr("git:HEAD:schemas/users.xml -> users.xml:\n"));
  EXPECT_THAT(Diff({"schemas/orders.xml"}),
              testing::EndsWith("\n0 files changed, 0 added, 0 deleted; 0 tables changed, 0 new, 0 removed\n"));
  ExpectRefused({"diff", "--no-project"},
                "korvelcheck: diff: OLD and NEW are required, or --against\nTry 'korvelcheck diff --help'.\n");
}

TEST_F(DiffProjectTest, ListsAddedDeletedAndMovedFiles) {
  std::filesystem::remove(PathOf("schemas/orders.xml"));
  std::filesystem::rename(PathOf("schemas/users.xml"), PathOf("schemas/people.xml"));
  Write("schemas/carts.xml", Schema("carts"));
  const std::string text = Diff({"--against", "git:HEAD"});
  EXPECT_THAT(text, HasSubstr("\ndeleted: git:HEAD:schemas/orders.xml\n"));
  EXPECT_THAT(text, HasSubstr("\nadded: schemas/carts.xml (nothing to compare it with)\n"));
  EXPECT_THAT(text, HasSubstr("\ngit:HEAD:schemas/users.xml -> schemas/people.xml:\n"));
  EXPECT_THAT(text, HasSubstr("\nschemas/carts.xml: added\nschemas/carts.xml:2:1: table carts: new\n"));
  EXPECT_THAT(text,
              HasSubstr("\ngit:HEAD:schemas/orders.xml: deleted\ngit:HEAD:schemas/orders.xml:2:1: table orders: removed\n"));
  EXPECT_THAT(text, testing::EndsWith("\n1 file changed, 1 added, 1 deleted; 1 table changed, 1 new, 1 removed\n"));
}

TEST_F(DiffProjectTest, ListsNewAndRemovedTables) {
  Write("schemas/users.xml",
        "<metalib name=\"users\" version=\"5\" protocol=\"QMX\">\n" + Table({.name = "people"}) + "\n</metalib>\n");
  const std::string text = Diff({"--against", "git:HEAD"});
  EXPECT_THAT(text, HasSubstr("git:HEAD:schemas/users.xml:2:1: table users: removed\n"));
  EXPECT_THAT(text, HasSubstr("schemas/users.xml:2:1: table people: new\n"));
}

// Files with only new tables were left out.
TEST_F(DiffProjectTest, ListsRequestedNewTables) {
  Write("schemas/users.xml", "<metalib name=\"users\" version=\"5\" protocol=\"QMX\">\n" + Table({.name = "users"}) + "\n" +
                                 Table({.name = "people"}) + "\n</metalib>\n");
  const std::string text = Diff({"--against", "git:HEAD", "--table", "people"});
  EXPECT_THAT(text, HasSubstr("\ngit:HEAD:schemas/users.xml -> schemas/users.xml:\nschemas/users.xml:3:1: table people: new\n"));
  EXPECT_THAT(text, testing::EndsWith("\n1 file changed, 0 added, 0 deleted; 0 tables changed, 1 new, 0 removed\n"));
  EXPECT_THAT(Diff({"--against", "git:HEAD", "--table", "orders"}), testing::EndsWith("\n0 files changed, 0 added, 0 deleted; 0 "
                                                                                      "tables changed, 0 new, 0 removed\n"));
}

TEST_F(DiffProjectTest, ListsFilesWithOnlyNewTables) {
  const std::string item = "<meta name=\"item\">\n<entry name=\"sku\" type=\"uint32\"/>\n</meta>\n";
  const auto types = [&](const std::string& more) {
    Write("schemas/types.xml", "<metalib name=\"types\" version=\"5\" protocol=\"QMX\">\n" + item + more + "</metalib>\n");
  };
  types("");
  Commit("types");
  types(Table({.name = "parts"}) + "\n");
  EXPECT_THAT(Diff({"--against", "git:HEAD"}),
              HasSubstr("\ngit:HEAD:schemas/types.xml -> schemas/types.xml:\nschemas/types.xml:5:1: table parts: new\n"));
}

TEST_F(DiffProjectTest, ListsTheChangesSinceEachBaseline) {
  const std::string since_first = Diff({"--against", "git:HEAD"});
  Commit("second");
  Git({"tag", "second"});
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  const std::string text = Diff({"--against", "git:HEAD~1", "--against", "git:second"});
  EXPECT_THAT(text, testing::StartsWith("baseline: git:HEAD~1\nbaseline: git:second\n"));
  EXPECT_THAT(text, HasSubstr("\nsince git:HEAD~1: 2 files changed, 0 added, 0 deleted; 2 tables changed, 0 new, 0 removed\n"
                              "git:second:schemas/orders.xml -> schemas/orders.xml:\n"));
  EXPECT_THAT(text,
              testing::EndsWith("\nsince git:second: 1 file changed, 0 added, 0 deleted; 1 table changed, 0 new, 0 removed\n"));
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\nagainst = ['git:HEAD~1', 'git:second']\n");
  EXPECT_EQ(Diff({}), text);
  const auto json = nlohmann::json::parse(Diff({"--format", "json"}));
  ASSERT_EQ(json["diffs"].size(), 3u);
  EXPECT_EQ(json["diffs"][0]["baseline"], "git:HEAD~1");
  EXPECT_EQ(json["diffs"][2]["baseline"], "git:second");
}

TEST_F(DiffProjectTest, JsonListsTablesOfAddedAndDeletedFiles) {
  std::filesystem::remove(PathOf("schemas/orders.xml"));
  Write("schemas/carts.xml", Schema("carts"));
  const auto json = nlohmann::json::parse(Diff({"--against", "git:HEAD", "--format", "json"}));
  ASSERT_EQ(json["diffs"].size(), 3u);
  EXPECT_EQ(json["diffs"][0]["inputs"].dump(), R"([{"file":"schemas/carts.xml","role":"new"}])");
  EXPECT_EQ(json["diffs"][0]["tables"][0]["status"], "new");
  EXPECT_EQ(json["diffs"][1]["inputs"].dump(), R"([{"file":"git:HEAD:schemas/orders.xml","role":"old"}])");
  EXPECT_EQ(json["diffs"][1]["tables"][0]["status"], "removed");
}

TEST_F(DiffProjectTest, PrintsJson) {
  const auto json = nlohmann::json::parse(Diff({"--against", "git:HEAD", "--format", "json"}));
  EXPECT_EQ(json["command"], "diff");
  EXPECT_EQ(json["baselines"][0]["name"], "git:HEAD");
  EXPECT_EQ(json["files"].size(), 0u);
  ASSERT_EQ(json["diffs"].size(), 1u);
  const auto pair = nlohmann::json::parse(Diff({"git:HEAD:schemas/users.xml", "schemas/users.xml", "--format", "json"}));
  for (const char* member : {"inputs", "library", "tables", "structures", "summary"}) {
    EXPECT_EQ(json["diffs"][0][member], pair[member]) << member;
  }
}

// A list that lacks files would look complete.
TEST_F(DiffProjectTest, IncompleteListsAreRefused) {
  Write("schemas/users.xml", "<metalib>");
  EXPECT_EQ(Run({"diff", "--against", "git:HEAD"}).exit_code, 2);
  Write("schemas/users.xml", Schema("users"));
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/*.xml']\n");
  ExpectRefused({"diff", "--against", "git:HEAD"},
                "korvelcheck: diff: the check is incomplete; 'korvelcheck check' with the same baseline says why\n");
}

// Two files need no project file, not even a valid one.
TEST_F(DiffProjectTest, TwoFilesAreComparedWithoutAProject) {
  Write("korvelcheck.toml", "[schemas\n");
  EXPECT_THAT(Diff({"schemas/orders.xml", "schemas/orders.xml"}), HasSubstr("table orders: no change\n"));
}

}  // namespace
}  // namespace tool_test
