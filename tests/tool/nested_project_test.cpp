// Nested project files: which one judges a file, which files they select, their waivers, and how reports list them.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "git_repository.h"

namespace tool_test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

// With the setting, the server limits the length of a field.
constexpr char kLimited[] = "[defaults]\nserver-version = \"3.39.0\"\n";
constexpr char kAll[] = "[schemas]\npaths = [\"**/*.xml\"]\nagainst = \"git:HEAD\"\n";
constexpr char kRest[] = "reason = \"r\"\nuntil = ";
constexpr std::size_t kSmall = 1024;
constexpr std::size_t kTooLarge = 10485761;  // for the server

std::string WithBlob(const std::string& library, std::size_t size) {
  return "<metalib name=\"" + library + "\" version=\"5\" protocol=\"QMX\">\n" +
         Table({.fields = "<entry name=\"blob\" type=\"bytes\" size=\"" + std::to_string(size) + "\"/>"}) + "\n</metalib>\n";
}

// Two services; only svc/a has a project file.
class NestedProjectTest : public GitTest {
 protected:
  NestedProjectTest() {
    for (const char* file : {"old.xml", "same.xml", "wide.xml"}) std::filesystem::remove(PathOf(file));
    for (const char* directory : {"svc/a", "svc/b"}) std::filesystem::create_directories(PathOf(directory));
    Write("svc/a/korvelcheck.toml", kLimited);
    Resize(kSmall);
    Commit("first");
  }

  void Resize(std::size_t size) const {
    Write("svc/a/s.xml", WithBlob("a", size));
    Write("svc/b/s.xml", WithBlob("b", size));
  }
  Outcome Against(const std::vector<std::string>& more, const std::string& directory = "") const {
    return Run(Joined({"check", "--against", "git:HEAD"}, more), directory);
  }
  // The report of a call, in JSON.
  json ReportOf(std::vector<std::string> arguments, const std::string& directory = "") const {
    arguments.insert(arguments.end(), {"--format", "json"});
    const Outcome outcome = Run(arguments, directory);
    json report = json::parse(outcome.out, nullptr, false);
    EXPECT_FALSE(report.is_discarded()) << outcome.err;
    return report.is_discarded() ? json::object() : report;
  }
  // "FILE: status, list-num N" of each table.
  std::vector<std::string> TablesOf(const std::vector<std::string>& arguments, const std::string& directory = "") const {
    std::vector<std::string> lines;
    const json report = ReportOf(arguments, directory);
    for (const auto& table : report.value("tables", json::array())) {
      const json number = table["settings"].value("list_num", json());
      lines.push_back(table["location"]["file"].get<std::string>() + ": " + table["status"].get<std::string>() +
                      (number.is_null() || number == 0 ? "" : ", list-num " + number.dump()));
    }
    return lines;
  }
  // What a report says about project files: "FILE:LINE level rule: text" each.
  static std::vector<std::string> ProjectFindings(const json& report) {
    std::vector<std::string> lines;
    for (const auto& one : report.value("project", json::array())) {
      lines.push_back(one["location"]["file"].get<std::string>() + ":" + one["location"]["line"].dump() + " " +
                      one["level"].get<std::string>() + " " + one["rule"].get<std::string>() + ": " +
                      one["text"].get<std::string>());
    }
    return lines;
  }
  std::string FingerprintIn(const std::string& directory, const std::string& file) const {
    json report = ReportOf({"check", "--against", "git:HEAD", file}, directory);
    return report["tables"][0]["changes"]["findings"][0]["fingerprint"];
  }
};

// --- Which project file judges a file ---

// Regression: a call at the root ignored project files in the directories below.
TEST_F(NestedProjectTest, RootCallEqualsCallInSubdirectory) {
  Resize(kTooLarge);
  json root = ReportOf({"check", "--against", "git:HEAD", "svc"});
  json inside = ReportOf({"check", "--against", "git:HEAD", "s.xml"}, "svc/a");
  ASSERT_EQ(root["tables"].size(), 2U);
  EXPECT_EQ(root["verdict"], "refused");
  EXPECT_EQ(root["tables"][0]["text"], inside["tables"][0]["text"]);
  EXPECT_EQ(root["tables"][0]["settings"], inside["tables"][0]["settings"]);
  EXPECT_EQ(root["tables"][0]["changes"]["findings"][0]["fingerprint"],
            inside["tables"][0]["changes"]["findings"][0]["fingerprint"]);
  EXPECT_EQ(root["tables"][1]["status"], "allowed");
  EXPECT_EQ(Against({"svc/b"}).exit_code, 0);
  EXPECT_EQ(Against({"../a"}, "svc/b").exit_code, 1);
}

