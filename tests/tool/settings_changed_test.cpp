// Project files that give schema files other settings than those of the baseline.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr char kPaths[] = "[schemas]\npaths = [\"schemas/**/*.xml\"]\n";
constexpr char kLimited[] = "[defaults]\nserver-version = \"3.29.0\"\n";

class SettingsChangedTest : public ProjectTest {
 protected:
  SettingsChangedTest() {
    Write("korvelcheck.toml", std::string(kPaths) + kLimited);
    Commit("with a server version");
  }

  // "FILE level: text" of each finding about the project file.
  std::vector<std::string> Findings(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> lines;
    const Outcome outcome = Against(Joined({"--format", "json"}, more));
    json report = json::parse(outcome.out, nullptr, false);
    if (report.is_discarded()) return {outcome.err};
    for (const auto& one : report.value("project", json::array())) {
      EXPECT_EQ(one["rule"], "project.settings-changed");
      lines.push_back(one["location"]["file"].get<std::string>() + " " + one["level"].get<std::string>() + ": " +
                      one["text"].get<std::string>());
    }
    return lines;
  }
};

// Regression: an empty nested project file removed the settings of the root without a finding.
TEST_F(SettingsChangedTest, NestedProjectFileIsReported) {
  Write("schemas/deep/korvelcheck.toml", "");
  const std::string text =
      "schemas/deep/items.xml is checked with different settings than in git:HEAD: server-version: '3.29.0' -> none";
  for (const std::vector<std::string>& paths : {std::vector<std::string>{}, {"schemas"}, {"schemas/deep/items.xml"}}) {
    EXPECT_THAT(Findings(paths), ElementsAre("schemas/deep/korvelcheck.toml warning: " + text));
    EXPECT_EQ(Against(paths).exit_code, 0);
    EXPECT_EQ(Against(Joined({"--fail-on", "warning"}, paths)).exit_code, 1);
  }
  EXPECT_THAT(Findings({"schemas/users.xml"}), IsEmpty());
  EXPECT_THAT(Findings({"--no-project", "schemas"}), IsEmpty());
  EXPECT_THAT(Findings({"--server-version", "3.39.0"}), IsEmpty());
  EXPECT_THAT(Against().out, testing::StartsWith("verdict: unchanged (the baseline is the commit that is checked out)\n"));
  Write("schemas/users.xml", Schema("users") + "\n");
  EXPECT_THAT(Against().out, testing::StartsWith("verdict: allowed (with warnings)\n"));
  EXPECT_THAT(Against({"--fail-on", "warning"}).out, testing::StartsWith("verdict: allowed (warnings fail this call)\n"));
  for (const char* format : {"text", "github", "sarif", "junit", "gitlab", "markdown", "html"}) {
    const Outcome outcome = Against({"--format", format});
    EXPECT_THAT(outcome.out, HasSubstr("project.settings-changed")) << format;
    EXPECT_THAT(outcome.out, HasSubstr("is checked with different settings than in")) << format;
  }
  EXPECT_THAT(Against({"--format", "github"}).out, HasSubstr("\n::warning file=schemas/deep/korvelcheck.toml,line=1"));
  EXPECT_THAT(Against({"--format", "junit"}).out, Not(HasSubstr("<failure")));
  EXPECT_THAT(Against({"--format", "junit", "--fail-on", "warning"}).out, HasSubstr("<failure"));
}

TEST_F(SettingsChangedTest, NestedProjectFileThatRepeatsTheSettingsIsNotReported) {
  Write("schemas/deep/korvelcheck.toml", kLimited);
  EXPECT_THAT(Findings(), IsEmpty());
}

TEST_F(SettingsChangedTest, FilesWithTheSameChangeAreOneFinding) {
  Write("korvelcheck.toml", std::string(kPaths) + "[defaults]\nlist-num = 5\n[tables.users]\nserver-version = \"3.29.0\"\n");
  EXPECT_THAT(
      Findings(),
      ElementsAre("korvelcheck.toml warning: schemas/users.xml is checked with different settings than in git:HEAD: "
                  "list-num: none -> 5",
                  "korvelcheck.toml warning: 2 files (schemas/deep/items.xml, schemas/orders.xml) are checked with different "
                  "settings than in git:HEAD: server-version: '3.29.0' -> none, list-num: none -> 5"));
}

