// Waivers of the project file: what they cover, until when, their faults; the commands `waive` and `waivers`.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "git_repository.h"

namespace tool_test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

constexpr char kRest[] = "reason = \"r\"\nuntil = 2027-01-31\n";
constexpr char kProject[] = "[schemas]\npaths = [\"*.xml\"]\nagainst = \"git:HEAD\"\n";

std::string WithListNum(const std::string& number) {
  return Library(5, {Table({.attributes = "TableType=LIST;ListNum=" + number})});
}

std::string WithPrice(const std::string& type) {
  return Library(5, {Table({.fields = "<entry name=\"price\" type=\"" + type + "\"/>"})});
}

// Two tables embed a structure.
std::string WithSharedPrice(const std::string& type) {
  return Library(5, {"<meta name=\"item\"><entry name=\"price\" type=\"" + type + "\"/></meta>",
                     Table({.name = "orders", .fields = "<entry name=\"i\" type=\"item\"/>"}),
                     Table({.name = "carts", .fields = "<entry name=\"i\" type=\"item\"/>"})});
}

// In the constructor, wide.xml narrows the key of orders: one refused table, one finding.
class WaiverTest : public GitTest {
 protected:
  Outcome With(const std::vector<std::string>& arguments, const std::vector<std::string>& more) const {
    return Run(Joined(arguments, more));
  }
  Outcome Check(const std::vector<std::string>& more = {}) const {
    return With({"check", "old.xml", "wide.xml", "--format", "json"}, more);
  }
  // The findings of a check without waivers, in the order of the report.
  json Findings(const std::vector<std::string>& arguments = {"old.xml", "wide.xml"}) const {
    const auto report = json::parse(With({"check", "--format", "json"}, arguments).out, nullptr, false);
    json findings = json::array();
    if (report.is_discarded()) return findings;
    for (const auto& table : report["tables"]) {
      if (!table.contains("changes")) continue;
      for (const auto& finding : table["changes"]["findings"]) findings.push_back(finding);
    }
    return findings;
  }
  std::string Fingerprint(const std::vector<std::string>& arguments = {"old.xml", "wide.xml"}) const {
    const json findings = Findings(arguments);
    if (!findings.empty()) return findings.front()["fingerprint"];
    ADD_FAILURE() << "no finding";
    return "";
  }
  void Waive(const std::string& members) const { Write("korvelcheck.toml", "[[waivers]]\n" + members); }
  Outcome WaiveFinding(const std::vector<std::string>& arguments) const {
    return With({"waive", "--reason", "r", "--until", "2027-01-31"}, arguments);
  }
  // Commits one state of a.xml, leaves another one, and waives its only finding.
  void AcceptChange(const std::string& before, const std::string& after) const {
    std::filesystem::remove(PathOf("wide.xml"));
    Write("korvelcheck.toml", kProject);
    Write("a.xml", before);
    Commit("first");
    Write("a.xml", after);
    EXPECT_EQ(Run({"check"}).exit_code, 1);
    const Outcome outcome = WaiveFinding({Fingerprint({})});
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(Run({"check"}).exit_code, 0) << Run({"check"}).out;
  }
  // What a check reports about the project file; "" for nothing.
  static std::string About(const Outcome& outcome) {
    std::string lines;
    const auto report = json::parse(outcome.out, nullptr, false);
    if (report.is_discarded()) return "no report: " + outcome.err;
    for (const auto& finding : report.value("project", json::array())) {
      lines += finding["level"].get<std::string>() + " " + finding["rule"].get<std::string>() + ": " +
               finding["text"].get<std::string>() + "\n";
    }
    return lines;
  }
};

// --- What a waiver covers ---

// Regression: a waiver was for any change of the rule at its place.
TEST_F(WaiverTest, CoversOnlyTheAcceptedValue) {
  AcceptChange(WithListNum("100"), WithListNum("99"));
  Write("a.xml", WithListNum("1"));
  const Outcome outcome = Run({"check", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_THAT(About(outcome), HasSubstr("does not cover the change that is there now: attribute ListNum of orders: 100 -> 1"));
  Write("a.xml", WithListNum("99"));
  EXPECT_EQ(Run({"check"}).exit_code, 0);
}

// Regression: the waiver of one type was a waiver of every other one.
TEST_F(WaiverTest, CoversOnlyTheAcceptedType) {
  AcceptChange(WithPrice("float"), WithPrice("int32"));
  Write("a.xml", WithPrice("string\" size=\"4"));
  EXPECT_EQ(Run({"check"}).exit_code, 1);
}

TEST_F(WaiverTest, CoversOnlyTheAcceptedOldValue) {
  AcceptChange(WithListNum("100"), WithListNum("99"));
  const std::string waived = Read("korvelcheck.toml");
  Write("korvelcheck.toml", kProject);
  Write("a.xml", WithListNum("1000"));
  Commit("second");
  Write("korvelcheck.toml", waived);
  Write("a.xml", WithListNum("99"));
  EXPECT_EQ(Run({"check"}).exit_code, 1);
}

// The attributes of an added field are accepted together with its type.
TEST_F(WaiverTest, CoversOnlyTheAcceptedField) {
  const auto with_field = [](const std::string& attributes) {
    return Library(5, {Table({.fields = "<entry name=\"note\" type=\"int32\"" + attributes + "/>"})});
  };
  AcceptChange(Library(5, {Table()}), with_field(" id=\"7\" version=\"3\""));
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr("change = \"field note added: int32, id 7, version 3\"\n"));
  for (const char* other : {" id=\"7\" version=\"2\"", " id=\"8\" version=\"3\"", " id=\"7\" version=\"3\" count=\"9\""}) {
    Write("a.xml", with_field(other));
    EXPECT_EQ(Run({"check"}).exit_code, 1) << other;
  }
}

// Regression: a structure with any content was waived.
TEST_F(WaiverTest, CoversOnlyTheAcceptedStructure) {
  const auto with_structure = [](const std::string& structure, const std::string& members) {
    return Library(5, {"<meta name=\"money\"><entry name=\"value\" type=\"int64\"/></meta>",
                       "<meta name=\"cents\"><entry name=\"value\" type=\"int32\"/>" + members + "</meta>",
                       "<meta name=\"price\"><entry name=\"of\" type=\"" + structure + "\"/></meta>",
                       Table({.fields = "<entry name=\"cost\" type=\"price\"/>"})});
  };
  AcceptChange(with_structure("money", ""), with_structure("cents", ""));
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr("change = \"structure of of: money -> cents (content "));
  Write("a.xml", with_structure("cents", "<entry name=\"unit\" type=\"int32\"/>"));
  EXPECT_EQ(Run({"check"}).exit_code, 1);
  Write("a.xml", with_structure("cents", ""));
  EXPECT_EQ(Run({"check"}).exit_code, 0);
}

