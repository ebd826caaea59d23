// explain with a fingerprint: the finding, what to do about it, and its rule.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "project_repository.h"

namespace tool_test {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// In the project, the key of orders is narrower than in HEAD.
class ExplainFindingTest : public ProjectTest {
 protected:
  ExplainFindingTest() {
    Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\nagainst = 'git:HEAD'\n");
    Commit("project");
    Write("schemas/orders.xml", Schema("orders", "uint32"));
  }

  // The fingerprints that a check reports.
  std::vector<std::string> Fingerprints(const std::vector<std::string>& arguments = {}) const {
    std::vector<std::string> found;
    std::vector<std::string> call = {"check", "--format", "json"};
    call.insert(call.end(), arguments.begin(), arguments.end());
    const json report = json::parse(Run(call).out);
    for (const json& table : report["tables"]) {
      if (!table.contains("changes")) continue;
      for (const json& finding : table["changes"]["findings"]) found.push_back(finding["fingerprint"]);
    }
    for (const json& finding : report["project"]) {
      if (finding["fingerprint"].is_string()) found.push_back(finding["fingerprint"]);
    }
    return found;
  }
  std::string Explained(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "explain");
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
};

TEST_F(ExplainFindingTest, PrintsTheFindingTheNextCallsAndTheRule) {
  ASSERT_EQ(Fingerprints().size(), 1u);
  const std::string fingerprint = Fingerprints().front();
  const std::string text = Explained({fingerprint});
  EXPECT_THAT(text, StartsWith("schemas/orders.xml:2:1: refused: table orders: -3 ERROR_VALUE_FIELD\n"
                               "schemas/orders.xml:2:52: refused [primary-key.size] the size of a primary key field changed\n"));
  EXPECT_THAT(text, HasSubstr("  checker: The size of primarykey can't be modified! entry:'uid' metaname:'orders'\n"
                              "  was: git:HEAD:schemas/orders.xml:2:52  uint64\n"
                              "  suggestion: keep uid as it is"));
  EXPECT_THAT(text, HasSubstr("  fingerprint: " + fingerprint +
                              "\n"
                              "To fix what is refused: korvelcheck suggest --write\n"
                              "To accept it temporarily: korvelcheck waive " +
                              fingerprint +
                              " --reason 'REASON' --until YYYY-MM-DD\n"
                              "\n" +
                              Explained({"primary-key.size"})));
}

TEST_F(ExplainFindingTest, TakesTheBeginningOfAFingerprint) {
  const std::string fingerprint = Fingerprints().front();
  EXPECT_EQ(Explained({fingerprint.substr(0, 4)}), Explained({fingerprint}));
}

TEST_F(ExplainFindingTest, ChecksWhatTheCallNames) {
  Write("old.xml", Schema("orders"));
  Write("new.xml", Schema("orders", "uint32"));
  const std::string of_files = Fingerprints({"old.xml", "new.xml"}).front();
  EXPECT_THAT(Explained({of_files, "old.xml", "new.xml"}),
              AllOf(StartsWith("new.xml:2:1: refused: table orders"),
                    HasSubstr("\nTo fix what is refused: korvelcheck suggest --write old.xml new.xml\n"
                              "To accept it temporarily: korvelcheck waive " +
                              of_files + " old.xml new.xml --reason 'REASON' --until YYYY-MM-DD\n")));
  const std::string of_project = Fingerprints().front();
  EXPECT_THAT(Explained({of_project, "--against", "git:HEAD", "schemas/orders.xml"}),
              HasSubstr("korvelcheck waive " + of_project + " --against git:HEAD schemas/orders.xml --reason"));
  EXPECT_THAT(
      Run({"explain", of_project, "--against", "git:HEAD", "schemas/users.xml"}).err,
      StartsWith("korvelcheck: explain: no finding has the fingerprint '" + of_project + "'\nThe check has no findings.\n"));
}

TEST_F(ExplainFindingTest, WaivedFindingHasNoNextCall) {
  const std::string fingerprint = Fingerprints().front();
  ASSERT_EQ(Run({"waive", fingerprint, "--reason", "empty", "--until", "2027-01-31"}).exit_code, 0);
  EXPECT_THAT(Explained({fingerprint}),
              AllOf(HasSubstr("  waived until 2027-01-31: empty\n"), Not(HasSubstr("To fix")), Not(HasSubstr("To accept"))));
}

// `waive` refuses a second exact waiver.
TEST_F(ExplainFindingTest, ExpiredWaiverIsToBeExtended) {
  const std::string fingerprint = Fingerprints().front();
  const std::string waive = "To accept it temporarily: korvelcheck waive " + fingerprint;
  ASSERT_EQ(Run({"waive", fingerprint, "--reason", "empty", "--until", "2099-01-31"}).exit_code, 0);
  const std::string waived = Read("korvelcheck.toml");
  const std::size_t day = waived.find("2099");
  ASSERT_NE(day, std::string::npos);
  std::string expired = waived;
  expired.replace(day, 4, "2020");
  Write("korvelcheck.toml", expired);
  EXPECT_EQ(Run({"waive", fingerprint, "--reason", "empty", "--until", "2099-01-31"}).exit_code, 2);
  EXPECT_THAT(Explained({fingerprint}), AllOf(HasSubstr("\nTo accept it temporarily: change 'until' of the waiver in "
                                                        "korvelcheck.toml:5, 2020-01-31, to a later day\n\nprimary-key.size: "),
                                              Not(HasSubstr(waive))));
  // A wide one is no obstacle.
  Write("korvelcheck.toml", waived.substr(0, waived.find("\n[[")));
  ASSERT_EQ(Run({"waive", fingerprint, "--wide", "--reason", "empty", "--until", "2099-01-31"}).exit_code, 0);
  expired = Read("korvelcheck.toml");
  expired.replace(expired.find("2099"), 4, "2020");
  Write("korvelcheck.toml", expired);
  EXPECT_THAT(Explained({fingerprint}), HasSubstr(waive));
}

TEST_F(ExplainFindingTest, ExplainsFindingsAboutTheProjectFile) {
  Git({"checkout", "--quiet", "schemas"});
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\nexclude = ['schemas/users.xml']\nagainst = 'git:HEAD'\n");
  ASSERT_EQ(Fingerprints().size(), 1u);
  EXPECT_THAT(Explained({Fingerprints().front()}),
              AllOf(StartsWith("korvelcheck.toml:"), HasSubstr("[project.no-longer-checked]"),
                    HasSubstr("\nTo accept it temporarily: korvelcheck waive "), HasSubstr("\n\nproject.no-longer-checked: ")));
}

// A file with faults hides nothing about the others.
TEST_F(ExplainFindingTest, OtherFilesMayHaveFaults) {
  const std::string fingerprint = Fingerprints().front();
  Write("schemas/users.xml", "<metalib");
  const Outcome explained = Run({"explain", fingerprint});
  EXPECT_EQ(explained.exit_code, 0);
  EXPECT_THAT(explained.out, HasSubstr("[primary-key.size]"));
  EXPECT_THAT(explained.err, StartsWith("schemas/users.xml:1:1: error: "));
  // `suggest --write` and `waive` would fail.
  EXPECT_THAT(explained.out, AllOf(Not(HasSubstr("To fix")), Not(HasSubstr("To accept"))));
  const Outcome outcome = Run({"explain", "0123456789abcdef"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_THAT(outcome.err, StartsWith("schemas/users.xml:1:1: error: "));
}

TEST_F(ExplainFindingTest, RefusesUnknownFingerprints) {
  const std::string fingerprint = Fingerprints().front();
  const std::string list = "The check has these findings:\n  " + fingerprint + "  schemas/orders.xml: table orders: " +
                           "type of uid: uint64 -> uint32\n"
                           "Reports of 'korvelcheck check' print the fingerprint of each finding; name the same files and "
                           "baselines.\n";
  ExpectRefused({"explain", "0123456789abcdef"},
                "korvelcheck: explain: no finding has the fingerprint '0123456789abcdef'\n" + list);
  std::string similar = fingerprint;
  similar.back() = similar.back() == '0' ? '1' : '0';
  ExpectRefused({"explain", similar}, "korvelcheck: explain: no finding has the fingerprint '" + similar + "' (did you mean '" +
                                          fingerprint + "'?)\n" + list);
}

// Which of many fingerprints begin alike is not known in advance; all of them begin with one of 65,536 prefixes.
TEST_F(ExplainFindingTest, RefusesAmbiguousPrefixes) {
  std::vector<std::string> before;
  std::vector<std::string> after;
  for (int i = 0; i < 1200; ++i) {
    const std::string name = "t" + std::to_string(i);
    before.push_back(Table({.name = name}));
    after.push_back(Table({.name = name, .key_type = "uint32"}));
  }
  Write("old.xml", Library(5, before));
  Write("new.xml", Library(6, after));
  std::vector<std::string> found = Fingerprints({"old.xml", "new.xml", "--max-findings", "1200"});
  std::ranges::sort(found);
  const auto same = [](const std::string& a, const std::string& b) { return a.substr(0, 4) == b.substr(0, 4); };
  const auto first = std::ranges::adjacent_find(found, same);
  ASSERT_NE(first, found.end());
  const std::string prefix = first->substr(0, 4);
  const Outcome outcome = Run({"explain", prefix, "old.xml", "new.xml"});
  EXPECT_EQ(outcome.exit_code, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err,
              AllOf(StartsWith("korvelcheck: explain: several fingerprints begin with '" + prefix + "'\nThey are:\n"),
                    HasSubstr("  " + *first + "  new.xml: table t"), HasSubstr("  " + *std::next(first) + "  ")));
}

TEST_F(ExplainFindingTest, ReplacesNothingThatItReads) {
  const auto expect_kept = [&](const std::vector<std::string>& call, const std::string& file, const std::string& error) {
    const std::string before = Read(file);
    ExpectRefused(Joined(call, {"-o", file}), "korvelcheck: -o " + file + " would replace " + error + "\n");
    EXPECT_EQ(Read(file), before);
  };
  const std::string of_project = Fingerprints().front();
  expect_kept({"explain", of_project}, "schemas/orders.xml", "an input");
  expect_kept({"explain", of_project}, "korvelcheck.toml", "an input");
  Write("own.toml", Read("korvelcheck.toml"));
  expect_kept({"explain", of_project, "--project", "own.toml"}, "own.toml", "an input");
  Write("old.xml", Schema("orders"));
  Write("new.xml", Schema("orders", "uint32"));
  const std::string of_files = Fingerprints({"old.xml", "new.xml"}).front();
  expect_kept({"explain", of_files, "old.xml", "new.xml"}, "new.xml", "an input");
  expect_kept({"explain", of_files, "old.xml", "new.xml"}, "old.xml", "an input");
}

TEST_F(ExplainFindingTest, WrongCallsAreRefused) {
  const std::string hint = "\nTry 'korvelcheck explain --help'.\n";
  ExpectRefused({"explain", "sort", "--against", "git:HEAD"},
                "korvelcheck: explain: 'sort' is not a fingerprint; allowed with files and --against: at least four hexadecimal "
                "digits" +
                    hint);
  ExpectRefused({"explain", Fingerprints().front(), "--format", "json"},
                "korvelcheck: explain: a finding is explained as text; 'korvelcheck check' has it in other formats" + hint);
  ExpectRefused({"explain", "0123456789abcdef", "nowhere.xml"}, "korvelcheck: nowhere.xml: no schema file in either state\n");
  const Outcome nothing = Run({"explain", "0123456789abcdef", "--no-project"});
  EXPECT_EQ(nothing.exit_code, 2);
  EXPECT_THAT(nothing.err,
              EndsWith("\nA fingerprint, from a report of 'korvelcheck check', requires what that check compared: OLD "
                       "and NEW, or --against.\n"));
}

}  // namespace
}  // namespace tool_test