TEST_F(NestedProjectTest, NearestOfSeveralLevelsJudges) {
  std::filesystem::create_directories(PathOf("svc/a/deep"));
  Write("s.xml", WithBlob("root", kSmall));
  Write("svc/s.xml", WithBlob("svc", kSmall));
  Write("svc/a/deep/s.xml", WithBlob("deep", kSmall));
  Write("korvelcheck.toml", std::string(kAll) + "[defaults]\nlist-num = 1\n");
  Write("svc/korvelcheck.toml", "[defaults]\nlist-num = 2\n");
  Write("svc/a/korvelcheck.toml", "[defaults]\nserver-version = \"3.39.0\"\n[tables.orders]\nlist-num = 3\n");
  Commit("second");
  const std::vector<std::string> expected = {"s.xml: allowed, list-num 1", "svc/a/deep/s.xml: allowed, list-num 3",
                                             "svc/a/s.xml: allowed, list-num 3", "svc/b/s.xml: allowed, list-num 2",
                                             "svc/s.xml: allowed, list-num 2"};
  EXPECT_EQ(TablesOf({"check"}), expected);
  EXPECT_THAT(TablesOf({"check", "--list-num", "9", "svc/b/s.xml", "--against", "git:HEAD"}),
              ElementsAre("svc/b/s.xml: allowed, list-num 9"));
  EXPECT_THAT(
      TablesOf({"check", "--against", "git:HEAD", "deep", "../b", "../../s.xml"}, "svc/a"),
      ElementsAre("../../s.xml: allowed, list-num 1", "deep/s.xml: allowed, list-num 3", "../b/s.xml: allowed, list-num 2"));
}

TEST_F(NestedProjectTest, ProjectOptionsDisableTheSearch) {
  Write("other.toml", "");
  Commit("second");
  Resize(kTooLarge);
  EXPECT_EQ(Against({"svc"}).exit_code, 1);
  EXPECT_EQ(Against({"svc", "--no-project"}).exit_code, 0);
  EXPECT_EQ(Against({"svc", "--project", "other.toml"}).exit_code, 0);
  EXPECT_EQ(Against({"svc/b", "--project", "svc/a/korvelcheck.toml"}).exit_code, 1);
}

TEST_F(NestedProjectTest, KeysOfTheCallComeFromItsOwnProjectFile) {
  const auto with_refer = [](const std::string& refer) {
    return Library(
        5,
        {Table({.fields = "<entry name=\"n\" type=\"uint32\"/><entry name=\"a\" type=\"uint32\" count=\"4\"" + refer + "/>"})});
  };
  Write("svc/a/s.xml", with_refer(" refer=\"n\""));
  Write("svc/a/korvelcheck.toml",
        "[schemas]\nagainst = \"git:nowhere\"\n[report]\nfail-on = \"warning\"\n"
        "[defaults]\nlist-num = 3\n");
  Write("korvelcheck.toml", kAll);
  Commit("second");
  Write("svc/a/s.xml", with_refer(""));
  EXPECT_THAT(Run({"check"}).out, HasSubstr("1 warning"));
  EXPECT_EQ(Run({"check"}).exit_code, 0);
  EXPECT_THAT(TablesOf({"check"}), ElementsAre("svc/a/s.xml: allowed, list-num 3", "svc/b/s.xml: allowed"));
  EXPECT_EQ(Against({"."}, "svc/a").exit_code, 1);
}