// Regression: a library of the same name in another file was waived, too.
TEST_F(WaiverTest, CoversOnlyTheAcceptedFile) {
  for (const char* directory : {"eu", "us"}) {
    std::filesystem::create_directory(PathOf(directory));
    Write(std::string(directory) + "/s.xml", WithPrice("float"));
  }
  Write("korvelcheck.toml", "[schemas]\npaths = [\"*/s.xml\"]\nagainst = \"git:HEAD\"\n");
  Commit("first");
  Write("eu/s.xml", WithPrice("int32"));
  ASSERT_EQ(WaiveFinding({Fingerprint({})}).exit_code, 0);
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr("file = \"eu/s.xml\"\n"));
  EXPECT_EQ(Run({"check"}).exit_code, 0);
  Write("us/s.xml", WithPrice("int32"));
  EXPECT_EQ(Run({"check"}).exit_code, 1);
  Write("eu/s.xml", WithPrice("float"));
  EXPECT_EQ(Run({"check"}).exit_code, 1);
}

// The same path in every call about the file: relative to the project file, wherever the call is made.
TEST_F(WaiverTest, FileIsThePathFromTheProjectFile) {
  std::filesystem::create_directory(PathOf("eu"));
  Write("eu/s.xml", WithPrice("float"));
  Write("old.xml", WithPrice("float"));
  Write("korvelcheck.toml", "[schemas]\npaths = [\"eu/*.xml\"]\nagainst = \"git:HEAD\"\n");
  Commit("first");
  Write("eu/s.xml", WithPrice("int32"));
  const std::string fingerprint = Fingerprint({});
  EXPECT_EQ(Fingerprint({"old.xml", "eu/s.xml"}), fingerprint);
  EXPECT_EQ(Fingerprint({"git:HEAD:eu/s.xml", "./eu/../eu/s.xml"}), fingerprint);
  const auto inside = json::parse(Run({"check", "--format", "json"}, "eu").out);
  EXPECT_EQ(inside["tables"][0]["changes"]["findings"][0]["fingerprint"], fingerprint);
  Commit("second");
  EXPECT_EQ(Fingerprint({"old.xml", "git:HEAD:eu/s.xml"}), fingerprint);
  Write("s.xml", WithPrice("int32"));
  EXPECT_NE(Fingerprint({"old.xml", "s.xml"}), fingerprint);
}

// For a file outside of the project only the name counts: the path to it is another one on every machine.
TEST_F(WaiverTest, FileOutsideOfTheProjectIsItsName) {
  for (const char* directory : {"project", "one", "two"}) std::filesystem::create_directory(PathOf(directory));
  Write("project/korvelcheck.toml", "");
  for (const char* file : {"one/s.xml", "two/s.xml", "two/t.xml"}) Write(file, WithPrice("int32"));
  Write("old.xml", WithPrice("float"));
  const auto fingerprint = [&](const std::string& file) {
    return Fingerprint({"old.xml", file, "--project", "project/korvelcheck.toml"});
  };
  EXPECT_EQ(fingerprint("one/s.xml"), fingerprint("two/s.xml"));
  EXPECT_NE(fingerprint("one/s.xml"), fingerprint("two/t.xml"));
}

// The waiver was written before the file was moved, in the same branch.
TEST_F(WaiverTest, CoversAMovedFileByItsOldPath) {
  AcceptChange(WithPrice("float"), WithPrice("int32"));
  std::filesystem::rename(PathOf("a.xml"), PathOf("b.xml"));
  const Outcome outcome = Run({"check", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.out;
  EXPECT_THAT(outcome.out, HasSubstr("\"moved\""));
  EXPECT_EQ(About(outcome), "");
  Write("b.xml", WithPrice("int16"));
  EXPECT_EQ(Run({"check"}).exit_code, 1);
}

TEST_F(WaiverTest, CoversAMovedFileByItsNewPath) {
  std::filesystem::remove(PathOf("wide.xml"));
  Write("korvelcheck.toml", kProject);
  Write("a.xml", WithPrice("float"));
  Commit("first");
  std::filesystem::remove(PathOf("a.xml"));
  Write("b.xml", WithPrice("int32"));
  ASSERT_EQ(WaiveFinding({Fingerprint({})}).exit_code, 0);
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr("file = \"b.xml\"\n"));
  EXPECT_EQ(Run({"check"}).exit_code, 0);
}

TEST_F(WaiverTest, ReadableKeysAreEnough) {
  Waive(
      "rule = \"primary-key.size\"\ntable = \"orders\"\npath = \"orders.uid\"\nchange = \"type of uid: uint64 -> uint32\"\n"
      "file = \"wide.xml\"\n" +
      std::string(kRest));
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 0) << About(outcome);
  EXPECT_THAT(outcome.out, HasSubstr("\"verdict\": \"refused\""));
  EXPECT_THAT(outcome.out, HasSubstr("\"wide\": false"));
  EXPECT_EQ(Check({"--no-project"}).exit_code, 1);
  for (const auto& [key, other] : {std::pair("rule", "field.size"), std::pair("table", "users"), std::pair("path", "orders"),
                                   std::pair("change", "type of uid: uint64 -> uint16"), std::pair("file", "other.xml")}) {
    std::string text = Read("korvelcheck.toml");
    const std::size_t begin = text.find(std::string(key) + " = \"") + std::string(key).size() + 4;
    text.replace(begin, text.find('"', begin) - begin, other);
    const std::string before = Read("korvelcheck.toml");
    Write("korvelcheck.toml", text);
    EXPECT_EQ(Check().exit_code, 1) << text;
    Write("korvelcheck.toml", before);
  }
}

TEST_F(WaiverTest, FingerprintMustAgree) {
  const std::string rest = "\nreason = \"r\"\nuntil = 2027-01-31\n";
  const std::string named =
      "rule = \"primary-key.size\"\ntable = \"orders\"\npath = \"orders.uid\"\nchange = \"type of uid: uint64 -> uint32\"\n"
      "file = \"wide.xml\"\nfingerprint = \"";
  const std::string fingerprint = Fingerprint();
  Waive(named + fingerprint + "\"" + rest);
  EXPECT_EQ(Check().exit_code, 0);
  Waive(named + "0123456789abcdef\"" + rest);
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(About(outcome),
            "error waiver.malformed: invalid waiver: its fingerprint is 0123456789abcdef, but the finding that it "
            "names has " +
                fingerprint + "\n");
  std::string other = named;
  other.replace(other.find("uint32"), 6, "uint16");
  Waive(other + fingerprint + "\"" + rest);
  EXPECT_EQ(About(Check()), "error waiver.malformed: invalid waiver: its fingerprint belongs to another finding\n");
}

// Tables share the changes of a structure: who accepts one accepts it in every table of the file.
TEST_F(WaiverTest, WaiverOfASharedChangeCoversEveryTable) {
  Write("old.xml", WithSharedPrice("uint64"));
  Write("wide.xml", WithSharedPrice("uint32"));
  const std::string named =
      "rule = \"field.size\"\ntable = \"orders\"\npath = \"orders.i.price\"\nchange = \"type of price: uint64 -> uint32\"\n"
      "file = \"wide.xml\"\n";
  Waive(named + kRest);
  EXPECT_EQ(Check().exit_code, 0) << Check().out;
  EXPECT_EQ(Check({"--table", "carts"}).exit_code, 1) << "the table that is named is not compared";
  Waive(named + "fingerprint = \"" + Fingerprint() + "\"\n" + kRest);
  EXPECT_EQ(Check().exit_code, 0);
  EXPECT_EQ(Check({"--table", "carts"}).exit_code, 0) << About(Check({"--table", "carts"}));
}

