// The last line of a report on refused changes: the call that fixes them.
#include <gmock/gmock.h>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

class FixCommandTest : public ProjectTest {
 protected:
  FixCommandTest() {
    Write("old.xml", Schema("orders"));
    Write("it's new.xml", Schema("orders", "uint32"));
  }

  // The call that the report names, or "".
  std::string FixOf(const std::vector<std::string>& arguments) const {
    const std::string out = Run(arguments).out;
    const std::string begin = "\nTo fix what is refused: ";
    const std::size_t found = out.find(begin);
    return found == std::string::npos ? "" : out.substr(found + begin.size());
  }
};

TEST_F(FixCommandTest, IsThatOfTheCall) {
  EXPECT_EQ(FixOf({"check", "old.xml", "it's new.xml"}), "korvelcheck suggest --write old.xml 'it'\\''s new.xml'\n");
  EXPECT_EQ(FixOf({"check", "old.xml", "it's new.xml", "--table", "orders", "--type", "generic"}),
            "korvelcheck suggest --write --table orders old.xml 'it'\\''s new.xml' (with the same settings)\n");
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  EXPECT_EQ(FixOf({"check", "--default-against", "git:HEAD", "schemas"}),
            "korvelcheck suggest --write --against git:HEAD schemas\n");
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\nagainst = 'git:HEAD'\n");
  EXPECT_EQ(FixOf({"check"}), "korvelcheck suggest --write\n");
  EXPECT_EQ(Run({"suggest", "--write"}).exit_code, 0);
  EXPECT_EQ(FixOf({"check"}), "");
}

TEST_F(FixCommandTest, NamesEachBaseline) {
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  std::filesystem::create_directories(PathOf("old dir/schemas"));
  Write("old dir/schemas/orders.xml", Schema("orders"));
  EXPECT_EQ(FixOf({"check", "--against", "git:HEAD", "--also-against", "old dir", "schemas"}),
            "korvelcheck suggest --write --against git:HEAD --against 'old dir' schemas\n");
  EXPECT_EQ(Run({"suggest", "--write", "--against", "git:HEAD", "--against", "old dir", "schemas"}).exit_code, 0);
}

TEST_F(FixCommandTest, IsLeftOutIfSuggestCannotWrite) {
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  Git({"branch", "other"});
  EXPECT_EQ(FixOf({"check", "schemas/orders.xml", "git:HEAD:schemas/orders.xml"}), "");
  EXPECT_EQ(FixOf({"check", "it's new.xml", "-"}), "");
  EXPECT_EQ(FixOf({"check", "old.xml", "it's new.xml", "-q"}), "");
  Git({"checkout", "--quiet", "schemas/orders.xml"});
  std::filesystem::remove(PathOf("schemas/users.xml"));
  EXPECT_THAT(Run({"check", "--against", "git:HEAD"}).out, HasSubstr("(removed)"));
  EXPECT_EQ(FixOf({"check", "--against", "git:HEAD"}), "");
}

// `suggest --write` refuses links, and then writes nothing.
TEST_F(FixCommandTest, IsLeftOutIfALinkIsRefused) {
  Write("schemas/orders.xml", Schema("orders", "uint32"));
  const std::vector<std::string> check = {"check", "--against", "git:HEAD", "--follow-symlinks"};
  EXPECT_EQ(FixOf(check), "korvelcheck suggest --write --against git:HEAD (with the same settings)\n");
  Write("users.txt", Schema("users", "uint32"));
  std::filesystem::remove(PathOf("schemas/users.xml"));
  std::filesystem::create_symlink("../users.txt", PathOf("schemas/users.xml"));
  EXPECT_THAT(Run(check).out, HasSubstr("table users: -3"));
  EXPECT_EQ(FixOf(check), "");
}

TEST_F(FixCommandTest, IsThatOfCheckOnly) {
  EXPECT_EQ(FixOf({"compat", "old.xml", "it's new.xml"}), "");
  EXPECT_THAT(Run({"compat", "old.xml", "it's new.xml"}).out, EndsWith("for the rule.\n"));
}

}  // namespace
}  // namespace tool_test