TEST_F(NestedProjectTest, ProjectFileAboveTheRepositoryIsIgnored) {
  std::filesystem::create_directory(PathOf("inner"));
  GitIn("inner", {"init", "-q"});
  Write("inner/s.xml", WithBlob("inner", kSmall));
  GitIn("inner", {"add", "-A"});
  GitIn("inner", {"commit", "-q", "-m", "first"});
  Write("korvelcheck.toml", "[defaults]\nlist-num = 7\n");
  EXPECT_THAT(TablesOf({"check", "--against", "git:HEAD", "s.xml"}, "inner"), ElementsAre("s.xml: allowed"));
  EXPECT_THAT(TablesOf({"check", "s.xml", "s.xml"}, "inner"), ElementsAre("s.xml: allowed"));
  EXPECT_THAT(TablesOf({"check", "svc/b/s.xml", "svc/b/s.xml"}), ElementsAre("svc/b/s.xml: allowed, list-num 7"));
}

TEST_F(NestedProjectTest, LinkedDirectoryIsTheDirectoryItself) {
  std::filesystem::create_directory_symlink("svc/a", PathOf("link"));
  Resize(kTooLarge);
  EXPECT_EQ(Against({"link/s.xml"}).exit_code, 1);
  EXPECT_EQ(Run({"check", "git:HEAD:svc/a/s.xml", "link/s.xml"}).exit_code, 1);
  EXPECT_EQ(Run({"check", "git:HEAD:svc/b/s.xml", "svc/b/s.xml"}).exit_code, 0);
}

TEST_F(NestedProjectTest, DirectoryAsBaseline) {
  std::filesystem::create_directory(PathOf("released"));
  std::filesystem::copy(PathOf("svc"), PathOf("released/svc"), std::filesystem::copy_options::recursive);
  Resize(kTooLarge);
  EXPECT_THAT(TablesOf({"check", "--against", "released", "svc"}), ElementsAre("svc/a/s.xml: refused", "svc/b/s.xml: allowed"));
}

// --- States of the project file ---

TEST_F(NestedProjectTest, NewStateIsTheWorkTree) {
  Write("svc/a/korvelcheck.toml", "");
  Resize(kTooLarge);
  EXPECT_EQ(Against({"svc"}).exit_code, 0);
  Write("svc/b/korvelcheck.toml", kLimited);
  EXPECT_EQ(Against({"svc"}).exit_code, 1);
}

// A file that a sparse checkout leaves out is as in the index.
TEST_F(NestedProjectTest, NewStateIsTheIndexOfASparseCheckout) {
  Resize(kTooLarge);
  Commit("second");
  Git({"sparse-checkout", "set", "--no-cone", "/svc/b/"});
  ASSERT_FALSE(std::filesystem::exists(PathOf("svc/a/korvelcheck.toml")));
  const std::vector<std::string> call = {"check", "--against", "git:HEAD~1", "svc"};
  EXPECT_THAT(TablesOf(call), ElementsAre("svc/a/s.xml: refused", "svc/b/s.xml: allowed"));
  Git({"rm", "-q", "--cached", "--sparse", "svc/a/korvelcheck.toml"});
  EXPECT_THAT(TablesOf(call), ElementsAre("svc/a/s.xml: allowed", "svc/b/s.xml: allowed"));
}

TEST_F(NestedProjectTest, NewStateIsACommit) {
  Resize(kTooLarge);
  Commit("second");
  Write("svc/a/korvelcheck.toml", "");
  Commit("third");
  const auto check = [&](const std::string& revision, const std::string& directory) {
    return Run({"check", "git:HEAD~2:svc/a/s.xml", "git:" + revision + ":svc/a/s.xml"}, directory).exit_code;
  };
  EXPECT_EQ(check("HEAD~1", ""), 1);
  EXPECT_EQ(check("HEAD", ""), 0);
  EXPECT_EQ(check("HEAD~1", "svc/b"), 1);
}