TEST_F(WaiverTest, WideWaiverCoversAnyChangeOfTheRule) {
  const std::string rest = "reason = \"the table is empty\"\nuntil = \"2027-01-31\"\n";
  Waive("table = \"orders\"\nrule = \"primary-key.size\"\nentry = \"uid\"\n" + rest);
  EXPECT_EQ(Check().exit_code, 0);
  EXPECT_THAT(Check().out, HasSubstr("\"wide\": true"));
  EXPECT_THAT(Run({"check", "old.xml", "wide.xml"}).out,
              HasSubstr("\n  waived (wide: any change of this rule here) until 2027-01-31: the table is empty\n"));
  Write("wide.xml", Library(5, {Table({.key_type = "uint16"}), Table({.name = "users"})}));
  EXPECT_EQ(Check().exit_code, 0);
  for (const char* other : {"table = \"users\"\nrule = \"primary-key.size\"\nentry = \"uid\"\n",
                            "table = \"orders\"\nrule = \"primary-key.count\"\nentry = \"uid\"\n",
                            "table = \"orders\"\nrule = \"primary-key.size\"\nentry = \"\"\n"}) {
    Waive(other + rest);
    EXPECT_EQ(Check().exit_code, 1) << other;
  }
}

// The exact waiver says what was accepted.
TEST_F(WaiverTest, ExactWaiverIsShownRatherThanAWideOne) {
  Waive("table = \"orders\"\nrule = \"primary-key.size\"\nentry = \"uid\"\n" + std::string(kRest));
  ASSERT_EQ(WaiveFinding({Fingerprint(), "old.xml", "wide.xml"}).exit_code, 0);
  EXPECT_THAT(Check().out, HasSubstr("\"wide\": false"));
  EXPECT_EQ(About(Check()), "");
}

TEST_F(WaiverTest, RemovedTableCanBeWaived) {
  Write("gone.xml", Library(5, {Table({.name = "users"})}));
  const std::vector<std::string> files = {"old.xml", "gone.xml"};
  ASSERT_EQ(WaiveFinding({Fingerprint(files), "old.xml", "gone.xml"}).exit_code, 0);
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr("path = \"orders\"\nchange = \"table removed\"\n"));
  EXPECT_EQ(With({"check"}, files).exit_code, 0);
  std::filesystem::remove(PathOf("korvelcheck.toml"));
  ASSERT_EQ(WaiveFinding({Fingerprint(files), "--wide", "old.xml", "gone.xml"}).exit_code, 0);
  EXPECT_EQ(With({"check"}, files).exit_code, 0);
}

TEST_F(WaiverTest, OneFindingOfTwoIsNotEnough) {
  Write("wide.xml", Library(5, {Table({.key_type = "uint32"}), Table({.name = "users", .key_type = "uint32"})}));
  ASSERT_EQ(WaiveFinding({Fingerprint(), "old.xml", "wide.xml"}).exit_code, 0);
  EXPECT_EQ(Check().exit_code, 1);
}

// Two tables embed a structure with a refused change. Table, rule and entry name it in one of them only.
TEST_F(WaiverTest, SharedFindingIsWaivedForTheTableThatAWideWaiverNames) {
  Write("old.xml", WithSharedPrice("uint64"));
  Write("wide.xml", WithSharedPrice("uint32"));
  for (const auto& [waived, refused] : {std::pair("orders", "carts"), std::pair("carts", "orders")}) {
    Waive("table = \"" + std::string(waived) + "\"\nrule = \"field.size\"\nentry = \"i.price\"\n" + kRest);
    EXPECT_EQ(Check().exit_code, 1);
    EXPECT_THAT(Check().out, HasSubstr("\"failing\": 1"));
    EXPECT_THAT(Run({"check", "old.xml", "wide.xml"}).out, HasSubstr("path: " + std::string(refused) + ".i.price")) << waived;
    EXPECT_THAT(Run({"check", "old.xml", "wide.xml", "--format", "junit"}).out,
                HasSubstr("failure message=\"a field's size was reduced: " + std::string(refused)));
    EXPECT_THAT(Run({"check", "old.xml", "wide.xml", "--format", "github"}).out, HasSubstr("::error "));
  }
}

// A list table that its old schema already breaks a rule with, by an index or by a wrong attribute.
std::string Legacy(const std::string& attributes, const std::string& types, const std::string& index) {
  return "<meta name=\"t\" customattr=\"" + attributes + "\"><entry name=\"uid\" type=\"" + types +
         "\"/><entry name=\"a\" type=\"" + types + "\"/><primarykey entries=\"uid\"/>" + index + "</meta>";
}

constexpr char kIndex[] = "<index name=\"i\"><column entry=\"a\"/></index>";

struct LegacyRow {
  const char* rule;
  std::string old_table;
  std::vector<std::string> new_tables;
};

// Regression: the checker stops at a pre-existing refusal, so that a waiver of it let every change of the table pass, and the
// report called the changes verified.
TEST_F(WaiverTest, WaiverOfAPreexistingRefusalCoversNoChange) {
  const LegacyRow kRows[] = {
      {"index.list-table",
       Legacy("TableType=LIST;ListNum=100", "uint64", kIndex),
       {Legacy("TableType=LIST;ListNum=1", "uint64", kIndex), Legacy("TableType=LIST;ListNum=100", "uint8", kIndex)}},
      {"table.attributes",
       Legacy("TableType=BAD", "uint64", ""),
       {Legacy("TableType=BAD;ListNum=1", "uint64", ""), Legacy("TableType=BAD", "uint64", kIndex),
        "<meta name=\"t\" customattr=\"TableType=BAD\"><entry name=\"uid\" type=\"uint64\"/><primarykey "
        "entries=\"uid\"/></meta>"}},
      {"table.attributes", Legacy("TableType=LIST", "uint64", ""), {Legacy("TableType=LIST", "int64", "")}},
  };
  Write("korvelcheck.toml", "");
  Commit("project");
  for (const LegacyRow& row : kRows) {
    for (const bool is_wide : {false, true}) {
      const std::string rule = "rule = \"" + std::string(row.rule) + "\"\ntable = \"t\"\n";
      Waive(rule + (is_wide ? "entry = \"\"\n" : "path = \"t\"\nchange = \"pre-existing\"\nfile = \"wide.xml\"\n") + kRest);
      Write("old.xml", Library(5, {row.old_table}));
      Write("wide.xml", Library(6, {row.old_table}));
      EXPECT_EQ(Check().exit_code, 0) << "only the version of the library: " << Check().out;
      EXPECT_EQ(About(Check()), "");
      for (const std::string& new_table : row.new_tables) {
        Write("wide.xml", Library(6, {new_table}));
        EXPECT_EQ(Check().exit_code, 1) << row.rule << ": " << new_table;
        EXPECT_THAT(About(Check()), HasSubstr("does not cover the change that is there now: pre-existing; "));
        EXPECT_EQ(Run({"history", "old.xml", "wide.xml"}).exit_code, 1);
        const std::string text = Run({"check", "old.xml", "wide.xml"}).out;
        EXPECT_THAT(text, HasSubstr("  the checker stops at a pre-existing refusal: "));
        EXPECT_THAT(text, Not(HasSubstr("verified")));
        EXPECT_THAT(Check().out, HasSubstr("\"status\": \"not-checked\""));
        EXPECT_THAT(Check().out, Not(HasSubstr("\"status\": \"allowed\"")));
      }
    }
  }
}

