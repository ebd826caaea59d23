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

// Regression: a file that left the given paths was compared once, and never again.
TEST_F(DroppedFilesTest, FileMovedOutOfTheGivenPathsIsReported) {
  std::filesystem::remove(PathOf("korvelcheck.toml"));
  Commit("no project file");
  fs::create_directory(PathOf("other"));
  fs::rename(PathOf("schemas/users.xml"), PathOf("other/users.xml"));
  const json report = ReportOf({"schemas"});
  EXPECT_EQ(AllowNew({"schemas"}).exit_code, 2);
  ASSERT_EQ(report["project"].size(), 1) << report;
  EXPECT_EQ(report["project"][0]["rule"], "project.no-longer-checked");
  EXPECT_EQ(
      report["project"][0]["text"],
      "other/users.xml is no longer checked after this call: it was moved from git:HEAD:schemas/users.xml, and the given paths "
      "do not select it");
  for (const Paths& paths : {Paths{"schemas", "other"}, {"."}, {"schemas/users.xml"}, {"other"}}) {
    SCOPED_TRACE(testing::PrintToString(paths));
    EXPECT_EQ(AllowNew(paths).exit_code, 0);
  }
  SelectOnly("paths = [\"*/**/*.xml\"]");
  EXPECT_EQ(AllowNew({"schemas"}).exit_code, 0);
}

// Regression: the project file further up had selected files that nobody checked afterwards.
TEST_F(DroppedFilesTest, ProjectFileMayMoveDown) {
  fs::create_directory(PathOf("other"));
  Write("other/extra.xml", Schema("extra"));
  SelectOnly("paths = [\"**/*.xml\"]");
  Commit("all files");
  fs::rename(PathOf("korvelcheck.toml"), PathOf("schemas/korvelcheck.toml"));
  Write("other/extra.xml", Schema("extra", "uint32"));
  const Outcome outcome = Run({"check", "--against", "git:HEAD", "--format", "json"}, "schemas");
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.out, HasSubstr("../other/extra.xml is no longer checked: "));
  // The project file above still selects the other files.
  Write("korvelcheck.toml", "[schemas]\npaths = [\"**/*.xml\"]\n");
  EXPECT_EQ(Run({"check", "--against", "git:HEAD"}, "schemas").exit_code, 0);
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
      EXPECT_EQ(AllowNew(paths).exit_code, 2);
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
    EXPECT_EQ(AllowNew(paths).exit_code, 2);
    EXPECT_EQ(ReportOf(paths)["verdict"], "incomplete");
    ASSERT_EQ(ReportOf(paths)["project"].size(), 1U);
  }
  fs::remove_all(PathOf("schemas/deep"));
  for (const Paths& paths : {Paths{}, {"schemas"}}) {
    EXPECT_NE(AllowNew(paths).exit_code, 0);
    EXPECT_NE(ReportOf(paths)["verdict"], "unchanged");
  }
}

// Regression: the project file of the baseline was ignored, and with it the files that it selected.
TEST_F(DroppedFilesTest, UnreadableProjectFileOfTheBaselineIsReported) {
  SelectOnly("path = [\"schemas/**/*.xml\"]");
  Commit("second");
  SelectOnly("paths = [\"schemas/*.xml\"]");
  for (const Paths& paths : {Paths{}, {"schemas"}, {"schemas/users.xml"}}) {
    SCOPED_TRACE(testing::PrintToString(paths));
    EXPECT_EQ(AllowNew(paths).exit_code, 2);
    json report = ReportOf(paths);
    EXPECT_EQ(report["verdict"], "incomplete");
    ASSERT_EQ(report["project"].size(), 1U);
    EXPECT_EQ(report["project"][0]["rule"], "project.unreadable");
    EXPECT_EQ(report["project"][0]["location"]["file"], "korvelcheck.toml");
    EXPECT_THAT(report["project"][0]["text"],
                testing::StartsWith("it is not known which files git:HEAD checks: git:HEAD:korvelcheck.toml:2:1: error: unknown "
                                    "key 'path' in [schemas]"));
  }
  EXPECT_THAT(Against().out, testing::StartsWith("verdict: incomplete (a project file of the baseline cannot be read)\n"));
  Write("korvelcheck.toml", Read("korvelcheck.toml") +
                                "[[waivers]]\nrule = \"project.unreadable\"\nfile = \"korvelcheck.toml\"\nreason = \"corrects "
                                "it\"\nuntil = 2027-01-31\n");
  EXPECT_EQ(AllowNew({}).exit_code, 0);
}