TEST_F(NestedProjectTest, BrokenProjectFileIsAnError) {
  Write("svc/a/korvelcheck.toml", "\n[defaults]\n  list-nun = 1\n");
  const std::string fault =
      "svc/a/korvelcheck.toml:3:3: error: unknown key 'list-nun' in [defaults] (did you mean 'list-num'?); allowed: type, "
      "created-as, server-version, whitelist, list-num\n";
  ExpectInputError(Against({"svc"}), fault);
  ExpectInputError(Against({"svc/a/s.xml"}), fault);
  ExpectInputError(Run({"lint", "svc/a/s.xml"}), fault);
  EXPECT_EQ(Against({"svc/b"}).exit_code, 0);
  EXPECT_EQ(Against({"svc", "--no-project"}).exit_code, 0);
  Write("svc/b/korvelcheck.toml", "[");
  const std::string both = Against({"svc"}).err;
  EXPECT_THAT(both, testing::StartsWith(fault));
  EXPECT_THAT(both, HasSubstr("\nsvc/b/korvelcheck.toml:1:"));
  std::filesystem::remove(PathOf("svc/b/korvelcheck.toml"));
  std::filesystem::remove(PathOf("svc/a/korvelcheck.toml"));
  std::filesystem::create_symlink("nowhere", PathOf("svc/a/korvelcheck.toml"));
  const Outcome dangling = Against({"svc"});
  EXPECT_EQ(dangling.exit_code, 2);
  EXPECT_THAT(dangling.err, HasSubstr("svc/a/korvelcheck.toml: is a symbolic link; "));
}

// The number of runs of git does not depend on the number of directories.
TEST_F(NestedProjectTest, GitIsNotRunForEachProjectFile) {
  ReplaceGit("echo call >> \"$COUNT\"\nexec \"$REAL_GIT\" \"$@\"");
  environment_.push_back("COUNT=" + PathOf("count").string());
  const auto calls = [&] {
    Write("count", "");
    EXPECT_EQ(Against({"svc"}).exit_code, 0);
    const std::string text = Read("count");
    return std::ranges::count(text, '\n');
  };
  const auto few = calls();
  for (int i = 0; i < 50; ++i) {
    const std::string directory = "svc/d" + std::to_string(i);
    std::filesystem::create_directory(PathOf(directory));
    Write(directory + "/korvelcheck.toml", "[defaults]\nlist-num = 2\n");
    Write(directory + "/s.xml", WithBlob("d" + std::to_string(i), kSmall));
  }
  Commit("many");
  EXPECT_EQ(calls(), few);
  EXPECT_THAT(TablesOf({"check", "--against", "git:HEAD", "svc"}), testing::Contains("svc/d7/s.xml: allowed, list-num 2"));
}

// --- Which files they select ---

TEST_F(NestedProjectTest, PatternsSelectTheFilesBelow) {
  std::filesystem::create_directory(PathOf("svc/a/gen"));
  Write("svc/a/gen/s.xml", WithBlob("gen", kSmall));
  Write("svc/a/t.schema", WithBlob("t", kSmall));
  Write("svc/a/korvelcheck.toml", "[schemas]\npaths = [\"**/*.xml\", \"*.schema\"]\nexclude = [\"gen/*\"]\n");
  Commit("second");
  const std::vector<std::string> in_a = {"svc/a/s.xml: allowed", "svc/a/t.schema: allowed", "svc/b/s.xml: allowed"};
  EXPECT_EQ(TablesOf({"check", "--against", "git:HEAD", "svc"}), in_a);
  Write("korvelcheck.toml", kAll);
  EXPECT_EQ(TablesOf({"check"}), in_a);
  EXPECT_EQ(TablesOf({"check", "--against", "git:HEAD", "."}), in_a);
  EXPECT_THAT(TablesOf({"check", "--against", "git:HEAD", "svc/a/gen/s.xml"}), ElementsAre("svc/a/gen/s.xml: allowed"));
  Write("svc/a/korvelcheck.toml", "[schemas]\nexclude = [\"gen/*\"]\n");
  EXPECT_THAT(TablesOf({"check", "--no-project", "--against", "git:HEAD", "svc/a"}),
              ElementsAre("svc/a/gen/s.xml: allowed", "svc/a/s.xml: allowed"));
  Commit("third");
  EXPECT_THAT(TablesOf({"check"}), ElementsAre("svc/a/s.xml: allowed", "svc/b/s.xml: allowed"));
  EXPECT_THAT(TablesOf({"check", "--against", "git:HEAD", "."}, "svc/a"), ElementsAre("s.xml: allowed"));
}