TEST_F(WaiverTest, ChangeUnderAPreexistingRefusalCanBeAccepted) {
  const auto with_list_num = [](const char* number) {
    return Library(5, {Legacy(std::string("TableType=LIST;ListNum=") + number, "uint64", kIndex)});
  };
  AcceptChange(with_list_num("100"), with_list_num("99"));
  EXPECT_THAT(Read("korvelcheck.toml"), HasSubstr("change = \"pre-existing; attribute ListNum of t: 100 -> 99\"\n"));
  Write("a.xml", with_list_num("98"));
  EXPECT_EQ(Run({"check"}).exit_code, 1);
}

// `waive` added an entry without effect.
TEST_F(WaiverTest, WideWaiverOfAPreexistingRefusalThatHidesChangesIsRefused) {
  Write("old.xml", Library(5, {Legacy("TableType=LIST;ListNum=100", "uint64", kIndex)}));
  Write("wide.xml", Library(6, {Legacy("TableType=LIST;ListNum=99", "uint64", kIndex)}));
  const std::string fingerprint = Fingerprint();
  const std::vector<std::string> waive = {fingerprint, "--wide", "old.xml", "wide.xml"};
  ExpectInputError(WaiveFinding(waive), "korvelcheck: waive: --wide does not cover " + fingerprint +
                                            ": the checker stops at this pre-existing refusal, which hides changes of table t; "
                                            "allowed: without --wide, which accepts these changes\n");
  EXPECT_EQ(WaiveFinding({fingerprint, "old.xml", "wide.xml"}).exit_code, 0);
  EXPECT_EQ(Check().exit_code, 0);
}

// Regression: the finding is the same in both, but lint ignored the waiver.
TEST_F(WaiverTest, LintAppliesWaivers) {
  Write("odd.xml", Library(5, {Table({.fields = "<entry name=\"2nd\" type=\"int8\"/>"})}));
  EXPECT_EQ(Run({"lint", "odd.xml"}).exit_code, 1);
  const auto report = json::parse(Run({"lint", "odd.xml", "--format", "json"}).out);
  const std::string fingerprint = report["tables"][0]["changes"]["findings"][0]["fingerprint"];
  ASSERT_EQ(WaiveFinding({fingerprint, "odd.xml", "odd.xml"}).exit_code, 0);
  const Outcome outcome = Run({"lint", "odd.xml"});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_THAT(outcome.out, HasSubstr("verdict: refused (all waived)"));
  EXPECT_EQ(Run({"lint", "old.xml"}).exit_code, 0);
}

// --- Waivers of earlier versions ---

// Regression: a fingerprint alone does not say what was accepted. The message has the lines that do.
TEST_F(WaiverTest, WaiverOfAnEarlierVersionIsReplacedByThePastedLines) {
  Waive("fingerprint = \"84ffde231685f362\"\nreason = \"the table is empty\"\nuntil = 2027-01-31\n");
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(About(outcome),
            "error waiver.malformed: invalid waiver: it has only a fingerprint, which does not say what was accepted; allowed: "
            "rule, table, path, change and file; or table, rule and entry\n");
  const std::string suggestion = json::parse(outcome.out)["project"][0]["suggestion"];
  const std::string lines = suggestion.substr(suggestion.find('\n') + 1);
  EXPECT_EQ(lines,
            "[[waivers]]\nrule = \"primary-key.size\"\ntable = \"orders\"\npath = \"orders.uid\"\n"
            "change = \"type of uid: uint64 -> uint32\"\nfile = \"wide.xml\"\nfingerprint = \"" +
                Fingerprint() + "\"\nreason = \"the table is empty\"\nuntil = \"2027-01-31\"");
  for (const char* format : {"text", "github", "gitlab", "sarif", "junit", "markdown", "html"}) {
    EXPECT_THAT(Run({"check", "old.xml", "wide.xml", "--format", format}).out, HasSubstr("replace it with these lines"))
        << format;
  }
  EXPECT_THAT(Run({"check", "old.xml", "wide.xml"}).out,
              HasSubstr("\n  suggestion: replace it with these lines\n    [[waivers]]\n    rule = \"primary-key.size\"\n"));
  Write("korvelcheck.toml", lines + "\n");
  EXPECT_EQ(Check().exit_code, 0) << About(Check());
}

TEST_F(WaiverTest, UnknownFingerprintAloneIsMalformed) {
  for (const char* format : {"json", "text"}) {
    Waive("fingerprint = \"0123456789abcdef\"\n" + std::string(kRest));
    const Outcome outcome = Run({"check", "old.xml", "same.xml", "--format", format});
    EXPECT_EQ(outcome.exit_code, 1);
    EXPECT_THAT(outcome.out,
                HasSubstr("replace it: 'korvelcheck waive' adds a waiver for a finding of the report; or remove it"));
  }
  EXPECT_THAT(Run({"check", "old.xml", "same.xml"}).out, HasSubstr("verdict: allowed (but the project file has an error)\n"));
}

// --- Expired and unused waivers ---

TEST_F(WaiverTest, ExpiredWaiverHasNoEffect) {
  const std::string named = "table = \"orders\"\nrule = \"primary-key.size\"\nentry = \"uid\"\nreason = \"r\"\n";
  Waive(named + "until = 2025-12-31\n");
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 1);
  const std::string text =
      "waiver.expired: the waiver of 'primary-key.size' in table 'orders', entry 'uid' expired on 2025-12-31";
  EXPECT_EQ(About(outcome), "error " + text + "; the finding is refused again\n");
  const Outcome gone = Run({"check", "old.xml", "same.xml", "--format", "json"});
  EXPECT_EQ(gone.exit_code, 0) << "nothing is refused";
  EXPECT_EQ(About(gone), "warning " + text + "\n");
  EXPECT_EQ(Run({"check", "old.xml", "same.xml", "--strict-waivers"}).exit_code, 1);
  EXPECT_EQ(Run({"lint", "old.xml"}).exit_code, 0);
  EXPECT_EQ(Run({"lint", "old.xml", "--strict-waivers"}).exit_code, 1);
  Waive(named + "until = 2025-12-31\n[[waivers]]\nrule = \"primary-key.size\"\ntable = \"orders\"\npath = \"orders.uid\"\n" +
        "change = \"type of uid: uint64 -> uint32\"\nfile = \"wide.xml\"\n" + kRest);
  EXPECT_EQ(Check().exit_code, 0) << "another waiver covers the finding";
  EXPECT_EQ(About(Check()), "warning " + text + "\n");
}