// --- Groups and waivers ---

// Regression: every file was a finding of its own.
TEST_F(DroppedFilesTest, FilesOfOnePatternAreOneFinding) {
  constexpr int kFiles = 30;
  for (int i = 10; i < 10 + kFiles; ++i) Write("schemas/deep/t" + std::to_string(i) + ".xml", Schema("t" + std::to_string(i)));
  SelectOnly("paths = [\"schemas/*.xml\", \"schemas/deep/*.xml\"]");
  Commit("second");
  SelectOnly("paths = [\"schemas/*.xml\"]");
  json report = ReportOf();
  ASSERT_EQ(report["project"].size(), 1U);
  EXPECT_EQ(report["project"][0]["files"].size(), kFiles + 1U);
  EXPECT_EQ(report["project"][0]["text"],
            "31 files are no longer checked (schemas/deep/items.xml, schemas/deep/t10.xml, schemas/deep/t11.xml, "
            "schemas/deep/t12.xml, schemas/deep/t13.xml, schemas/deep/t14.xml, schemas/deep/t15.xml, schemas/deep/t16.xml, "
            "schemas/deep/t17.xml, schemas/deep/t18.xml and 21 more): the project file of git:HEAD selects them with "
            "'schemas/deep/*.xml', but this one does not");
  EXPECT_THAT(Against().out, testing::StartsWith("verdict: incomplete (31 files are no longer checked)\n"));
}

class WaivedDropTest : public DroppedFilesTest {
 protected:
  WaivedDropTest() {
    Write("schemas/deep/carts.xml", Schema("carts"));
    SelectOnly("paths = [\"schemas/*.xml\", \"schemas/deep/*.xml\"]");
    Commit("second");
    SelectOnly("paths = [\"schemas/*.xml\"]");
  }

  void WaiveFile(const std::string& keys, const std::string& until = "2027-01-31") const {
    SelectOnly("paths = [\"schemas/*.xml\"]\n[[waivers]]\nrule = \"project.no-longer-checked\"\n" + keys +
               "\nreason = \"an experiment\"\nuntil = " + until);
  }
  std::string Fingerprint() const { return ReportOf()["project"][0]["fingerprint"]; }
};

TEST_F(WaivedDropTest, WaiveWritesTheWaiver) {
  const std::vector<std::string> waive = {"waive",    Fingerprint(), "--against", "git:HEAD",
                                          "--reason", "an end",      "--until",   "2027-01-31"};
  const Outcome outcome = Run(waive);
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr("[[waivers]]\nrule = \"project.no-longer-checked\"\nfile = "
                                                  "\"schemas/deep\"\nfingerprint = \""));
  EXPECT_EQ(AllowNew({}).exit_code, 0);
  EXPECT_EQ(AllowNew({"schemas"}).exit_code, 0);
  json report = ReportOf();
  EXPECT_EQ(report["verdict"], "incomplete");
  EXPECT_EQ(report["summary"]["failing"], 0);
  EXPECT_EQ(report["project"][0]["waiver"]["reason"], "an end");
  EXPECT_THAT(Against().out, testing::StartsWith("verdict: incomplete (2 files are no longer checked; waived)\n"));
  EXPECT_THAT(Against().out, HasSubstr("  waived until 2027-01-31: an end\n"));
  json sarif = json::parse(Against({"--format", "sarif"}).out)["runs"][0];
  EXPECT_EQ(sarif["invocations"][0]["exitCode"], 0);
  EXPECT_EQ(sarif["results"][0]["suppressions"][0]["justification"], "an end");
  EXPECT_THAT(Against({"--format", "github"}).out, HasSubstr("\n::notice file=korvelcheck.toml,line=2"));
  EXPECT_THAT(Against({"--format", "junit"}).out, testing::Not(HasSubstr("<failure")));
  EXPECT_THAT(Against({"--format", "html"}).out, HasSubstr("waived until 2027-01-31: an end"));
  EXPECT_THAT(Run({"waivers", "--against", "git:HEAD"}).out, HasSubstr("  matches: schemas/deep, fingerprint "));
  EXPECT_THAT(Run(waive).err, HasSubstr("korvelcheck.toml:4 already has a waiver for "));
}