TEST_F(NestedProjectTest, FilesThatTheCallExcludesAreLeftOut) {
  Write("korvelcheck.toml", std::string(kAll) + "exclude = [\"svc/a/**\"]\n");
  Write("svc/a/korvelcheck.toml", "broken");
  Write("svc/b/korvelcheck.toml", "[defaults]\nlist-num = 5\n");
  Commit("second");
  EXPECT_THAT(TablesOf({"check"}), ElementsAre("svc/b/s.xml: allowed, list-num 5"));
}

TEST_F(NestedProjectTest, PatternThatMatchesNoFileIsAnError) {
  Write("korvelcheck.toml", kAll);
  Write("svc/a/korvelcheck.toml", "[schemas]\npaths = [\"*.xml\",\n\"none/*.xml\"]\n");
  Commit("second");
  ExpectInputError(Run({"check"}),
                   "svc/a/korvelcheck.toml:3:1: error: 'none/*.xml' matches no file; allowed: patterns that match a file of "
                   "either state\n");
}

TEST_F(NestedProjectTest, SettingsOfUnknownTablesAreAnError) {
  Write("korvelcheck.toml", kAll);
  Write("svc/b/s.xml", Library(5, {Table({.name = "users"})}));
  Write("svc/a/korvelcheck.toml", "[tables.users]\nlist-num = 3\n");
  Commit("second");
  ExpectInputError(Run({"check"}),
                   "svc/a/korvelcheck.toml:1:1: error: [tables.'users'] is for a table that no schema file of this project file "
                   "has\n");
  Write("korvelcheck.toml", std::string(kAll) + "exclude = [\"svc/a/t.xml\"]\n");
  Write("svc/a/t.xml", "");
  EXPECT_EQ(Run({"check"}).exit_code, 0);
}

// --- Files that are no longer checked ---

// Regression: a new project file hid every change of the files that it excludes.
TEST_F(NestedProjectTest, AddedProjectFileHidesNothing) {
  Write("korvelcheck.toml", kAll);
  Commit("second");
  Write("svc/b/korvelcheck.toml", "[schemas]\nexclude = [\"*.xml\"]\n");
  const std::string start = "svc/b/korvelcheck.toml:2 error project.no-longer-checked: svc/b/s.xml is no longer checked: ";
  const std::string finding = start + "the project file of git:HEAD selects it, but this one does not";
  for (const std::vector<std::string>& paths : {std::vector<std::string>{}, {"svc"}, {"svc/b", "svc/a"}}) {
    std::vector<std::string> call = {"check", "--against", "git:HEAD"};
    call.insert(call.end(), paths.begin(), paths.end());
    const json report = ReportOf(call);
    EXPECT_THAT(ProjectFindings(report), ElementsAre(finding));
    EXPECT_EQ(report["project"][0]["suggestion"], "remove it from 'exclude', or delete the file");
    EXPECT_EQ(Run(call).exit_code, 2);
  }
  Write("svc/b/korvelcheck.toml", "[schemas]\npaths = [\"v2/*.xml\"]\n");
  std::filesystem::create_directory(PathOf("svc/b/v2"));
  Write("svc/b/v2/s.xml", WithBlob("v2", kSmall));
  EXPECT_THAT(ProjectFindings(ReportOf({"check"})), ElementsAre(finding));
  std::filesystem::remove(PathOf("korvelcheck.toml"));
  Commit("without a project file at the top");
  Git({"rm", "-q", "--cached", "svc/b/korvelcheck.toml"});
  Git({"commit", "-q", "-m", "and none in svc/b"});
  EXPECT_THAT(ProjectFindings(ReportOf({"check", "--against", "git:HEAD", "svc"})),
              ElementsAre(start + "no project file of git:HEAD leaves it out, but this one does"));
}