// Regression: a time behind the year 2262 overflowed into the past, where no waiver has expired.
TEST_F(WaiverTest, ExpiresAtAnyTimeThatReplacesTheClock) {
  Waive("table = \"orders\"\nrule = \"primary-key.size\"\nentry = \"uid\"\n" + std::string(kRest));
  EXPECT_EQ(Check().exit_code, 0);
  for (const char* seconds : {"1801600000", "9223372036", "9223372037", "253402300799"}) {
    environment_.back() = std::string("SOURCE_DATE_EPOCH=") + seconds;
    EXPECT_EQ(Check().exit_code, 1) << seconds;
  }
}

TEST_F(WaiverTest, OnlyANumberReplacesTheClock) {
  Waive("table = \"orders\"\nrule = \"primary-key.size\"\nentry = \"uid\"\n" + std::string(kRest));
  environment_.back() = "SOURCE_DATE_EPOCH=soon";
  ExpectInputError(Check(), "korvelcheck: SOURCE_DATE_EPOCH is 'soon'; allowed: 0 to 253402300799 seconds\n");
}

// Regression: a waiver that was merged with its change failed every later pull request.
TEST_F(WaiverTest, MergedWaiverIsAWarning) {
  AcceptChange(WithPrice("float"), WithPrice("int32"));
  Commit("merged");
  const Outcome outcome = Run({"check", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_EQ(About(outcome),
            "warning waiver.unused: the waiver of 'field.type' in table 'orders', 'type of price: float -> int32', file 'a.xml' "
            "matches no finding\n");
  EXPECT_EQ(Run({"check", "--strict-waivers"}).exit_code, 1);
  environment_.back() = "SOURCE_DATE_EPOCH=1801600000";  // after the last day
  EXPECT_EQ(Run({"check"}).exit_code, 0);
  EXPECT_EQ(Run({"check", "--strict-waivers"}).exit_code, 1);
}

TEST_F(WaiverTest, UnusedWaiverIsReportedIfAllWasCompared) {
  Write("korvelcheck.toml",
        "[schemas]\npaths = [\"old.xml\"]\n[[waivers]]\ntable = \"orders\"\nrule = \"primary-key.size\"\n"
        "entry = \"uid\"\n" +
            std::string(kRest));
  Commit("first");
  const Outcome outcome = Run({"check", "--against", "git:HEAD", "--format", "json"});
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_EQ(About(outcome),
            "warning waiver.unused: the waiver of 'primary-key.size' in table 'orders', entry 'uid' matches no finding\n");
  for (const std::vector<std::string>& part : {std::vector<std::string>{"--against", "git:HEAD", "old.xml"},
                                               {"--against", "git:HEAD", "--table", "users"},
                                               {"old.xml", "same.xml"}}) {
    EXPECT_EQ(About(With({"check", "--format", "json"}, part)), "") << part.back();
    EXPECT_EQ(With({"check", "--strict-waivers"}, part).exit_code, 0) << part.back();
  }
}

TEST_F(WaiverTest, EveryFormatDistinguishesWarningsFromErrors) {
  Write("korvelcheck.toml",
        "[schemas]\npaths = [\"old.xml\"]\nagainst = \"git:HEAD\"\n[[waivers]]\ntable = \"orders\"\n"
        "rule = \"primary-key.size\"\nentry = \"uid\"\n" +
            std::string(kRest));
  Commit("first");
  struct Wording {
    const char* format;
    const char* warning;
    const char* error;
  };
  const Wording kCases[] = {
      {"text", "\nkorvelcheck.toml:4:1: warning [waiver.unused] ", "\nkorvelcheck.toml:4:1: error [waiver.unused] "},
      {"json", "\"level\": \"warning\"", "\"level\": \"error\"\n    }"},
      {"sarif", "\"ruleIndex\": ", "\"ruleIndex\": "},
      {"github", "\n::warning file=korvelcheck.toml", "\n::error file=korvelcheck.toml"},
      {"gitlab", "\"severity\": \"minor\"", "\"severity\": \"major\""},
      {"junit", "<testsuite name=\"project file\" tests=\"1\" failures=\"0\"",
       "<testsuite name=\"project file\" tests=\"1\" failures=\"1\""},
      {"markdown", "\n| warning | <code>waiver.unused</code>", "\n| error | <code>waiver.unused</code>"},
      {"html", "data-status=\"warning\"", "data-status=\"refused\""},
  };
  for (const auto& [format, warning, error] : kCases) {
    const Outcome lenient = Run({"check", "--format", format});
    EXPECT_EQ(lenient.exit_code, 0);
    EXPECT_THAT(lenient.out, HasSubstr(warning)) << format;
    const Outcome strict = Run({"check", "--format", format, "--strict-waivers"});
    EXPECT_EQ(strict.exit_code, 1);
    EXPECT_THAT(strict.out, HasSubstr(error)) << format;
  }
  const auto sarif = json::parse(Run({"check", "--format", "sarif"}).out);
  EXPECT_EQ(sarif["runs"][0]["results"][0]["level"], "warning");
  EXPECT_EQ(sarif["runs"][0]["invocations"][0]["exitCode"], 0);
}

// --- Malformed waivers ---

TEST_F(WaiverTest, MalformedWaiversAreFindings) {
  struct Malformed {
    std::string members;
    const char* text;
  };
  const std::string wide = "table = \"t\"\nrule = \"primary-key.size\"\nentry = \"\"\n";
  const std::string exact = "table = \"t\"\nrule = \"primary-key.size\"\npath = \"t\"\nchange = \"c\"\nfile = \"f\"\n";
  const std::string until = "until = 2027-01-31\n";
  const std::string reason = "reason = \"r\"\n";
  constexpr char kNothing[] = "it must have rule, table, path, change and file; or table, rule and entry";
  const Malformed kCases[] = {
      {kRest, kNothing},
      {"table = \"t\"\nrule = \"r\"\n" + std::string(kRest), kNothing},
      {"table = \"\"\nrule = \"r\"\nentry = \"\"\n" + std::string(kRest), kNothing},
      {"table = \"t\"\nrule = \"r\"\npath = \"t\"\nchange = \"\"\nfile = \"f\"\n" + std::string(kRest), kNothing},
      {"table = \"t\"\nrule = \"r\"\npath = \"t\"\nfile = \"f\"\n" + std::string(kRest),
       "it has no 'change'; allowed: rule, table, path, change and file; or table, rule and entry"},
      {"fingerprint = \"0123456789abcdef\"\ntable = \"t\"\n" + std::string(kRest),
       "it has no 'rule'; allowed: rule, table, path, change and file; or table, rule and entry"},
      {exact + "entry = \"\"\n" + kRest,
       "it has 'entry' and keys of a waiver of one change; allowed: rule, table, path, change and file; or table, rule and "
       "entry"},
      {"fingerprint = \"0123456789ABCDEF\"\n" + std::string(kRest),
       "fingerprint is '0123456789ABCDEF'; allowed: 16 hexadecimal digits, as shown in reports"},
      {exact + "fingerprint = \"\"\n" + kRest, "fingerprint is ''; allowed: 16 hexadecimal digits, as shown in reports"},
      {wide + until, "it has no reason; allowed: a string that is not blank"},
      {wide + "reason = \" \\t\"\n" + until, "it has no reason; allowed: a string that is not blank"},
      {wide + reason, "it has no last day; allowed: until = \"2027-01-31\""},
      {wide + reason + "until = \"soon\"\n", "until is 'soon'; allowed: a day like 2027-01-31"},
      {wide + reason + "until = \"2027-02-29\"\n", "until is '2027-02-29'; allowed: a day like 2027-01-31"},
      {"table = \"t\"\nrule = \"primary-key.sise\"\nentry = \"\"\n" + std::string(kRest),
       "rule is 'primary-key.sise' (did you mean 'primary-key.size'?); allowed: what 'korvelcheck rules' lists"},
  };
  for (const auto& [members, text] : kCases) {
    Waive(members);
    const Outcome outcome = Run({"check", "old.xml", "same.xml", "--format", "json"});
    EXPECT_EQ(outcome.exit_code, 1) << members;
    EXPECT_EQ(About(outcome), std::string("error waiver.malformed: invalid waiver: ") + text + "\n");
  }
}

TEST_F(WaiverTest, SecondWaiverForOneFindingIsAFinding) {
  ASSERT_EQ(WaiveFinding({Fingerprint(), "old.xml", "wide.xml"}).exit_code, 0);
  const std::string one = Read("korvelcheck.toml");
  Write("korvelcheck.toml", one + one);
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 1);
  EXPECT_EQ(About(outcome),
            "error waiver.malformed: invalid waiver: korvelcheck.toml:1 already has a waiver for this finding; allowed: one\n");
}

// --- waive ---

TEST_F(WaiverTest, AppendsWaiverAndKeepsTheRest) {
  const std::string fingerprint = Fingerprint();
  const std::string before = "# ours\n[defaults]   # all\nlist-num=0\n\n\n# end";
  Write("korvelcheck.toml", before);
  ExpectOutcome(Run({"waive", fingerprint, "old.xml", "wide.xml", "--reason", "it's \"empty\"\n\\o/", "--until", "2026-02-28"}),
                0, "korvelcheck.toml: waived " + fingerprint + " until 2026-02-28\n", "");
  EXPECT_EQ(Read("korvelcheck.toml"),
            before + "\n\n[[waivers]]\nrule = \"primary-key.size\"\ntable = \"orders\"\npath = \"orders.uid\"\n" +
                "change = \"type of uid: uint64 -> uint32\"\nfile = \"wide.xml\"\nfingerprint = \"" + fingerprint +
                "\"\nreason = \"it's \\\"empty\\\"\\u000a\\\\o/\"\nuntil = \"2026-02-28\"\n");
  const Outcome outcome = Check();
  EXPECT_EQ(outcome.exit_code, 0);
  EXPECT_THAT(outcome.out, HasSubstr("it's \\\"empty\\\"\\n\\\\o/"));
}

TEST_F(WaiverTest, CreatesFileAndKeepsItsLineEnds) {
  const std::string fingerprint = Fingerprint();
  ASSERT_EQ(WaiveFinding({fingerprint, "old.xml", "wide.xml"}).exit_code, 0);
  const std::string created = Read("korvelcheck.toml");
  EXPECT_THAT(created, testing::StartsWith("[[waivers]]\nrule = \"primary-key.size\"\n"));
  EXPECT_EQ(Fingerprint(), fingerprint) << "the same with the new project file";
  Write("crlf.toml", "[defaults]\r\nlist-num = 1\r\n");
  ASSERT_EQ(WaiveFinding({fingerprint, "old.xml", "wide.xml", "--project", "crlf.toml"}).exit_code, 0);
  std::string expected;
  for (const char c : "[defaults]\nlist-num = 1\n\n" + created) expected += c == '\n' ? "\r\n" : std::string(1, c);
  EXPECT_EQ(Read("crlf.toml"), expected);
}

TEST_F(WaiverTest, WaivesSeveralFindingsInOneCall) {
  Write("wide.xml", Library(5, {Table({.key_type = "uint32"}), Table({.name = "users", .key_type = "uint16"})}));
  const json findings = Findings();
  ASSERT_EQ(findings.size(), 2u);
  const std::string one = findings[0]["fingerprint"];
  const std::string two = findings[1]["fingerprint"];
  ExpectOutcome(WaiveFinding({one, two, one, "old.xml", "wide.xml"}), 0,
                "korvelcheck.toml: waived " + one + " until 2027-01-31\nkorvelcheck.toml: waived " + two + " until 2027-01-31\n",
                "");
  EXPECT_EQ(Check().exit_code, 0);
}

TEST_F(WaiverTest, ComparesAsCheckDoes) {
  std::filesystem::remove(PathOf("wide.xml"));
  Write("korvelcheck.toml", kProject);
  Write("a.xml", WithListNum("100"));
  Commit("first");
  Write("a.xml", WithListNum("99"));
  Commit("second");
  Write("a.xml", WithListNum("98"));
  const std::string before = Read("korvelcheck.toml");
  for (const std::vector<std::string>& selection : {std::vector<std::string>{},
                                                    {"--against", "git:HEAD~1"},
                                                    {"--against", "git:HEAD~1", "a.xml"},
                                                    {"git:HEAD:a.xml", "a.xml"}}) {
    Write("korvelcheck.toml", before);
    std::vector<std::string> arguments = {Fingerprint(selection)};
    arguments.insert(arguments.end(), selection.begin(), selection.end());
    const Outcome outcome = WaiveFinding(arguments);
    EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
    EXPECT_EQ(With({"check"}, selection).exit_code, 0);
  }
  std::filesystem::remove(PathOf("korvelcheck.toml"));
  ExpectInputError(WaiveFinding({"0123456789abcdef"}),
                   "korvelcheck: waive: OLD and NEW are required, or --against\nTry 'korvelcheck waive --help'.\n");
}

TEST_F(WaiverTest, WideWaiversNameEveryTableWithTheFinding) {
  Write("old.xml", WithSharedPrice("uint64"));
  Write("wide.xml", WithSharedPrice("uint32"));
  ASSERT_EQ(WaiveFinding({Fingerprint(), "--wide", "old.xml", "wide.xml"}).exit_code, 0);
  EXPECT_EQ(
      Read("korvelcheck.toml"),
      "[[waivers]]\nrule = \"field.size\"\ntable = \"orders\"\nentry = \"i.price\"\nreason = \"r\"\nuntil = \"2027-01-31\"\n\n"
      "[[waivers]]\nrule = \"field.size\"\ntable = \"carts\"\nentry = \"i.price\"\nreason = \"r\"\nuntil = \"2027-01-31\"\n");
  EXPECT_EQ(Check().exit_code, 0);
}

// Regression: a fingerprint with a mistake was written, and the finding stayed refused.
TEST_F(WaiverTest, RefusesFingerprintsThatNoFindingHas) {
  const std::string fingerprint = Fingerprint();
  const std::string hint = "'korvelcheck history' prints the entries that waive its findings about reused ids.\n";
  const std::string list =
      "The check has these findings:\n  " + fingerprint + "  wide.xml: table orders: type of uid: uint64 -> uint32\n" + hint;
  std::string near = fingerprint;
  near.back() = near.back() == '0' ? '1' : '0';
  ExpectInputError(WaiveFinding({near, "old.xml", "wide.xml"}), "korvelcheck: waive: no finding has the fingerprint '" + near +
                                                                    "' (did you mean '" + fingerprint + "'?)\n" + list);
  ExpectInputError(WaiveFinding({"0123456789abcdef", fingerprint, "old.xml", "wide.xml"}),
                   "korvelcheck: waive: no finding has the fingerprint '0123456789abcdef'\n" + list);
  ExpectInputError(
      WaiveFinding({fingerprint, "old.xml", "same.xml"}),
      "korvelcheck: waive: no finding has the fingerprint '" + fingerprint + "'\nThe check has no findings.\n" + hint);
  EXPECT_THAT(Files(), Not(testing::Contains("korvelcheck.toml")));
}

TEST_F(WaiverTest, DoesNotWriteInvalidWaivers) {
  const std::string fingerprint = Fingerprint();
  Waive("table = \"users\"\nrule = \"field.size\"\nentry = \"uid\"\n" + std::string(kRest));
  const std::string before = Read("korvelcheck.toml");
  struct Wrong {
    std::vector<std::string> arguments;
    const char* text;
  };
  const Wrong kCases[] = {
      {{"0123", "--reason", "r", "--until", "2027-01-01"},
       "fingerprint is '0123'; allowed: 16 hexadecimal digits, as shown in reports"},
      {{"", "--reason", "r", "--until", "2027-01-01"}, "fingerprint is ''; allowed: 16 hexadecimal digits, as shown in reports"},
      {{fingerprint, "--reason", " ", "--until", "2027-01-01"}, "it has no reason; allowed: a string that is not blank"},
      {{fingerprint, "--reason", "r", "--until", "2027-13-01"}, "until is '2027-13-01'; allowed: a day like 2027-01-31"},
      {{fingerprint, "--reason", "r", "--until", ""}, "it has no last day; allowed: until = \"2027-01-31\""},
      {{fingerprint, "--reason", "r", "--until", "2025-12-31"}, "2025-12-31 is in the past (today is 2026-01-01)"},
      {{fingerprint, "--reason", "\xff", "--until", "2027-01-01"},
       "korvelcheck.toml cannot take another waiver: 'waivers' is not a list of [[waivers]], or a text is not UTF-8"},
      {{fingerprint, "--reason", "r", "--until", "2027-01-01", "--project", "-"}, "--project is '-'; allowed: a file"},
      {{fingerprint, "--reason", "r", "--until", "2027-01-01", "--project", "none/korvelcheck.toml"},
       "cannot lock PATH/none: No such file or directory"},
  };
  for (const auto& [arguments, text] : kCases) {
    std::string expected = text;
    if (const std::size_t at = expected.find("PATH"); at != std::string::npos) {
      expected.replace(at, 4, std::filesystem::canonical(PathOf("")).string());
    }
    ExpectInputError(With({"waive", "old.xml", "wide.xml"}, arguments), "korvelcheck: waive: " + expected + "\n");
    EXPECT_EQ(Read("korvelcheck.toml"), before);
  }
  EXPECT_EQ(Run({"waive", fingerprint, "old.xml", "wide.xml"}).exit_code, 2);
}

TEST_F(WaiverTest, RefusesASecondWaiverForAFinding) {
  Write("old.xml", WithSharedPrice("uint64"));
  Write("wide.xml", WithSharedPrice("uint32"));
  const std::string fingerprint = Fingerprint();
  Waive(
      "rule = \"field.size\"\ntable = \"carts\"\npath = \"carts.i.price\"\nchange = \"type of price: uint64 -> uint32\"\n"
      "file = \"wide.xml\"\nreason = \"r\"\nuntil = 2025-12-31\n");
  ExpectInputError(WaiveFinding({fingerprint, "old.xml", "wide.xml"}),
                   "korvelcheck: waive: korvelcheck.toml:1 already has a waiver for " + fingerprint +
                       ", until 2025-12-31; change or remove it\n");
}

TEST_F(WaiverTest, DoesNotChangeInvalidProjectFile) {
  const std::string fingerprint = Fingerprint();
  for (const char* text : {"[defaults]\nlist = 1\n", "not TOML", "waivers = []\n"}) {
    Write("korvelcheck.toml", text);
    EXPECT_EQ(WaiveFinding({fingerprint, "old.xml", "wide.xml"}).exit_code, 2) << text;
    EXPECT_EQ(Read("korvelcheck.toml"), text);
  }
}

// A limit on the size of files fails the write itself, for every user.
TEST_F(WaiverTest, FailedWriteKeepsTheOldFile) {
  const std::string fingerprint = Fingerprint();
  const std::string before = "# " + std::string(2000, '.') + "\n";
  Write("korvelcheck.toml", before);
  const std::vector<std::string> files = Files();
  const Outcome outcome =
      RunProgram(Call{.arguments = {"waive", fingerprint, "old.xml", "wide.xml", "--reason", "r", "--until", "2027-01-01"},
                      .directory = PathOf(""),
                      .launcher = {"/bin/sh", "-c", "ulimit -f 1; exec \"$0\" \"$@\""},
                      .environment = environment_});
  EXPECT_EQ(outcome.exit_code, 3);
  EXPECT_THAT(outcome.err, HasSubstr("cannot write"));
  EXPECT_EQ(Read("korvelcheck.toml"), before);
  EXPECT_EQ(Files(), files);
}

// Regression: each call wrote the file that it had read, without the waivers that others had added meanwhile.
TEST_F(WaiverTest, ParallelCallsLoseNoWaiver) {
  constexpr int kCalls = 20;
  const auto fields = [](const char* type) {
    std::string text;
    for (int i = 0; i < kCalls; ++i) text += "<entry name=\"f" + std::to_string(i) + "\" type=\"" + type + "\"/>";
    return Library(5, {Table({.fields = text})});
  };
  Write("old.xml", fields("int64"));
  Write("wide.xml", fields("int32"));
  std::vector<std::string> fingerprints;
  for (const json& finding : Findings()) fingerprints.push_back(finding["fingerprint"]);
  ASSERT_EQ(fingerprints.size(), kCalls);
  const char* const script =
      "for f in \"$@\"; do \"$0\" waive \"$f\" old.xml wide.xml --reason r --until 2027-01-31 & pids=\"$pids $!\"; done\n"
      "for p in $pids; do wait \"$p\" || exit 1; done\n";
  const Outcome outcome = RunProgram(Call{
      .arguments = fingerprints, .directory = PathOf(""), .launcher = {"/bin/sh", "-c", script}, .environment = environment_});
  EXPECT_EQ(outcome.exit_code, 0) << outcome.err;
  EXPECT_EQ(Check().exit_code, 0) << About(Check());
  EXPECT_EQ(json::parse(Run({"waivers", "old.xml", "wide.xml", "--format", "json"}).out)["summary"]["in_use"], kCalls);
}

// Git runs after the project file was read: here it changes the file.
TEST_F(WaiverTest, DoesNotReplaceAFileThatWasModifiedMeanwhile) {
  const std::string project = "[schemas]\npaths = [\"wide.xml\"]\nagainst = \"git:HEAD\"\n";
  Write("korvelcheck.toml", project);
  Write("wide.xml", Read("old.xml"));
  Commit("first");
  Write("wide.xml", Library(5, {Table({.key_type = "uint32"}), Table({.name = "users"})}));
  const std::string fingerprint = Fingerprint({});
  ReplaceGit("echo '# edited' >> korvelcheck.toml\nexec \"$REAL_GIT\" \"$@\"");
  const Outcome outcome = WaiveFinding({fingerprint});
  ExpectInputError(
      outcome, "korvelcheck: waive: korvelcheck.toml was modified in the meantime; nothing was written; run the command again\n");
  EXPECT_THAT(Read("korvelcheck.toml"), testing::StartsWith(project + "# edited\n"));
  EXPECT_THAT(Read("korvelcheck.toml"), Not(HasSubstr("[[waivers]]")));
}

// --- waivers ---

TEST_F(WaiverTest, ListsWaiversWithStateAndMatches) {
  const std::string fingerprint = Fingerprint();
  ASSERT_EQ(WaiveFinding({fingerprint, "old.xml", "wide.xml"}).exit_code, 0);
  const std::string wide = "\n[[waivers]]\nrule = \"primary-key.size\"\ntable = \"";
  Write("korvelcheck.toml", Read("korvelcheck.toml") + wide + "users\"\nentry = \"uid\"\nreason = \"r\"\nuntil = 2026-01-02\n" +
                                wide + "orders\"\nentry = \"uid\"\nreason = \"r\"\nuntil = 2025-12-01\n");
  const std::string listed =
      "korvelcheck.toml:1:1: in use, until 2027-01-31 (395 days left)\n"
      "  rule: primary-key.size\n"
      "  table: orders\n"
      "  path: orders.uid\n"
      "  change: type of uid: uint64 -> uint32\n"
      "  file: wide.xml\n"
      "  fingerprint: " +
      fingerprint +
      "\n"
      "  reason: r\n"
      "  matches: wide.xml: orders.uid, fingerprint " +
      fingerprint +
      "\n"
      "korvelcheck.toml:11:1: unused, until 2026-01-02 (1 day left)\n"
      "  rule: primary-key.size\n"
      "  table: users\n"
      "  change: any that the rule refuses here (wide)\n"
      "  entry: uid\n"
      "  reason: r\n"
      "korvelcheck.toml:18:1: expired, until 2025-12-01 (31 days ago)\n"
      "  rule: primary-key.size\n"
      "  table: orders\n"
      "  change: any that the rule refuses here (wide)\n"
      "  entry: uid\n"
      "  reason: r\n"
      "  matches: wide.xml: orders.uid, fingerprint " +
      fingerprint + "\n";
  ExpectOutcome(Run({"waivers", "old.xml", "wide.xml"}), 0, listed + "3 waivers: 1 in use, 1 unused, 1 expired, 0 malformed\n",
                "");
  Write("korvelcheck.toml", Read("korvelcheck.toml") + "\n[[waivers]]\nfingerprint = \"0123456789abcdef\"\n");
  ExpectOutcome(Run({"waivers", "old.xml", "wide.xml"}), 1,
                listed +
                    "korvelcheck.toml:25:1: malformed\n"
                    "  fingerprint: 0123456789abcdef\n"
                    "  fault: it has no reason; allowed: a string that is not blank\n"
                    "  suggestion: replace it: 'korvelcheck waive' adds a waiver for a finding of the report; or remove it\n"
                    "4 waivers: 1 in use, 1 unused, 1 expired, 1 malformed\n",
                "");
}

TEST_F(WaiverTest, ListsWaiversAsJson) {
  const std::string fingerprint = Fingerprint();
  ASSERT_EQ(WaiveFinding({fingerprint, "old.xml", "wide.xml"}).exit_code, 0);
  Write("korvelcheck.toml", Read("korvelcheck.toml") + "\n[[waivers]]\nfingerprint = \"0123456789abcdef\"\n" + kRest +
                                "\n[[waivers]]\nrule = \"field.size\"\ntable = \"users\"\nentry = \"\"\nreason = \"r\"\n"
                                "until = 2025-12-31\n");
  const Outcome outcome = Run({"waivers", "old.xml", "wide.xml", "--format", "json", "-o", "list.json"});
  EXPECT_EQ(outcome.exit_code, 1);
  const json list = json::parse(Read("list.json"));
  EXPECT_EQ(list["command"], "waivers");
  EXPECT_EQ(list["summary"], json::parse(R"({"waivers": 3, "in_use": 1, "unused": 0, "expired": 1, "malformed": 1})"));
  EXPECT_EQ(list["waivers"][0]["matches"],
            json::array({{{"file", "wide.xml"}, {"table", "orders"}, {"path", "orders.uid"}, {"fingerprint", fingerprint}}}));
  EXPECT_EQ(list["waivers"][0]["days_left"], 395);
  EXPECT_EQ(list["waivers"][1]["state"], "malformed");
  EXPECT_EQ(list["waivers"][2]["days_left"], -1);
  const std::string source = KORVEL_SOURCE_DIR;
  const std::string command = KORVEL_PYTHON " '" + source + "/tests/report/validate.py' '" + source +
                              "/docs/waivers.schema.json' '" + PathOf("list.json").string() + "'";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
}

TEST_F(WaiverTest, ListsTheWaiversOfAProjectCheck) {
  AcceptChange(WithPrice("float"), WithPrice("int32"));
  EXPECT_THAT(Run({"waivers"}).out, HasSubstr("1 waiver: 1 in use, 0 unused"));
  Commit("merged");
  EXPECT_THAT(Run({"waivers"}).out, HasSubstr("1 waiver: 0 in use, 1 unused"));
  EXPECT_THAT(Run({"waivers", "--against", "git:HEAD~1"}).out, HasSubstr("1 waiver: 1 in use, 0 unused"));
  std::filesystem::remove(PathOf("korvelcheck.toml"));
  ExpectInputError(Run({"waivers", "old.xml", "same.xml"}),
                   "korvelcheck: waivers: there is no korvelcheck.toml in this directory or above\n");
}

}  // namespace
}  // namespace tool_test