// Regression: the verdict was incomplete, without "waived", although the exit code was that of the refusal.
TEST_F(WaivedDropTest, RefusalOfAnotherTableIsTheVerdict) {
  WaiveFile("file = \"schemas/deep\"");
  Write("schemas/users.xml", Schema("users", "uint32"));
  EXPECT_EQ(AllowNew({}).exit_code, 1);
  EXPECT_EQ(ReportOf()["verdict"], "refused");
  EXPECT_THAT(Against().out, testing::StartsWith("verdict: refused (2 files are no longer checked; waived)\n"));
  Write("schemas/deep/other.xml", Schema("other"));
  Commit("third");
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/*.xml\", \"schemas/deep/*.xml\"]\n");
  Commit("fourth");
  WaiveFile("file = \"schemas/deep/carts.xml\"");
  EXPECT_EQ(AllowNew({}).exit_code, 2);
  EXPECT_EQ(ReportOf()["verdict"], "incomplete");
}

TEST_F(WaivedDropTest, WaiverNamesTheFileOrADirectory) {
  WaiveFile("file = \"schemas/deep\"");
  EXPECT_EQ(AllowNew({}).exit_code, 0);
  WaiveFile("file = \".\"");
  EXPECT_EQ(AllowNew({}).exit_code, 0);
  for (const char* file : {"schemas/deep/carts.xml", "schemas/de", "deep"}) {
    WaiveFile("file = \"" + std::string(file) + "\"");
    EXPECT_EQ(AllowNew({}).exit_code, 2) << file;
    EXPECT_EQ(ReportOf()["project"][1]["rule"], "waiver.unused");
  }
  std::filesystem::remove(PathOf("schemas/deep/items.xml"));
  Commit("third");
  Write("korvelcheck.toml", "[schemas]\npaths = [\"schemas/**/*.xml\"]\n");
  Commit("fourth");
  WaiveFile("file = \"schemas/deep/carts.xml\"");
  EXPECT_EQ(AllowNew({}).exit_code, 0);
}

// Such a waiver also covers files that are dropped later, but looked like one of exactly these files.
TEST_F(WaivedDropTest, WaiverWithoutFingerprintIsMarkedAsWide) {
  WaiveFile("file = \"schemas/deep\"");
  EXPECT_THAT(Against().out, HasSubstr("  waived (wide: any change of this rule here) until 2027-01-31: an experiment\n"));
  EXPECT_EQ(ReportOf()["project"][0]["waiver"]["wide"], true);
}

TEST_F(WaivedDropTest, FingerprintPinsTheFiles) {
  const std::string waiver = "file = \"schemas/deep\"\nfingerprint = \"" + Fingerprint() + "\"";
  WaiveFile(waiver);
  EXPECT_EQ(AllowNew({}).exit_code, 0);
  WaiveFile("file = \"schemas/deep\"\nfingerprint = \"0123456789abcdef\"");
  EXPECT_EQ(AllowNew({}).exit_code, 2);
  EXPECT_THAT(ReportOf()["project"][1]["text"], HasSubstr("does not cover the change that is there now: 2 files are no longer"));
}

TEST_F(WaivedDropTest, ExpiredAndMalformedWaiversFail) {
  WaiveFile("file = \"schemas/deep\"", "2025-12-31");
  EXPECT_EQ(AllowNew({}).exit_code, 2);
  EXPECT_EQ(ReportOf()["project"][1]["level"], "error");
  EXPECT_THAT(ReportOf()["project"][1]["text"],
              testing::EndsWith("for 'schemas/deep' expired on 2025-12-31; the finding fails again"));
  WaiveFile("file = \"schemas/deep\"\ntable = \"items\"");
  EXPECT_EQ(ReportOf()["project"][1]["rule"], "waiver.malformed");
  EXPECT_THAT(ReportOf()["project"][1]["text"], HasSubstr("it has 'table'; allowed for this rule: rule and file"));
  WaiveFile("fingerprint = \"0123456789abcdef\"");
  EXPECT_THAT(ReportOf()["project"][1]["text"], HasSubstr("it has no 'file'; allowed for this rule: rule and file"));
}

// --- Texts ---

TEST_F(DroppedFilesTest, PatternWhoseFilesAreAllExcludedSaysSo) {
  SelectOnly("paths = [\"schemas/*.xml\", \"schemas/deep/*.xml\"]\nexclude = [\"schemas/deep/**\"]");
  ExpectInputError(Against(),
                   "korvelcheck.toml:2:27: error: 'schemas/deep/*.xml' matches only files that 'exclude' leaves out; allowed: "
                   "patterns that match a file of either state\n");
}

}  // namespace
}  // namespace tool_test