TEST_F(NestedProjectTest, NarrowerProjectFileHidesNothing) {
  Write("korvelcheck.toml", kAll);
  Write("svc/a/t.schema", WithBlob("t", kSmall));
  Write("svc/a/korvelcheck.toml", "[schemas]\npaths = [\"*.xml\", \"*.schema\"]\n");
  Commit("second");
  const std::string rest =
      "error project.no-longer-checked: svc/a/t.schema is no longer checked: the project file of git:HEAD selects it, but this "
      "one does not";
  Write("svc/a/korvelcheck.toml", "[schemas]\npaths = [\"*.xml\"]\n");
  EXPECT_THAT(ProjectFindings(ReportOf({"check"})), ElementsAre("svc/a/korvelcheck.toml:2 " + rest));
  EXPECT_THAT(ProjectFindings(ReportOf({"check", "--against", "git:HEAD", "svc"})),
              ElementsAre("svc/a/korvelcheck.toml:2 " + rest));
  std::filesystem::remove(PathOf("svc/a/korvelcheck.toml"));
  EXPECT_THAT(ProjectFindings(ReportOf({"check"})), ElementsAre("korvelcheck.toml:2 " + rest));
  std::filesystem::remove(PathOf("svc/a/t.schema"));
  EXPECT_THAT(TablesOf({"check"}), testing::Contains("git:HEAD:svc/a/t.schema: refused"));
}

TEST_F(NestedProjectTest, CallThatNoLongerReachesAProjectFileSaysSo) {
  Write("korvelcheck.toml", kAll);
  Write("svc/a/t.schema", WithBlob("t", kSmall));
  Write("svc/a/korvelcheck.toml", "[schemas]\npaths = [\"*.schema\"]\n");
  Commit("second");
  Write("korvelcheck.toml", "[schemas]\npaths = [\"svc/b/*.xml\"]\nagainst = \"git:HEAD\"\n");
  EXPECT_THAT(ProjectFindings(ReportOf({"check"})),
              ElementsAre("korvelcheck.toml:2 error project.no-longer-checked: svc/a/t.schema is no longer checked: the project "
                          "file of git:HEAD selects it, but this one does not"));
}

// --- Waivers ---

TEST_F(NestedProjectTest, WaiversAreThoseOfTheNearestProjectFile) {
  Write("korvelcheck.toml", kAll);
  Write("svc/b/korvelcheck.toml", kLimited);
  Commit("second");
  Resize(kTooLarge);
  const std::string before = Read("svc/a/korvelcheck.toml");
  const std::vector<std::string> waive = {"waive", FingerprintIn("svc/a", "s.xml"), "--reason", "r", "--until", "2027-01-31"};
  const Outcome waived = Run(waive);
  EXPECT_EQ(waived.exit_code, 0) << waived.err;
  EXPECT_EQ(Read("korvelcheck.toml"), kAll);
  const std::string with_waiver = Read("svc/a/korvelcheck.toml");
  EXPECT_THAT(with_waiver, HasSubstr("\nfile = \"s.xml\"\n"));
  EXPECT_THAT(Run(waive).err, HasSubstr("svc/a/korvelcheck.toml:4 already has a waiver for "));
  json report = ReportOf({"check"});
  EXPECT_EQ(report["summary"]["waived"], 1);
  EXPECT_EQ(report["summary"]["failing"], 1);
  EXPECT_TRUE(ProjectFindings(report).empty());
  EXPECT_EQ(Against({"svc/a"}).exit_code, 0);
  EXPECT_EQ(Against({"s.xml"}, "svc/a").exit_code, 0);
  EXPECT_EQ(Against({"svc/b"}).exit_code, 1);
  // The same waiver in the project file of the call is for another file.
  Write("svc/a/korvelcheck.toml", before);
  Write("korvelcheck.toml", kAll + with_waiver.substr(before.size()));
  report = ReportOf({"check"});
  EXPECT_EQ(report["summary"]["waived"], 0);
  ASSERT_EQ(ProjectFindings(report).size(), 1U);
  EXPECT_THAT(ProjectFindings(report).front(), testing::StartsWith("korvelcheck.toml:5 warning waiver.unused: "));
}

