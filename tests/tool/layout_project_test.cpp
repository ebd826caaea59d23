// layout of directories and of the files of a project.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using Json = nlohmann::json;

class LayoutProjectTest : public ProjectTest {
 protected:
  // The outcome with the exit code 0 and an empty standard error.
  std::string Layout(const std::vector<std::string>& more, const std::string& directory = "") const {
    const Outcome outcome = Run(Joined({"layout"}, more), directory);
    EXPECT_EQ(outcome.exit_code, 0);
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
};

TEST_F(LayoutProjectTest, ShowsEachFileOfTheProject) {
  const std::string all = "schemas/deep/items.xml:\n" + Layout({"schemas/deep/items.xml"}) + "\nschemas/orders.xml:\n" +
                          Layout({"schemas/orders.xml"}) + "\nschemas/users.xml:\n" + Layout({"schemas/users.xml"});
  EXPECT_EQ(Layout({}), all);
  EXPECT_EQ(Layout({"schemas"}), all);
  EXPECT_THAT(Layout({}, "schemas"), testing::StartsWith("deep/items.xml:\ntable items: "));
  EXPECT_EQ(Layout({"schemas/deep"}), "schemas/deep/items.xml:\n" + Layout({"schemas/deep/items.xml"}));
}

TEST_F(LayoutProjectTest, JsonHasOneObjectForEachFile) {
  const Json all = Json::parse(Layout({"--format", "json"}));
  EXPECT_EQ(all["command"], "layout");
  ASSERT_EQ(all["layouts"].size(), 3u);
  const Json one = Json::parse(Layout({"schemas/orders.xml", "--format", "json"}));
  for (const char* member : {"inputs", "tables"}) EXPECT_EQ(all["layouts"][1][member], one[member]) << member;
}

TEST_F(LayoutProjectTest, ShowsTheFilesWithARequestedTable) {
  EXPECT_EQ(Layout({"schemas", "--table", "users", "--table", "users"}),
            "schemas/users.xml:\n" + Layout({"schemas/users.xml", "--table", "users"}));
  ExpectRefused({"layout", "--table", "user"}, "korvelcheck: table 'user' is in no file (did you mean 'users'?)\n");
}

TEST_F(LayoutProjectTest, NamesFilesWithoutTables) {
  Write("schemas/types.xml",
        "<metalib name=\"types\" version=\"5\" protocol=\"QMX\">\n<meta name=\"item\">\n<entry name=\"sku\" "
        "type=\"uint32\"/>\n</meta>\n</metalib>\n");
  EXPECT_THAT(Layout({"schemas"}), HasSubstr("\n\nschemas/types.xml: no table\n\nschemas/users.xml:\n"));
}

TEST_F(LayoutProjectTest, ShowsChangedTablesSinceABaseline) {
  Write("schemas/users.xml", Schema("users", "uint32"));
  Write("schemas/deep/items.xml", Schema("items") + "<!-- a comment -->\n");
  Write("schemas/carts.xml", Schema("carts"));
  std::filesystem::remove(PathOf("schemas/orders.xml"));
  const std::string text = Layout({"--against", "git:HEAD"});
  EXPECT_THAT(text, testing::StartsWith("schemas/carts.xml:\ntable carts: new, 8 bytes per packed record; "));
  EXPECT_THAT(text, HasSubstr("\n\ngit:HEAD:schemas/orders.xml -> schemas/orders.xml:\ntable orders: removed, was 8 bytes"));
  EXPECT_THAT(text, testing::EndsWith("\n\ngit:HEAD:schemas/users.xml -> schemas/users.xml:\n" +
                                      Layout({"git:HEAD:schemas/users.xml", "schemas/users.xml"})));
  EXPECT_EQ(Json::parse(Layout({"--against", "git:HEAD", "--format", "json"}))["layouts"].size(), 3u);
  EXPECT_EQ(Layout({"--against", "git:HEAD", "schemas/users.xml"}), Layout({"--against", "git:HEAD", "--table", "users"}));
  ExpectOutcome(Run({"layout", "--against", "git:HEAD", "schemas/deep"}), 0, "", "korvelcheck: no table has changed\n");
}

// A part of the files would look like all of them.
TEST_F(LayoutProjectTest, ShowsNothingIfAFileHasAFault) {
  Write("schemas/orders.xml", "<metalib>");
  const Outcome outcome = Run({"layout"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("schemas/orders.xml:1:"));
}

TEST_F(LayoutProjectTest, NothingToShowIsAnError) {
  ExpectRefused({"layout", "--no-project"},
                "korvelcheck: no schema files are selected; allowed: files and directories as arguments, or 'paths' in [schemas] "
                "of korvelcheck.toml\n");
  ExpectRefused({"layout", "schemas/users.xml", "schemas/users.xml", "schemas/users.xml"},
                "korvelcheck: layout: unexpected argument 'schemas/users.xml'\nTry 'korvelcheck layout --help'.\n");
}

TEST_F(LayoutProjectTest, IsNotWrittenOverFoundFiles) {
  ExpectRefused({"layout", "-o", "schemas/users.xml"}, "korvelcheck: -o schemas/users.xml would replace an input\n");
  ExpectRefused({"layout", "schemas", "-o", "korvelcheck.toml"}, "korvelcheck: -o korvelcheck.toml would replace an input\n");
  EXPECT_EQ(Read("schemas/users.xml"), Schema("users"));
}

// Two files need no project file, not even a valid one.
TEST_F(LayoutProjectTest, NamedFilesNeedNoProject) {
  Write("korvelcheck.toml", "[schemas\n");
  EXPECT_THAT(Layout({"schemas/orders.xml"}), HasSubstr("table orders: "));
  EXPECT_EQ(Run({"layout", "schemas"}).exit_code, 2);
}

}  // namespace
}  // namespace tool_test
