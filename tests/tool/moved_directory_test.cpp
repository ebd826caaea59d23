// Files that moved together are one line of a text report.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

class MovedDirectoryTest : public ProjectTest {
 protected:
  // The lines about moved files.
  static std::vector<std::string> Moves(const Outcome& outcome) {
    EXPECT_EQ(outcome.exit_code, 0) << outcome.out << outcome.err;
    std::vector<std::string> lines;
    for (std::size_t at = outcome.out.find("moved: "); at != std::string::npos; at = outcome.out.find("\nmoved: ", at)) {
      if (outcome.out[at] == '\n') ++at;
      lines.push_back(outcome.out.substr(at, outcome.out.find('\n', at) - at));
    }
    return lines;
  }
};

TEST_F(MovedDirectoryTest, IsOneLine) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"**/*.xml\"]\n");
  Commit("all files");
  std::filesystem::create_directory(PathOf("db"));
  std::filesystem::rename(PathOf("schemas"), PathOf("db/schemas"));
  EXPECT_THAT(Moves(Against()), testing::ElementsAre("moved: git:HEAD:./ -> db/ (3 files)"));
  EXPECT_THAT(Against().out, HasSubstr("files: 0 added, 0 deleted, 3 moved"));
}

TEST_F(MovedDirectoryTest, ContentMayChangeAndOtherFilesAreLinesOfTheirOwn) {
  Write("korvelcheck.toml", "[schemas]\npaths = [\"**/*.xml\"]\n");
  Write("schemas/carts.xml", Schema("carts"));
  Commit("all files");
  std::filesystem::create_directory(PathOf("schemas/shop"));
  for (const char* file : {"orders.xml", "users.xml"}) {
    std::filesystem::rename(PathOf(std::string("schemas/") + file), PathOf(std::string("schemas/shop/") + file));
  }
  std::filesystem::rename(PathOf("schemas/carts.xml"), PathOf("schemas/basket.xml"));
  std::filesystem::rename(PathOf("schemas/deep/items.xml"), PathOf("items.xml"));
  EXPECT_THAT(Moves(Against()), testing::UnorderedElementsAre("moved: git:HEAD:schemas/ -> schemas/shop/ (2 files)",
                                                              "moved: git:HEAD:schemas/carts.xml -> schemas/basket.xml",
                                                              "moved: git:HEAD:schemas/deep/items.xml -> items.xml"));
}

TEST_F(MovedDirectoryTest, VerboseAndOtherFormatsListEachFile) {
  std::filesystem::rename(PathOf("schemas"), PathOf("tables"));
  Write("korvelcheck.toml", "[schemas]\npaths = [\"tables/**/*.xml\"]\n");
  EXPECT_THAT(Moves(Against()), testing::ElementsAre("moved: git:HEAD:schemas/ -> tables/ (3 files)"));
  EXPECT_THAT(Moves(Against({"-v"})), testing::SizeIs(3));
  EXPECT_EQ(nlohmann::json::parse(Against({"--format", "json"}).out)["files"].size(), 3);
  EXPECT_EQ(Against({"-q"}).out, "verdict: allowed\n");
}

// A directory may have any name.
TEST_F(MovedDirectoryTest, NamesDoNotBreakLines) {
  std::filesystem::rename(PathOf("schemas"), PathOf("a\nb"));
  Write("korvelcheck.toml", "[schemas]\npaths = [\"a*/**/*.xml\"]\n");
  EXPECT_THAT(Moves(Against()), testing::ElementsAre("moved: git:HEAD:schemas/ -> a\\nb/ (3 files)"));
}

}  // namespace
}  // namespace tool_test