TEST_F(NestedProjectTest, FaultsOfWaiversAreReportedForEachProjectFile) {
  const std::string wide = "[[waivers]]\ntable = \"orders\"\nrule = \"primary-key.size\"\nentry = \"uid\"\n";
  Write("korvelcheck.toml", kAll + wide + kRest + "2027-01-31\n");
  Write("svc/a/korvelcheck.toml", kLimited + wide + kRest + "2025-01-31\n" + wide + kRest + "2027-01-31\n");
  Write("svc/b/korvelcheck.toml", wide + kRest + "2027-01-31\n");
  Commit("second");
  const json report = ReportOf({"check"});
  const std::string waiver = "the waiver of 'primary-key.size' in table 'orders', entry 'uid' ";
  EXPECT_THAT(
      ProjectFindings(report),
      ElementsAre("korvelcheck.toml:4 warning waiver.unused: " + waiver + "matches no finding",
                  "svc/a/korvelcheck.toml:3 warning waiver.expired: " + waiver + "expired on 2025-01-31",
                  HasSubstr("svc/a/korvelcheck.toml:9 error waiver.malformed: invalid waiver: svc/a/korvelcheck.toml:3 already"),
                  "svc/b/korvelcheck.toml:1 warning waiver.unused: " + waiver + "matches no finding"));
  const json list = ReportOf({"waivers"});
  EXPECT_EQ(list["project"], "korvelcheck.toml");
  ASSERT_EQ(list["waivers"].size(), 4U);
  EXPECT_EQ(list["waivers"][3]["location"]["file"], "svc/b/korvelcheck.toml");
  EXPECT_THAT(Run({"waivers"}).out, HasSubstr("\nsvc/a/korvelcheck.toml:3:1: expired"));
  EXPECT_EQ(ProjectFindings(ReportOf({"lint", "svc/a/s.xml", "svc/b/s.xml"})).size(), 2U);
}

TEST_F(NestedProjectTest, FindingsOfSeveralProjectFilesAreWaivedOneByOne) {
  Write("svc/b/korvelcheck.toml", kLimited);
  Write("svc/b/s.xml", WithBlob("a", kSmall));
  Commit("second");
  Write("svc/a/s.xml", WithBlob("a", kTooLarge));
  Write("svc/b/s.xml", WithBlob("a", kTooLarge));
  const std::string fingerprint = FingerprintIn("", "svc/a/s.xml");
  ASSERT_EQ(FingerprintIn("", "svc/b/s.xml"), fingerprint);
  const auto waive = [&](const std::string& path) {
    return Run({"waive", fingerprint, path, "--against", "git:HEAD", "--reason", "r", "--until", "2027-01-31"});
  };
  ExpectInputError(waive("svc"),
                   "korvelcheck: waive: the findings belong to svc/a/korvelcheck.toml and svc/b/korvelcheck.toml; allowed: "
                   "findings of one project file, which --project selects\n");
  EXPECT_EQ(waive("svc/b").exit_code, 0);
  const json report = ReportOf({"check", "--against", "git:HEAD", "svc"});
  EXPECT_EQ(report["summary"]["waived"], 1);
  EXPECT_EQ(report["summary"]["failing"], 1);
}

// A file that moved from one project to another is judged by the new one.
TEST_F(NestedProjectTest, MovedFileBelongsToItsNewProject) {
  Write("svc/b/korvelcheck.toml", "[defaults]\nlist-num = 4\n");
  Commit("second");
  std::filesystem::rename(PathOf("svc/a/s.xml"), PathOf("svc/b/t.xml"));
  EXPECT_THAT(TablesOf({"check", "--against", "git:HEAD", "svc"}),
              ElementsAre("svc/b/s.xml: allowed, list-num 4", "svc/b/t.xml: allowed, list-num 4"));
  std::string narrow = WithBlob("a", kSmall);
  narrow.replace(narrow.find("uint64"), 6, "uint32");
  Write("svc/b/t.xml", narrow);
  ASSERT_EQ(Against({"svc"}).exit_code, 1);
  const std::string fingerprint = FingerprintIn("", "svc/b/t.xml");
  EXPECT_EQ(Run({"waive", fingerprint, "svc", "--against", "git:HEAD", "--reason", "r", "--until", "2027-01-31"}).exit_code, 0);
  std::string waived = Read("svc/b/korvelcheck.toml");
  EXPECT_THAT(waived, HasSubstr("\nfile = \"t.xml\"\nfingerprint = "));
  EXPECT_EQ(Against({"svc"}).exit_code, 0);
  // The old path counts, too, but only from the new project file.
  waived.erase(waived.find("fingerprint"), waived.find("reason") - waived.find("fingerprint"));
  for (const auto& [file, exit_code] : {std::pair("../a/s.xml", 0), {"s.xml", 1}}) {
    std::string other = waived;
    Write("svc/b/korvelcheck.toml", other.replace(other.find("\"t.xml\""), 7, std::string("\"") + file + "\""));
    EXPECT_EQ(Against({"svc"}).exit_code, exit_code) << file;
  }
}