TEST_F(SettingsChangedTest, MovedFileIsComparedWithItsOldProjectFile) {
  Write("schemas/deep/korvelcheck.toml", "[defaults]\ntype = \"list\"\ncreated-as = \"tlv\"\nwhitelist = [\"a\"]\n");
  Commit("third");
  std::filesystem::rename(PathOf("schemas/users.xml"), PathOf("schemas/deep/users.xml"));
  EXPECT_THAT(
      Findings({"schemas/deep/users.xml"}),
      ElementsAre("schemas/deep/korvelcheck.toml warning: schemas/deep/users.xml is checked with different settings than in "
                  "git:HEAD: type: none -> list, created-as: none -> tlv, server-version: '3.29.0' -> none, whitelist: "
                  "none -> 'a'"));
}

TEST_F(SettingsChangedTest, FirstProjectFileIsNotReported) {
  std::filesystem::remove(PathOf("korvelcheck.toml"));
  Commit("without a project file");
  Write("korvelcheck.toml", std::string(kPaths) + kLimited);
  EXPECT_THAT(Findings({"schemas"}), IsEmpty());
  Write("schemas/deep/korvelcheck.toml", "[defaults]\nlist-num = 5\n");
  EXPECT_THAT(Findings({"schemas"}), ElementsAre(HasSubstr("schemas/deep/items.xml is checked with different settings")));
}

TEST_F(SettingsChangedTest, CanBeWaived) {
  Write("schemas/deep/korvelcheck.toml", "");
  json report = json::parse(Against({"--format", "json"}).out);
  const std::string fingerprint = report["project"][0]["fingerprint"];
  const Outcome waived =
      Run({"waive", fingerprint, "--against", "git:HEAD", "--reason", "no server limits it", "--until", "2027-01-31"});
  EXPECT_EQ(waived.exit_code, 0) << waived.err;
  EXPECT_THAT(Read("schemas/deep/korvelcheck.toml"),
              HasSubstr("rule = \"project.settings-changed\"\nfile = \"items.xml\"\nfingerprint = \"" + fingerprint + "\"\n"));
  EXPECT_EQ(Against({"--fail-on", "warning"}).exit_code, 0);
  EXPECT_THAT(Against().out, HasSubstr(": waived [project.settings-changed] schemas/deep/items.xml is checked"));
  // The waiver is for this change of the settings.
  Write("schemas/deep/korvelcheck.toml", "[defaults]\nserver-version = \"3.39.0\"\n" + Read("schemas/deep/korvelcheck.toml"));
  EXPECT_EQ(Against({"--fail-on", "warning"}).exit_code, 1);
}

// Regression: one commit could bring a warning and stop warnings from failing, or choose what it is compared with.
TEST_F(SettingsChangedTest, SettingsOfCallsAreReported) {
  Write("korvelcheck.toml",
        "[report]\nfail-on = \"warning\"\n" + std::string(kPaths) + "against = [\"git:HEAD~1\", \"git-tag:v*\"]\n" + kLimited);
  Commit("stricter");
  const std::string begin = "korvelcheck.toml warning: calls have different settings than in git:HEAD: ";
  EXPECT_THAT(Findings(), IsEmpty());
  Write("korvelcheck.toml", kPaths + std::string("against = [\"git:HEAD\"]\n") + kLimited);
  EXPECT_THAT(Findings(), ElementsAre(begin + "against: git:HEAD~1 git-tag:v* -> git:HEAD, fail-on: warning -> refused"));
  EXPECT_THAT(Findings({"schemas"}).size(), 1);
  EXPECT_EQ(Against({"--fail-on", "warning"}).exit_code, 1);
  Write("korvelcheck.toml", kPaths + std::string(kLimited));
  EXPECT_THAT(Findings(), ElementsAre(begin + "against: git:HEAD~1 git-tag:v* -> none, fail-on: warning -> refused"));
  Commit("weaker");
  Write("korvelcheck.toml", "[report]\nfail-on = \"warning\"\n" + std::string(kPaths) + "against = [\"git:HEAD\"]\n" + kLimited);
  EXPECT_THAT(Findings(), IsEmpty());
}

}  // namespace
}  // namespace tool_test
