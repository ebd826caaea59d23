// Renamed fields: one finding, and a suggestion that restores the old name everywhere.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tool_test.h"

namespace tool_test {
namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kSuggestion[] = "renamed? fields are matched by name; keep amount instead of amuont";

class RenamedTest : public ToolTest {
 protected:
  // A table whose field `name` is a counter, and in the key and in an index.
  static std::string With(int version, const std::string& name, const std::string& more = "") {
    return Library(version, {"<meta name=\"orders\"><entry name=\"uid\" type=\"uint64\"/><entry name=\"" + name +
                             "\" type=\"uint32\"/><entry name=\"items\" type=\"int8\" count=\"9\" refer=\"" + name + "\"/>" +
                             more + "<primarykey entries=\"uid " + name + "\"/><index name=\"by_amount\"><column entry=\"" +
                             name + "\"/></index></meta>"});
  }

  RenamedTest() {
    Write("old.xml", With(5, "amount"));
    Write("new.xml", With(6, "amuont"));
  }

  Outcome Check(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> arguments = {"check", "old.xml", "new.xml"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return Korvelcheck(arguments);
  }
};

// It was reported as a removed and an added field.
TEST_F(RenamedTest, MisspelledFieldIsOneFinding) {
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr("\nnew.xml:2:67: refused [primary-key.field] "));
  EXPECT_THAT(outcome.out, HasSubstr("\n  change: field amount renamed to amuont\n"));
  EXPECT_THAT(outcome.out, HasSubstr("\n  was: old.xml:2:67  amount\n"));
  EXPECT_THAT(outcome.out, HasSubstr(std::string("\n  suggestion: ") + kSuggestion + "\n"));
  EXPECT_THAT(outcome.out, HasSubstr("; 1 finding, 0 waived\n"));
  EXPECT_THAT(outcome.out, Not(HasSubstr("warning [")));
}

TEST_F(RenamedTest, EveryFormatHasTheSuggestion) {
  for (const std::string format : {"text", "json", "sarif", "junit", "github", "gitlab", "markdown", "html"}) {
    EXPECT_THAT(Check({"--format", format}).out, HasSubstr("fields are matched by name; keep amount instead of amuont"))
        << format;
  }
  const nlohmann::json change = nlohmann::json::parse(Check({"--format", "json"}).out)["tables"][0]["changes"]["edits"][1];
  EXPECT_EQ(change["kind"], "entry-renamed");
  EXPECT_EQ(change["item"], "amount");
  EXPECT_EQ(change["after"], "amuont");
}

TEST_F(RenamedTest, DiffListsOneChange) {
  EXPECT_THAT(Korvelcheck({"diff", "old.xml", "new.xml"}).out,
              HasSubstr("table orders: 1 change\n  new.xml:2:67: field amount renamed to amuont (was at old.xml:2:67)\n"));
}

TEST_F(RenamedTest, SuggestRestoresTheNameEverywhere) {
  const Outcome outcome = Korvelcheck({"suggest", "old.xml", "new.xml", "--file"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_EQ(outcome.out, With(6, "amount"));
}

TEST_F(RenamedTest, SuggestKeepsOtherChanges) {
  const std::string note = "<entry name=\"note\" type=\"uint32\" version=\"6\"/>";
  Write("new.xml", With(6, "amuont", note));
  EXPECT_EQ(Korvelcheck({"suggest", "old.xml", "new.xml", "--file"}).out, With(6, "amount", note));
}

TEST_F(RenamedTest, SuggestRestoresHundredsOfNames) {
  const auto library = [](int version, const std::string& prefix) {
    std::string fields;
    for (int i = 0; i < 500; ++i) fields += "<entry name=\"" + prefix + std::to_string(i) + "\" type=\"int8\"/>";
    return Library(version, {Table({.fields = fields})});
  };
  Write("old.xml", library(5, "field_"));
  Write("new.xml", library(6, "feild_"));
  EXPECT_EQ(Korvelcheck({"suggest", "old.xml", "new.xml", "--file"}).out, library(6, "field_"));
  EXPECT_THAT(Check().out, HasSubstr("; 500 findings, 0 waived\n"));
}

// A waiver covers this name only.
TEST_F(RenamedTest, WaiverCoversOneName) {
  const auto json = nlohmann::json::parse(Check({"--format", "json"}).out);
  const std::string fingerprint = json["tables"][0]["changes"]["findings"][0]["fingerprint"];
  const Outcome waive = Korvelcheck({"waive", fingerprint, "old.xml", "new.xml", "--reason", "r", "--until", "2099-01-01"});
  ASSERT_EQ(waive.exit_code, 0) << waive.err;
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr("\nchange = \"field amount renamed to amuont\"\n"));
  EXPECT_EQ(Check().exit_code, 0);
  Write("new.xml", With(6, "amounts"));
  EXPECT_EQ(Check().exit_code, 1);
}

TEST_F(RenamedTest, HistoryReportsTheStep) {
  const Outcome outcome = Korvelcheck({"history", "old.xml", "new.xml"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(outcome.out, HasSubstr(kSuggestion));
}

// The warnings about both names belong to the refused change.
TEST_F(RenamedTest, HasNoWarningsAboutTheNewName) {
  const auto array = [](const std::string& name) {
    return "<entry name=\"n\" type=\"uint32\"/><entry name=\"" + name + "\" type=\"int8\" count=\"9\" refer=\"n\"/>";
  };
  Write("old.xml", Library(5, {Table({.fields = array("items")})}));
  Write("new.xml", Library(6, {Table({.fields = array("itmes")})}));
  EXPECT_THAT(Check().out, Not(HasSubstr("warning [")));
  EXPECT_EQ(Korvelcheck({"suggest", "old.xml", "new.xml", "--file"}).out, Library(6, {Table({.fields = array("items")})}));
}

// What is allowed stays allowed: TLV records have no names.
TEST_F(RenamedTest, AllowedNamesStayAllowed) {
  const auto library = [](int version, const std::string& name) {
    return Library(version,
                   {"<meta name=\"box\"><entry name=\"" + name + "\" id=\"1\" type=\"uint32\"/></meta>",
                    "<meta name=\"orders\"><entry name=\"uid\" id=\"1\" type=\"uint64\"/><entry name=\"box\" id=\"2\" "
                    "type=\"box\"/><primarykey entries=\"uid\"/></meta>"},
                   "TLV");
  };
  Write("old.xml", library(5, "amount"));
  Write("new.xml", library(6, "amuont"));
  const Outcome outcome = Check({"--created-as", "tlv"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
  EXPECT_THAT(outcome.out, Not(HasSubstr("renamed?")));
}

}  // namespace
}  // namespace tool_test
