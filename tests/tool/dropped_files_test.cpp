// Files that a change of the project file moves out of sight: none of their changes may be hidden.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using Paths = std::vector<std::string>;

constexpr char kBroken[] = "<metalib name=\"m\" version=\"1\">\n";

class DroppedFilesTest : public ProjectTest {
 protected:
  void SelectOnly(const std::string& keys) const { Write("korvelcheck.toml", "[schemas]\n" + keys + "\n"); }

  Outcome AllowNew(const Paths& paths) const { return Against(Joined({"--format", "json", "--allow-new"}, paths)); }
  json ReportOf(const Paths& paths = {}) const { return json::parse(AllowNew(paths).out); }
  std::vector<std::string> TablesOf(const Paths& paths) const { return Tables(AllowNew(paths)); }
};

// --- Calls with PATHs, as hooks and pipelines make them ---

// Regression: with PATHs, only the new patterns selected files of the baseline, so a file that moved with its pattern was new.
TEST_F(DroppedFilesTest, PathsOfMovedDirectoryAreCompared) {
  fs::rename(PathOf("schemas"), PathOf("tables"));
  SelectOnly("paths = [\"tables/**/*.xml\"]");
  for (const Paths& paths : {Paths{}, {"tables"}, {"."}, {"tables/users.xml"}}) {
    SCOPED_TRACE(testing::PrintToString(paths));
    EXPECT_EQ(AllowNew(paths).exit_code, 0);
    EXPECT_EQ(ReportOf(paths)["verdict"], "allowed");
  }
  Write("tables/users.xml", Schema("users", "uint32"));
  for (const Paths& paths : {Paths{}, {"tables"}, {"."}, {"tables/users.xml"}}) {
    SCOPED_TRACE(testing::PrintToString(paths));
    EXPECT_EQ(AllowNew(paths).exit_code, 1);
    EXPECT_THAT(TablesOf(paths), Contains("tables/users.xml: users refused"));
  }
}

// Regression: the file was new, although the call names the directory in which it was, too.
TEST_F(DroppedFilesTest, PathOfSubdirectoryThatMovedIsCompared) {
  SelectOnly("paths = [\"schemas/*.xml\", \"schemas/deep/*.xml\"]");
  Commit("second");
  fs::rename(PathOf("schemas/deep"), PathOf("schemas/items"));
  Write("schemas/items/items.xml", Schema("items", "uint32"));
  SelectOnly("paths = [\"schemas/*.xml\", \"schemas/items/*.xml\"]");
  for (const Paths& paths : {Paths{}, {"schemas"}, {"schemas/items"}, {"schemas/items/items.xml"}}) {
    SCOPED_TRACE(testing::PrintToString(paths));
    EXPECT_EQ(AllowNew(paths).exit_code, 1);
    EXPECT_THAT(TablesOf(paths), Contains("schemas/items/items.xml: items refused"));
  }
}

// Regression: with PATHs, the verdict was "unchanged".
TEST_F(DroppedFilesTest, FileDeletedWithItsPatternIsRefused) {
  SelectOnly("paths = [\"schemas/*.xml\", \"schemas/deep/*.xml\"]");
  Commit("second");
  fs::remove_all(PathOf("schemas/deep"));
  SelectOnly("paths = [\"schemas/*.xml\"]");
  for (const Paths& paths : {Paths{}, {"schemas"}, {"."}, {"schemas/deep"}}) {
    SCOPED_TRACE(testing::PrintToString(paths));
    EXPECT_EQ(AllowNew(paths).exit_code, 1);
    EXPECT_THAT(TablesOf(paths), Contains("git:HEAD:schemas/deep/items.xml: items refused removed"));
  }
  EXPECT_EQ(AllowNew({"schemas/users.xml"}).exit_code, 0);
}

