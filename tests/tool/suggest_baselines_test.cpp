// suggest with several baselines: the fixed version is allowed after each of them.
#include <gmock/gmock.h>

#include "project_repository.h"

namespace tool_test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class SuggestBaselinesTest : public ProjectTest {
 protected:
  // A table with fields behind its key.
  static std::string Fields(int version, const std::string& fields) { return Library(version, {Table({.fields = fields})}); }

  // The first baseline is HEAD~1, the second HEAD.
  void CommitBoth(const std::string& first, const std::string& second) const {
    Write("schemas/orders.xml", first);
    Commit("first");
    Write("schemas/orders.xml", second);
    Commit("second");
  }

  Outcome Suggest(const std::vector<std::string>& more = {}) const {
    return Run(Joined({"suggest", "--against", "git:HEAD~1", "--against", "git:HEAD", "schemas/orders.xml"}, more));
  }
};

constexpr char kA[] = R"(<entry name="a" type="uint32"/>)";
constexpr char kB[] = R"(<entry name="b" type="uint32" version="6"/>)";

TEST_F(SuggestBaselinesTest, FixesWhatEachBaselineRefuses) {
  CommitBoth(Fields(5, kA), Fields(6, std::string(kA) + kB));
  // The first baseline refuses the change of a, only the second one that of b.
  Write("schemas/orders.xml", Fields(7, R"(<entry name="a" type="uint16"/><entry name="b" type="uint16" version="6"/>)"));
  const Outcome outcome = Suggest({"--write"});
  ExpectOutcome(outcome, 0, "schemas/orders.xml: fixed\n", "");
  const std::string fixed = Read("schemas/orders.xml");
  EXPECT_THAT(fixed, HasSubstr(kA));
  EXPECT_THAT(fixed, HasSubstr(kB));
  EXPECT_EQ(Run({"check", "--against", "git:HEAD~1", "--against", "git:HEAD"}).exit_code, 0);
  ExpectOutcome(Suggest({"--write"}), 0, "", "korvelcheck: nothing to fix: every table that was compared is allowed\n");
}

// The file is as the second baseline has it: what the first one refuses cannot be undone.
TEST_F(SuggestBaselinesTest, BaselinesMayNeedDifferentVersions) {
  CommitBoth(Schema("orders", "uint64"), Schema("orders", "uint32"));
  const std::string before = Read("schemas/orders.xml");
  const Outcome outcome = Suggest({"--write"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, StartsWith("schemas/orders.xml: error: no suggestion: table 'orders' stays refused ["));
  EXPECT_THAT(outcome.err, EndsWith("\n   found no version that is allowed after each baseline\n"));
  EXPECT_EQ(Read("schemas/orders.xml"), before);
}

TEST_F(SuggestBaselinesTest, OneTableDoesNotWithholdTheFixesOfOthers) {
  const auto library = [](const std::string& key_type, const std::string& type) {
    const std::string field = "<entry name=\"a\" type=\"" + type + "\"/>";
    return Library(5, {Table({.name = "orders", .key_type = key_type}), Table({.name = "carts", .fields = field})});
  };
  CommitBoth(library("uint64", "uint32"), library("uint32", "uint32"));
  Write("schemas/orders.xml", library("uint32", "uint16"));
  const Outcome outcome = Suggest({"--write"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(outcome.out, "schemas/orders.xml: fixed\n");
  EXPECT_THAT(outcome.err, StartsWith("schemas/orders.xml: error: no suggestion: table 'orders' stays refused ["));
  EXPECT_THAT(outcome.err, EndsWith("\n   found no version that is allowed after each baseline\n"));
  EXPECT_THAT(outcome.err, Not(HasSubstr("carts")));
  const std::string fixed = Read("schemas/orders.xml");
  EXPECT_THAT(fixed, HasSubstr(Table({.name = "orders", .key_type = "uint32"})));
  EXPECT_THAT(fixed, HasSubstr(std::string(kA) + R"(<entry name="a_2" type="uint16" version="6"/>)"));
  EXPECT_EQ(Suggest({"--write"}).out, "");
}

// The first baseline accepts the new type only with a waiver, which no other type has.
TEST_F(SuggestBaselinesTest, KeepsWhatOneBaselineAccepts) {
  const auto field = [](const std::string& type) { return Fields(5, "<entry name=\"f\" type=\"" + type + "\"/>"); };
  CommitBoth(field("uint64"), field("uint16"));
  const std::string changed = field("uint32");
  Write("schemas/orders.xml", changed);
  const std::string json = Run({"check", "--against", "git:HEAD~1", "--format", "json"}).out;
  const std::string key = "\"fingerprint\": \"";
  const std::string fingerprint = json.substr(json.find(key, json.find("\"path\": \"orders.f\"")) + key.size(), 16);
  ASSERT_EQ(Run({"waive", fingerprint, "--against", "git:HEAD~1", "--reason", "r", "--until", "2026-12-31"}).exit_code, 0);
  ASSERT_EQ(Run({"check", "--against", "git:HEAD~1"}).exit_code, 0);
  const Outcome outcome = Suggest({"--write"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr("table 'orders' stays refused ["));
  EXPECT_THAT(outcome.err, EndsWith("\n   found no version that is allowed after each baseline\n"));
  EXPECT_EQ(Read("schemas/orders.xml"), changed);
}

TEST_F(SuggestBaselinesTest, TheProjectFileMayNameThem) {
  CommitBoth(Fields(5, kA), Fields(6, kA));
  Write("schemas/orders.xml", Fields(6, R"(<entry name="a" type="uint16"/>)"));
  const Outcome named = Suggest();
  EXPECT_EQ(named.exit_code, 0);
  EXPECT_THAT(named.out, HasSubstr("\n+"));
  Write("korvelcheck.toml", "[schemas]\npaths = ['schemas/**/*.xml']\nagainst = ['git:HEAD~1', 'git:HEAD']\n");
  ExpectOutcome(Run({"suggest"}), 0, named.out, "");
}

TEST_F(SuggestBaselinesTest, FilesThatOneBaselineLacksAreFixedForTheOther) {
  Git({"rm", "-q", "schemas/orders.xml"});
  CommitBoth(Fields(5, kA), Fields(5, kA));
  Git({"rm", "-q", "--cached", "schemas/orders.xml"});
  Git({"commit", "-q", "-m", "third"});
  Write("schemas/orders.xml", Fields(6, R"(<entry name="a" type="uint16"/>)"));
  ExpectOutcome(Run({"suggest", "--against", "git:HEAD~1", "--against", "git:HEAD", "--write"}), 0, "schemas/orders.xml: fixed\n",
                "");
  EXPECT_THAT(Read("schemas/orders.xml"), HasSubstr(kA));
}

}  // namespace
}  // namespace tool_test
