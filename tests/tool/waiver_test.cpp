// Waivers of the project file: which findings they match, until when, their faults; the command `waive`.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "git_repository.h"

namespace tool_test {
namespace {

using testing::HasSubstr;

// In the constructor, wide.xml narrows the key of orders: one refused table, one finding.
class WaiverTest : public GitTest {
 protected:
  WaiverTest() {
    environment_.emplace_back("SOURCE_DATE_EPOCH=1767225600");  // 2026-01-01
  }

  Outcome Check(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"check", "old.xml", "wide.xml", "--format", "json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Run(arguments);
  }
  std::string Fingerprint() const {
    const auto json = nlohmann::json::parse(Check({"--no-project"}).out);
    for (const auto& table : json["tables"]) {
      if (table["status"] == "refused") return table["changes"]["findings"][0]["fingerprint"];
    }
    ADD_FAILURE() << "no finding";
    return "";
  }
  void Waive(const std::string& members) const { Write("korvelcheck.toml", "[[waivers]]\n" + members); }
  Outcome WaiveFinding(const std::vector<std::string>& arguments) const {
    std::vector<std::string> all = {"waive"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return Run(all);
  }
  // What a check reports about the project file; "" for nothing.
  static std::string About(const Outcome& outcome) {
    std::string lines;
    const auto json = nlohmann::json::parse(outcome.out, nullptr, false);
    if (json.is_discarded()) return "no report: " + outcome.err;
    for (const auto& finding : json.value("project", nlohmann::json::array())) {
      lines += finding["rule"].get<std::string>() + ": " + finding["text"].get<std::string>() + "\n";
    }
    return lines;
  }
};

TEST_F(WaiverTest, WaivedTableDoesNotFailTheCall) {
  EXPECT_EQ(Check().exit_code, 1);
  Waive("fingerprint = \"" + Fingerprint() + "\"\nreason = \"the table is empty\"\nuntil = 2026-01-01\n");
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("\"verdict\": \"refused\""));
  EXPECT_THAT(outcome.out, HasSubstr("the table is empty"));
  EXPECT_EQ(Check({"--no-project"}).exit_code, 1);
}

TEST_F(WaiverTest, TableRuleAndEntryNameAFinding) {
  const std::string rest = "reason = \"r\"\nuntil = \"2027-01-31\"\n";
  Waive("table = \"orders\"\nrule = \"primary-key.size\"\nentry = \"uid\"\n" + rest);
  EXPECT_EQ(Check().exit_code, 0);
  for (const char* other : {"table = \"users\"\nrule = \"primary-key.size\"\nentry = \"uid\"\n",
                            "table = \"orders\"\nrule = \"primary-key.count\"\nentry = \"uid\"\n",
                            "table = \"orders\"\nrule = \"primary-key.size\"\nentry = \"\"\n"}) {
    Waive(other + rest);
    EXPECT_EQ(Check().exit_code, 1) << other;
  }
}

TEST_F(WaiverTest, RemovedTableCanBeWaived) {
  Write("gone.xml", Library(5, {Table({.name = "users"})}));
  Waive("table = \"orders\"\nrule = \"arguments.table-missing\"\nentry = \"\"\nreason = \"r\"\nuntil = 2027-01-31\n");
  const auto json = nlohmann::json::parse(Run({"check", "old.xml", "gone.xml", "--format", "json"}).out);
  const std::string rule = json["tables"][0]["rule"];
  Waive("table = \"orders\"\nrule = \"" + rule + "\"\nentry = \"\"\nreason = \"r\"\nuntil = 2027-01-31\n");
  EXPECT_EQ(Run({"check", "old.xml", "gone.xml"}).exit_code, 0);
}

TEST_F(WaiverTest, OneFindingOfTwoIsNotEnough) {
  Write("wide.xml", Library(5, {Table({.key_type = "uint32"}), Table({.name = "users", .key_type = "uint32"})}));
  Waive("fingerprint = \"" + Fingerprint() + "\"\nreason = \"r\"\nuntil = 2027-01-31\n");
  EXPECT_EQ(Check().exit_code, 1);
}

// Two tables embed a structure with a refused change. The fingerprint names the change in both; table, rule and entry only one.
TEST_F(WaiverTest, SharedFindingIsWaivedForTheTablesThatAreNamed) {
  const auto library = [](const char* type) {
    return Library(5, {std::string("<meta name=\"item\"><entry name=\"price\" type=\"") + type + "\"/></meta>",
                       Table({.name = "orders", .fields = "<entry name=\"i\" type=\"item\"/>"}),
                       Table({.name = "carts", .fields = "<entry name=\"i\" type=\"item\"/>"})});
  };
  Write("old.xml", library("uint64"));
  Write("wide.xml", library("uint32"));
  const std::string rest = "reason = \"r\"\nuntil = 2027-01-31\n";
  Waive("fingerprint = \"" + Fingerprint() + "\"\n" + rest);
  EXPECT_EQ(Check().exit_code, 0);
  for (const auto& [waived, refused] : {std::pair("orders", "carts"), std::pair("carts", "orders")}) {
    Waive("table = \"" + std::string(waived) + "\"\nrule = \"field.size\"\nentry = \"i.price\"\n" + rest);
    EXPECT_EQ(Check().exit_code, 1);
    EXPECT_THAT(Check().out, HasSubstr("\"failing\": 1"));
    EXPECT_THAT(Run({"check", "old.xml", "wide.xml"}).out, HasSubstr("path: " + std::string(refused) + ".i.price")) << waived;
    EXPECT_THAT(Run({"check", "old.xml", "wide.xml", "--format", "junit"}).out,
                HasSubstr("failure message=\"a field's size was reduced: " + std::string(refused)));
    EXPECT_THAT(Run({"check", "old.xml", "wide.xml", "--format", "github"}).out, HasSubstr("::error "));
  }
}

TEST_F(WaiverTest, ExpiredWaiverHasNoEffect) {
  const std::string fingerprint = Fingerprint();
  Waive("fingerprint = \"" + fingerprint + "\"\nreason = \"r\"\nuntil = 2025-12-31\n");
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(About(outcome), "waiver.expired: the waiver of " + fingerprint + " expired on 2025-12-31\n");
  EXPECT_EQ(Run({"check", "old.xml", "same.xml"}).exit_code, 1);
}

// Regression: a time behind the year 2262 overflowed into the past, where no waiver has expired.
TEST_F(WaiverTest, ExpiresAtAnyTimeThatReplacesTheClock) {
  Waive("fingerprint = \"" + Fingerprint() + "\"\nreason = \"r\"\nuntil = 2027-01-31\n");
  for (const char* seconds : {"1801600000", "9223372036", "9223372037", "253402300799"}) {
    environment_.back() = std::string("SOURCE_DATE_EPOCH=") + seconds;
    EXPECT_EQ(Check().exit_code, 1) << seconds;
  }
}

TEST_F(WaiverTest, OnlyANumberReplacesTheClock) {
  Waive("fingerprint = \"0123456789abcdef\"\nreason = \"r\"\nuntil = 2027-01-31\n");
  environment_.back() = "SOURCE_DATE_EPOCH=soon";
  ExpectInputError(Check(), "korvelcheck: SOURCE_DATE_EPOCH is 'soon'; allowed: 0 to 253402300799 seconds\n");
}

TEST_F(WaiverTest, MalformedWaiversAreFindings) {
  struct Malformed {
    const char* members;
    const char* text;
  };
  const Malformed kCases[] = {
      {"reason = \"r\"\nuntil = 2027-01-31\n", "it must name a fingerprint, or table, rule and entry"},
      {"table = \"t\"\nrule = \"r\"\nreason = \"r\"\nuntil = 2027-01-31\n",
       "it must name a fingerprint, or table, rule and entry"},
      {"fingerprint = \"0123456789abcdef\"\ntable = \"t\"\nreason = \"r\"\nuntil = 2027-01-31\n",
       "it has both a fingerprint and table, rule or entry; allowed: one of the two"},
      {"fingerprint = \"0123456789ABCDEF\"\nreason = \"r\"\nuntil = 2027-01-31\n",
       "fingerprint is '0123456789ABCDEF'; allowed: 16 hexadecimal digits, as shown in reports"},
      {"fingerprint = \"0123456789abcdef\"\nuntil = 2027-01-31\n", "it has no reason; allowed: a string that is not blank"},
      {"fingerprint = \"0123456789abcdef\"\nreason = \" \\t\"\nuntil = 2027-01-31\n",
       "it has no reason; allowed: a string that is not blank"},
      {"fingerprint = \"0123456789abcdef\"\nreason = \"r\"\n", "it has no last day; allowed: until = \"2027-01-31\""},
      {"fingerprint = \"0123456789abcdef\"\nreason = \"r\"\nuntil = \"soon\"\n",
       "until is 'soon'; allowed: a day like 2027-01-31"},
      {"fingerprint = \"0123456789abcdef\"\nreason = \"r\"\nuntil = \"2027-02-29\"\n",
       "until is '2027-02-29'; allowed: a day like 2027-01-31"},
      {"table = \"t\"\nrule = \"primary-key.sise\"\nentry = \"\"\nreason = \"r\"\nuntil = 2027-01-31\n",
       "rule is 'primary-key.sise' (did you mean 'primary-key.size'?); allowed: what 'korvelcheck rules' lists"},
  };
  for (const auto& [members, text] : kCases) {
    Waive(members);
    const Outcome outcome = Run({"check", "old.xml", "same.xml", "--format", "json"});
    EXPECT_EQ(outcome.exit_code, 1) << members;
    EXPECT_EQ(About(outcome), std::string("waiver.malformed: invalid waiver: ") + text + "\n");
  }
}

TEST_F(WaiverTest, SecondWaiverForOneFindingIsAFinding) {
  const std::string one = "fingerprint = \"" + Fingerprint() + "\"\nreason = \"r\"\nuntil = 2027-01-31\n";
  Waive(one + "[[waivers]]\n" + one);
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(About(outcome),
            "waiver.malformed: invalid waiver: korvelcheck.toml:1 already has a waiver for this finding; allowed: one\n");
}

// Regression: the finding has the same fingerprint in both, but lint ignored the waiver.
TEST_F(WaiverTest, LintAppliesWaivers) {
  Write("odd.xml", Library(5, {Table({.fields = "<entry name=\"2nd\" type=\"int8\"/>"})}));
  EXPECT_EQ(Run({"lint", "odd.xml"}).exit_code, 1);
  Waive("table = \"orders\"\nrule = \"field-name.invalid\"\nentry = \"2nd\"\nreason = \"r\"\nuntil = 2027-01-31\n");
  const Outcome outcome = Run({"lint", "odd.xml"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("verdict: refused (all waived)"));
  EXPECT_EQ(Run({"lint", "old.xml"}).exit_code, 0);
}

TEST_F(WaiverTest, UnusedWaiverIsAFindingIfAllWasCompared) {
  Write(
      "korvelcheck.toml",
      "[schemas]\npaths = [\"old.xml\"]\n[[waivers]]\nfingerprint = \"0123456789abcdef\"\nreason = \"r\"\nuntil = 2027-01-31\n");
  Commit("first");
  const Outcome outcome = Run({"check", "--against", "git:HEAD", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(About(outcome), "waiver.unused: the waiver of 0123456789abcdef matches no finding\n");
  EXPECT_EQ(Run({"check", "--against", "git:HEAD", "old.xml"}).exit_code, 0);
  EXPECT_EQ(Run({"check", "--against", "git:HEAD", "--table", "users"}).exit_code, 0);
  EXPECT_EQ(Run({"check", "old.xml", "same.xml"}).exit_code, 0);
}

TEST_F(WaiverTest, AppendsWaiverAndKeepsTheRest) {
  const std::string fingerprint = Fingerprint();
  const std::string before = "# ours\n[defaults]   # all\nlist-num=0\n\n\n# end";
  Write("korvelcheck.toml", before);
  ExpectOutcome(WaiveFinding({fingerprint, "--reason", "it's \"empty\"\n\\o/", "--until", "2026-02-28"}), 0,
                "korvelcheck.toml: waived " + fingerprint + " until 2026-02-28\n", "");
  EXPECT_EQ(Read("korvelcheck.toml"), before + "\n\n[[waivers]]\nfingerprint = \"" + fingerprint +
                                          "\"\nreason = \"it's \\\"empty\\\"\\u000a\\\\o/\"\nuntil = \"2026-02-28\"\n");
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, HasSubstr("it's \\\"empty\\\"\\n\\\\o/"));
}

TEST_F(WaiverTest, CreatesFileAndKeepsItsLineEnds) {
  ASSERT_EQ(WaiveFinding({"0123456789abcdef", "--reason", "r", "--until", "2026-01-01"}).exit_code, 0);
  EXPECT_EQ(Read("korvelcheck.toml"),
            "[[waivers]]\nfingerprint = \"0123456789abcdef\"\nreason = \"r\"\nuntil = \"2026-01-01\"\n");
  Write("crlf.toml", "[defaults]\r\nlist-num = 1\r\n");
  ASSERT_EQ(WaiveFinding({"0123456789abcdef", "--reason", "r", "--until", "2026-01-01", "--project", "crlf.toml"}).exit_code, 0);
  EXPECT_EQ(Read("crlf.toml"),
            "[defaults]\r\nlist-num = 1\r\n\r\n[[waivers]]\r\nfingerprint = \"0123456789abcdef\"\r\nreason = \"r\"\r\n"
            "until = \"2026-01-01\"\r\n");
}

TEST_F(WaiverTest, DoesNotWriteInvalidWaivers) {
  const std::string before = "[[waivers]]\nfingerprint = \"0123456789abcdef\"\nreason = \"r\"\nuntil = \"2026-01-01\"\n";
  Write("korvelcheck.toml", before);
  struct Wrong {
    std::vector<std::string> arguments;
    const char* text;
  };
  const Wrong kCases[] = {
      {{"0123", "--reason", "r", "--until", "2027-01-01"},
       "fingerprint is '0123'; allowed: 16 hexadecimal digits, as shown in reports"},
      {{"", "--reason", "r", "--until", "2027-01-01"}, "it must name a fingerprint, or table, rule and entry"},
      {{"fedcba9876543210", "--reason", " ", "--until", "2027-01-01"}, "it has no reason; allowed: a string that is not blank"},
      {{"fedcba9876543210", "--reason", "r", "--until", "2027-13-01"}, "until is '2027-13-01'; allowed: a day like 2027-01-31"},
      {{"fedcba9876543210", "--reason", "r", "--until", ""}, "it has no last day; allowed: until = \"2027-01-31\""},
      {{"fedcba9876543210", "--reason", "r", "--until", "2025-12-31"}, "2025-12-31 is in the past (today is 2026-01-01)"},
      {{"fedcba9876543210", "--reason", "\xff", "--until", "2027-01-01"},
       "korvelcheck.toml cannot take another waiver: 'waivers' is not a list of [[waivers]], or the reason is not UTF-8"},
      {{"0123456789abcdef", "--reason", "r", "--until", "2027-01-01"},
       "korvelcheck.toml:1 already has a waiver for this finding; allowed: one"},
      {{"fedcba9876543210", "--reason", "r", "--until", "2027-01-01", "--project", "-"}, "--project is '-'; allowed: a file"},
  };
  for (const auto& [arguments, text] : kCases) {
    ExpectInputError(WaiveFinding(arguments), std::string("korvelcheck: waive: ") + text + "\n");
    EXPECT_EQ(Read("korvelcheck.toml"), before);
  }
  EXPECT_EQ(WaiveFinding({"0123456789abcdef"}).exit_code, 2);
}

TEST_F(WaiverTest, DoesNotChangeInvalidProjectFile) {
  for (const char* text : {"[defaults]\nlist = 1\n", "not TOML", "waivers = []\n"}) {
    Write("korvelcheck.toml", text);
    EXPECT_EQ(WaiveFinding({"0123456789abcdef", "--reason", "r", "--until", "2027-01-01"}).exit_code, 2) << text;
    EXPECT_EQ(Read("korvelcheck.toml"), text);
  }
}

// A limit on the size of files fails the write itself, for every user.
TEST_F(WaiverTest, FailedWriteKeepsTheOldFile) {
  const std::string before = "# " + std::string(2000, '.') + "\n";
  Write("korvelcheck.toml", before);
  const std::vector<std::string> files = Files();
  const Outcome outcome = RunProgram(Call{.arguments = {"waive", "0123456789abcdef", "--reason", "r", "--until", "2027-01-01"},
                                          .directory = PathOf(""),
                                          .launcher = {"/bin/sh", "-c", "ulimit -f 1; exec \"$0\" \"$@\""},
                                          .environment = environment_});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.err, HasSubstr("cannot write"));
  EXPECT_EQ(Read("korvelcheck.toml"), before);
  EXPECT_EQ(Files(), files);
}

}  // namespace
}  // namespace tool_test