// --- Reports ---

TEST_F(NestedProjectTest, ReportsListTheProjectFiles) {
  EXPECT_THAT(Against({"svc", "-v"}).out, HasSubstr("\nproject file: svc/a/korvelcheck.toml (1 file)\nsvc/"));
  EXPECT_FALSE(ReportOf({"check", "--against", "git:HEAD", "svc", "--no-project"}).contains("project_files"));
  Write("korvelcheck.toml", kAll);
  Write("t.xml", WithBlob("t", kSmall));
  Commit("second");
  EXPECT_THAT(Run({"check"}).out,
              testing::StartsWith("verdict: unchanged (the baseline is the commit that is checked out)\nbaseline: "));
  EXPECT_THAT(Run({"check"}).out,
              HasSubstr("\nproject file: korvelcheck.toml (2 files)\nproject file: svc/a/korvelcheck.toml (1 file)\n"));
  EXPECT_THAT(Run({"check", "--format", "markdown"}).out, HasSubstr("\n- project file: svc/a/korvelcheck.toml (1 file)\n"));
  EXPECT_THAT(Run({"check", "--format", "html"}).out, HasSubstr("<li>project file: svc/a/korvelcheck.toml (1 file)</li>"));
  const json files = {{{"file", "korvelcheck.toml"}, {"files", 2}}, {{"file", "svc/a/korvelcheck.toml"}, {"files", 1}}};
  EXPECT_EQ(ReportOf({"check"})["project_files"], files);
  // Several baselines do not count a file twice.
  EXPECT_EQ(ReportOf({"check", "--against", "git:HEAD", "--against", "git:HEAD~1"})["project_files"], files);
  EXPECT_EQ(ReportOf({"lint", "t.xml", "svc/b/s.xml", "svc/a/s.xml"})["project_files"], files);
  Write("report.json", Run({"check", "--format", "json"}).out);
  const std::string source = KORVEL_SOURCE_DIR;
  const std::string command = KORVEL_PYTHON " '" + source + "/tests/report/validate.py' '" + source +
                              "/docs/report.schema.json' '" + PathOf("report.json").string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
}

// --- Files that a call names by themselves ---

TEST_F(NestedProjectTest, FilesOfACallHaveTheirOwnProjectFile) {
  Write("korvelcheck.toml", "[defaults]\nlist-num = 1\n");
  Write("svc/a/korvelcheck.toml", std::string(kLimited) + "list-num = 2\n");
  Write("svc/b/s.xml", Read("svc/a/s.xml"));
  EXPECT_THAT(TablesOf({"lint", "svc/a/s.xml", "svc/b/s.xml"}),
              ElementsAre("svc/a/s.xml: allowed, list-num 2", "svc/b/s.xml: allowed, list-num 1"));
  EXPECT_THAT(TablesOf({"check", "svc/b/s.xml", "svc/a/s.xml"}), ElementsAre("svc/a/s.xml: allowed, list-num 2"));
  EXPECT_THAT(TablesOf({"check", "svc/a/s.xml", "svc/b/s.xml"}), ElementsAre("svc/b/s.xml: allowed, list-num 1"));
  EXPECT_THAT(TablesOf({"check", "svc/b/s.xml", "svc/a/s.xml", "--no-project"}), ElementsAre("svc/a/s.xml: allowed"));
  Write("old.xml", Read("svc/a/s.xml"));
  for (const char* file : {"svc/a/s.xml", "svc/b/s.xml"}) Write(file, WithBlob("a", kTooLarge));
  EXPECT_THAT(Run({"suggest", "old.xml", "svc/a/s.xml"}).out, HasSubstr("+++ svc/a/s.xml"));
  EXPECT_EQ(Run({"suggest", "old.xml", "svc/b/s.xml"}).out, "");
}

}  // namespace
}  // namespace tool_test