// Regression: with PATHs, the exit code was 0.
TEST_F(DroppedFilesTest, PathsNameFilesThatAreNoLongerChecked) {
  for (const char* keys : {"paths = [\"schemas/*.xml\"]", "paths = [\"schemas/**/*.xml\"]\nexclude = [\"**/items.xml\"]"}) {
    SelectOnly(keys);
    for (const Paths& paths : {Paths{}, {"schemas"}, {"."}, {"schemas/deep"}, {"schemas/users.xml", "schemas/deep"}}) {
      SCOPED_TRACE(keys + testing::PrintToString(paths));
      EXPECT_NE(AllowNew(paths).exit_code, 0);
      json report = ReportOf(paths);
      EXPECT_EQ(report["verdict"], "incomplete");
      ASSERT_EQ(report["project"].size(), 1U);
      EXPECT_EQ(report["project"][0]["rule"], "project.no-longer-checked");
      EXPECT_THAT(report["project"][0]["text"], testing::StartsWith("schemas/deep/items.xml is no longer checked: "));
    }
    EXPECT_EQ(AllowNew({"schemas/users.xml"}).exit_code, 0);
  }
}

// The first project file drops nothing: nothing was selected before.
TEST_F(DroppedFilesTest, FirstProjectFileDropsNothing) {
  fs::remove(PathOf("korvelcheck.toml"));
  Commit("second");
  SelectOnly("paths = [\"schemas/*.xml\"]");
  EXPECT_EQ(AllowNew({"schemas"}).exit_code, 0);
  EXPECT_EQ(AllowNew({}).exit_code, 0);
}

// Regression: the tables of the file were removed, although the report of the whole project shows where it is.
TEST_F(DroppedFilesTest, OldPathOfMovedFileIsComparedWithItsNewPlace) {
  fs::rename(PathOf("schemas/deep"), PathOf("schemas/items"));
  for (const Paths& paths : {Paths{"schemas/deep"}, {"schemas/deep/items.xml"}}) {
    EXPECT_EQ(AllowNew(paths).exit_code, 0);
    EXPECT_THAT(TablesOf(paths), ElementsAre("schemas/items/items.xml: items allowed"));
    json files = ReportOf(paths)["files"];
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0]["kind"], "moved");
    EXPECT_EQ(files[0]["new_file"], "schemas/items/items.xml");
  }
  Write("schemas/items/items.xml", Schema("items", "uint32"));
  EXPECT_THAT(TablesOf({"schemas/deep"}), ElementsAre("schemas/items/items.xml: items refused"));
  Write("schemas/items/items.xml", Schema("other"));
  EXPECT_THAT(TablesOf({"schemas/deep"}), ElementsAre("git:HEAD:schemas/deep/items.xml: items refused removed"));
}

// --- Faults in the baseline ---

// Regression: a file that was broken in the baseline could be dropped without a finding.
TEST_F(DroppedFilesTest, RepairedFileIsNotDroppedSilently) {
  SelectOnly("paths = [\"schemas/*.xml\", \"schemas/deep/*.xml\"]");
  Write("schemas/deep/items.xml", kBroken);
  Commit("second");
  SelectOnly("paths = [\"schemas/*.xml\"]");
  Write("schemas/deep/items.xml", Schema("items"));
  for (const Paths& paths : {Paths{}, {"schemas"}}) {
    EXPECT_NE(AllowNew(paths).exit_code, 0);
    EXPECT_EQ(ReportOf(paths)["verdict"], "incomplete");
    ASSERT_EQ(ReportOf(paths)["project"].size(), 1U);
  }
  fs::remove_all(PathOf("schemas/deep"));
  for (const Paths& paths : {Paths{}, {"schemas"}}) {
    EXPECT_EQ(AllowNew(paths).exit_code, 2);
    EXPECT_EQ(ReportOf(paths)["faults"][0]["location"]["file"], "git:HEAD:schemas/deep/items.xml");
  }
}

}  // namespace
}  // namespace tool_test
